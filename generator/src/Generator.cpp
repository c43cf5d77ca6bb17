#include <KOVAGenerator/Generator.h>

#include "src/Layout.h"
#include "src/Texts.h"

namespace kova::generator {

namespace {

std::unique_ptr<TextMaker> MakeTexts(const Options& options, std::int64_t references) {
  switch (options.texts) {
    case Texts::kNumbered: return MakeNumberedTexts(options);
    case Texts::kHostile: return MakeHostileTexts(options);
    case Texts::kParts: break;
  }
  return MakePartTexts(options, references);
}

}  // namespace

Generator::Generator(const Options& options) : options_(options) { Check(options); }

void Generator::Generate(const std::function<void(const GeneratedObject&)>& onReference,
                         const std::function<void(const GeneratedObject&)>& onInstance) {
  Layout layout(options_);
  const std::unique_ptr<TextMaker> texts = MakeTexts(options_, layout.References());
  GeneratedObject object;
  for (std::int64_t r = 0; r < layout.References(); ++r) {
    texts->Reference(r, object);
    onReference(object);
    const std::int64_t instances = layout.NextInstances();
    for (std::int64_t i = 0; i < instances; ++i) {
      texts->Instance(r, i, object);
      onInstance(object);
    }
  }
}

}  // namespace kova::generator
