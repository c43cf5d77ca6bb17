// The generator of synthetic mapping content, shared by the kova-mapping tool, the benchmarks and
// the tests: one seeded stream of references, each followed by its instances, which
// DocumentText.h writes as a document's text and Table.h puts into a KOVAMappingTable.
//
// Contract:
//  - The same options give the same objects, on every platform: the random numbers come from
//    std::mt19937 / std::mt19937_64 seeded with the seed and are reduced by modulo, never by the
//    standard distributions, whose results differ between standard libraries.
//  - How many objects there are follows Options::shape.
//  - kParts texts: reference 0 is the root (not local), the others are local. kOVA ids are part
//    names with their number ("Assembly-1" for the root, "Housing-2", ...), Plexo ids "prd-" and
//    16 hexadecimal digits. The instances of a reference instantiate references further down the
//    list (so the structure has no cycle) or, under the last reference, standard parts
//    ("ISO4032-M6"); an instance's kOVA id is the id of what it instantiates with an occurrence
//    number ("Housing-2.3"), its Plexo id "ins-" and 16 hexadecimal digits; one instance in eight
//    is local. Stamps are 32 random bytes in base64 (44 characters): "V1:"/"V2:" texts, bare texts
//    with IsSetKSS in versions 9 and 10, and in versions 6 to 8 one object in five carries only a
//    CE stamp. From version 7, one object in three has custom data (a short JSON text). Ids are
//    unique within the document.
//  - kNumbered texts: reference 0 is the root (not local), the others are local. kOVA ids
//    "kova-R<reference>-" / "kova-I<object>-" and six base64 characters, Plexo ids 32 hexadecimal
//    digits ending in the object's number; an instance instantiates the reference that holds it.
//    Every second instance is local (the first of each reference included). Stamps "V1:" to "V3:"
//    and 44 base64 characters; custom data "part-<r>" on every third reference (from the second),
//    "occ-<i>" on every fourth instance of a reference. Ids are unique within the document.
//  - kHostile texts: ids of one to three pieces out of a small set (ASCII letters and digits,
//    hyphen, dot, blank, quote, backslash, slash, line feed, tab, U+0000, U+001F, two- three- and
//    four-byte characters, "V1:", "null"), so that ids collide often; stamps "V<0-9>:" and 1 to 44
//    base64 characters; custom data "null" (none), empty, or {"note":"<id>"}. About one reference
//    in four is not local (a table takes only the first such root) and half of the instances are
//    local, drawn; an instance's RefId is an id of its own, not necessarily that of a reference.
#ifndef KOVA_GENERATOR_GENERATOR_H_
#define KOVA_GENERATOR_GENERATOR_H_

#include <KOVAGenerator/Options.h>

#include <functional>
#include <string>

namespace kova::generator {

struct GeneratedObject {
  std::string kovaId;
  std::string plexoId;
  std::string refId;                // instances only
  std::string customData = "null";  // "null": none
  std::string stamp;                // the "KOVASynchroStamp" text; empty: none
  std::string ceStamp;              // the "CEStamp" text; empty: none
  bool isLocal = false;
  bool isSetKSS = false;
};

class Generator {
 public:
  // Throws BadOptions (see Check).
  explicit Generator(const Options& options);

  // Calls onReference for each reference, followed by onInstance for each of its instances. The
  // object handed over is valid during the call only.
  void Generate(const std::function<void(const GeneratedObject&)>& onReference,
                const std::function<void(const GeneratedObject&)>& onInstance);

  const Options& options() const { return options_; }

 private:
  Options options_;
};

}  // namespace kova::generator

#endif  // KOVA_GENERATOR_GENERATOR_H_
