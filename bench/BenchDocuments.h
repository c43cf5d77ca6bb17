// The documents the benchmarks measure: version 12 documents of numbered texts in the two
// benchmark shapes, from the shared generator (generator/) with the seed of the published figures.
#ifndef KOVA_BENCH_BENCHDOCUMENTS_H_
#define KOVA_BENCH_BENCHDOCUMENTS_H_

#include <KOVAGenerator/DocumentText.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>

namespace kova::bench {

using generator::GeneratedDocument;
using generator::Shape;

// The shape a benchmark argument or a command line numbers: 0 one reference, otherwise ten
// instances per reference.
inline Shape ShapeNumbered(long long number) { return number == 0 ? Shape::kOneReference : Shape::kTenPerReference; }

// About `objects` objects (references and instances) in shape; the same seed gives the same text.
inline GeneratedDocument MakeBenchDocument(Shape shape, std::size_t objects, std::uint32_t seed = 12345) {
  return generator::MakeDocument(generator::BenchmarkDocument(shape, static_cast<std::int64_t>(objects), seed));
}

// The same document, made once per shape and size and kept for the whole run. Not thread-safe:
// callers on several threads hold a lock.
inline const GeneratedDocument& CachedBenchDocument(Shape shape, std::size_t objects) {
  static std::map<std::pair<Shape, std::size_t>, std::unique_ptr<GeneratedDocument>> cache;
  auto& slot = cache[{shape, objects}];
  if (!slot) slot = std::make_unique<GeneratedDocument>(MakeBenchDocument(shape, objects));
  return *slot;
}

}  // namespace kova::bench

#endif  // KOVA_BENCH_BENCHDOCUMENTS_H_
