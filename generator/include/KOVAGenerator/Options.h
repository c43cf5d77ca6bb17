// What the generator makes: the document version, how many objects and where they go, the seed,
// and the kind of texts the objects carry. The contract of the objects themselves is in
// Generator.h.
#ifndef KOVA_GENERATOR_OPTIONS_H_
#define KOVA_GENERATOR_OPTIONS_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace kova::generator {

// Where the objects go.
//  - kGrid: `references` references, each holding `instances` instances.
//  - kDrawn: between 0 and `references` references, each holding between 0 and `instances`
//    instances, both counts drawn from the seed: irregular tables, empty ones among them.
//  - kOneReference: one root reference holding every other of `objects` objects as its instance.
//  - kTenPerReference: references each holding ten instances, `objects` objects in all (the last
//    reference holds what is left, possibly none).
// The last two always hold at least one reference, even for fewer than one object.
enum class Shape { kGrid, kDrawn, kOneReference, kTenPerReference };

// The texts of the objects (Generator.h describes each):
//  - kParts: readable part names and platform ids, the stamps each version writes;
//  - kNumbered: numbered ids, versioned stamps, short custom data (the benchmarks' documents);
//  - kHostile: short ids that mix escapes, U+0000, non-ASCII characters and collide often, stamps
//    of versions 0 to 9, custom data "null", empty or a JSON text.
enum class Texts { kParts, kNumbered, kHostile };

struct Options {
  int version = 12;  // of the document, 6 to 12
  Shape shape = Shape::kGrid;
  std::int64_t references = 1;  // kGrid and kDrawn
  std::int64_t instances = 0;   // under each reference; kGrid and kDrawn
  std::int64_t objects = 0;     // kOneReference and kTenPerReference
  std::uint32_t seed = 1;
  Texts texts = Texts::kParts;
};

// Options no document can follow. option() names the field ("version", "references",
// "instances", "objects"); what() says what is wrong with it.
class BadOptions : public std::invalid_argument {
 public:
  BadOptions(std::string option, const std::string& what) : std::invalid_argument(what), option_(std::move(option)) {}
  const std::string& option() const noexcept { return option_; }

 private:
  std::string option_;
};

// Throws BadOptions for a version outside 6 to 12, a negative count, or more than one reference
// in version 6 (which holds at most one).
void Check(const Options& options);

// The tables of round-trip tests: version 12, up to maxReferences references each with up to
// maxInstances instances (kDrawn), hostile texts.
Options HostileTable(std::uint32_t seed, std::int64_t maxReferences, std::int64_t maxInstances);

// A version 12 document of numbered texts in one of the two benchmark shapes.
Options BenchmarkDocument(Shape shape, std::int64_t objects, std::uint32_t seed);

// "one_reference", "ten_per_reference", "grid", "drawn".
const char* ShapeName(Shape shape);

}  // namespace kova::generator

#endif  // KOVA_GENERATOR_OPTIONS_H_
