#include "src/Layout.h"

#include <algorithm>

namespace kova::generator {

namespace {

constexpr std::uint32_t kCountsSalt = 0x9E3779B9u;  // the counts' numbers differ from the texts'

// A count from 0 to most, drawn.
std::int64_t UpTo(Random& random, std::int64_t most) {
  return static_cast<std::int64_t>(random.Next() % (static_cast<std::uint64_t>(most) + 1));
}

}  // namespace

std::int64_t MostReferences(const Options& options) {
  switch (options.shape) {
    case Shape::kGrid:
    case Shape::kDrawn: return options.references;
    case Shape::kOneReference: return 1;
    case Shape::kTenPerReference: return std::max<std::int64_t>(1, (options.objects + 10) / 11);
  }
  return 0;
}

Layout::Layout(const Options& options)
    : options_(options), random_(options.seed ^ kCountsSalt), references_(MostReferences(options)) {
  if (options.shape == Shape::kDrawn) references_ = UpTo(random_, options.references);
  instancesLeft_ = options.objects > references_ ? options.objects - references_ : 0;
}

std::int64_t Layout::NextInstances() {
  switch (options_.shape) {
    case Shape::kGrid: return options_.instances;
    case Shape::kDrawn: return UpTo(random_, options_.instances);
    case Shape::kOneReference:
    case Shape::kTenPerReference: {
      const std::int64_t count =
          options_.shape == Shape::kOneReference ? instancesLeft_ : std::min<std::int64_t>(10, instancesLeft_);
      instancesLeft_ -= count;
      return count;
    }
  }
  return 0;
}

}  // namespace kova::generator
