// Seeded generator of version 12 mapping documents for the benchmarks, written straight as text in
// the writer's key order, so that documents of a million objects are made in linear time.
#ifndef KOVA_BENCH_DOCUMENTGENERATOR_H_
#define KOVA_BENCH_DOCUMENTGENERATOR_H_

#include <cstdint>
#include <string>
#include <vector>

namespace kova::bench {

// OneReference: one root reference holding every other object as its instance.
// TenPerReference: a root and then local references, each holding ten instances.
enum class Shape { OneReference, TenPerReference };

struct GeneratedDocument {
  std::string text;                       // compact JSON, version 12
  std::vector<std::string> instanceKovaIds;  // every instance's kOVA id, in document order
  std::vector<std::string> referencePlexoIds;  // every reference's Plexo id, in document order
  std::size_t objects = 0;                 // references + instances
};

// About `objects` objects (references plus instances) in the given shape; the same seed gives the
// same text.
GeneratedDocument GenerateDocument(Shape shape, std::size_t objects, std::uint32_t seed = 12345);

const char* ShapeName(Shape shape);

}  // namespace kova::bench

#endif  // KOVA_BENCH_DOCUMENTGENERATOR_H_
