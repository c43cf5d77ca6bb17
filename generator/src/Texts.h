// The texts of generated objects, one maker per Options::texts. The generator decides how many
// objects there are and in which order; a maker fills each object in turn, so the numbers it draws
// depend only on the seed and on that order.
#ifndef KOVA_GENERATOR_SRC_TEXTS_H_
#define KOVA_GENERATOR_SRC_TEXTS_H_

#include <KOVAGenerator/Generator.h>

#include <cstdint>
#include <memory>

namespace kova::generator {

class TextMaker {
 public:
  virtual ~TextMaker() = default;
  // Fills object (its previous content discarded) as reference number index (0: the root).
  virtual void Reference(std::int64_t index, GeneratedObject& object) = 0;
  // Fills object as instance number index under the reference made last, number reference.
  virtual void Instance(std::int64_t reference, std::int64_t index, GeneratedObject& object) = 0;
};

// For a document of references references (the generator's count, drawn or not).
std::unique_ptr<TextMaker> MakePartTexts(const Options& options, std::int64_t references);
std::unique_ptr<TextMaker> MakeNumberedTexts(const Options& options);
std::unique_ptr<TextMaker> MakeHostileTexts(const Options& options);

}  // namespace kova::generator

#endif  // KOVA_GENERATOR_SRC_TEXTS_H_
