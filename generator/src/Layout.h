// How many references a document of the options holds, and how many instances each.
#ifndef KOVA_GENERATOR_SRC_LAYOUT_H_
#define KOVA_GENERATOR_SRC_LAYOUT_H_

#include <KOVAGenerator/Options.h>

#include <cstdint>

#include "src/Random.h"

namespace kova::generator {

// The largest number of references the options can give (kDrawn may give fewer).
std::int64_t MostReferences(const Options& options);

// The counts of one document, drawn once for kDrawn (from a generator of its own, so that the
// texts draw the same numbers whatever the counts).
class Layout {
 public:
  explicit Layout(const Options& options);
  std::int64_t References() const { return references_; }
  // The instances under the next reference; called once per reference, in order.
  std::int64_t NextInstances();

 private:
  Options options_;
  Random random_;
  std::int64_t references_;
  std::int64_t instancesLeft_;  // in all, for the benchmark shapes
};

}  // namespace kova::generator

#endif  // KOVA_GENERATOR_SRC_LAYOUT_H_
