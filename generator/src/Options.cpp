#include <KOVAGenerator/Options.h>

#include "src/Layout.h"

namespace kova::generator {

void Check(const Options& options) {
  if (options.version < 6 || options.version > 12) {
    throw BadOptions("version", "documents have versions 6 to 12, not " + std::to_string(options.version));
  }
  if (options.references < 0) throw BadOptions("references", "the count cannot be negative");
  if (options.instances < 0) throw BadOptions("instances", "the count cannot be negative");
  if (options.objects < 0) throw BadOptions("objects", "the count cannot be negative");
  if (options.version == 6 && MostReferences(options) > 1) {
    throw BadOptions("references", "a version 6 document holds at most one reference");
  }
}

Options HostileTable(std::uint32_t seed, std::int64_t maxReferences, std::int64_t maxInstances) {
  Options options;
  options.shape = Shape::kDrawn;
  options.references = maxReferences;
  options.instances = maxInstances;
  options.seed = seed;
  options.texts = Texts::kHostile;
  return options;
}

Options BenchmarkDocument(Shape shape, std::int64_t objects, std::uint32_t seed) {
  Options options;
  options.shape = shape;
  options.objects = objects;
  options.seed = seed;
  options.texts = Texts::kNumbered;
  return options;
}

const char* ShapeName(Shape shape) {
  switch (shape) {
    case Shape::kGrid: return "grid";
    case Shape::kDrawn: return "drawn";
    case Shape::kOneReference: return "one_reference";
    case Shape::kTenPerReference: return "ten_per_reference";
  }
  return "unknown";
}

}  // namespace kova::generator
