// Synthetic mapping documents: deterministic for a seed, of any version 6 to 12.
//
// A document of N references and M instances under each reference:
//  - reference 1 is the root (not local), the others are local; kOVA ids are part names with their
//    number ("Assembly-1", "Housing-2", ...), Plexo ids "prd-" and 16 hexadecimal digits;
//  - the instances of a reference instantiate references further down the list (so the structure
//    has no cycle) or, for the last reference, standard parts ("ISO4032-M6"); an instance's kOVA
//    id is the id of what it instantiates with an occurrence number ("Housing-2.3"), its Plexo id
//    "ins-" and 16 hexadecimal digits; one instance in eight is local;
//  - stamps are 32 random bytes in base64 (44 characters): versioned "V1:"/"V2:" texts, bare
//    texts with "IsSetKSS" in versions 9 and 10, and in versions 6 to 8 one object in five carries
//    only a CE stamp; one object in three has custom data (a short JSON text), the others none.
// Ids are unique within the document. Version 6 holds at most one reference.
//
// The random numbers come from std::mt19937 seeded with the seed, reduced by modulo rather than by
// the standard distributions, whose results differ between standard libraries.
#ifndef KOVA_TOOLS_KOVA_MAPPING_GENERATOR_H_
#define KOVA_TOOLS_KOVA_MAPPING_GENERATOR_H_

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kova::tool {

struct GeneratorOptions {
  std::int64_t references = 1;
  std::int64_t instances = 0;  // under each reference
  int version = 12;
  std::uint32_t seed = 1;
};

struct GeneratedObject {
  std::string kovaId;
  std::string plexoId;
  std::string refId;                // instances only
  std::string customData = "null";  // "null": no "CustomData" member
  std::string stamp;                // "KOVASynchroStamp" text; empty: no such member
  std::string ceStamp;              // "CEStamp" text; empty: no such member
  bool isLocal = false;
  bool isSetKSS = false;
};

// One member of a generated object: its key and its value (a string or a boolean).
struct Field {
  std::string_view key;
  std::variant<std::string_view, bool> value;
};

// The members of object in a document of version, in the order they are written. Version 6
// objects have no "kOVAId" member (the member name of their parent object is the id).
void FieldsOf(const GeneratedObject& object, int version, bool isInstance, std::vector<Field>& fields);

class DocumentGenerator {
 public:
  // Throws ToolError for a version outside 6 to 12, negative counts, or more than one reference
  // in version 6.
  explicit DocumentGenerator(const GeneratorOptions& options);

  // Calls onReference for each reference, followed by onInstance for each of its instances.
  void Generate(const std::function<void(const GeneratedObject&)>& onReference,
                const std::function<void(const GeneratedObject&)>& onInstance);

  const GeneratorOptions& Options() const { return options_; }

 private:
  GeneratorOptions options_;
};

// Writes the generated document's compact JSON text to sink, piece by piece, without building it
// whole: the text is the one the library's JSON model gives for the same members in the same order.
void WriteGeneratedDocument(const GeneratorOptions& options, const std::function<void(std::string_view)>& sink);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_GENERATOR_H_
