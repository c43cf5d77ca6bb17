// Whole generated documents: streamed, or held in memory with the ids look-ups use.
#include <KOVAGenerator/DocumentText.h>

namespace kova::generator {

void WriteDocument(const Options& options, const Sink& sink) {
  Generator generator(options);
  DocumentText text(options.version, sink);
  generator.Generate([&](const GeneratedObject& reference) { text.Reference(reference); },
                     [&](const GeneratedObject& instance) { text.Instance(instance); });
  text.Finish();
}

GeneratedDocument MakeDocument(const Options& options) {
  Generator generator(options);
  GeneratedDocument document;
  DocumentText text(options.version, [&](std::string_view piece) { document.text.append(piece); });
  generator.Generate(
      [&](const GeneratedObject& reference) {
        text.Reference(reference);
        document.referencePlexoIds.push_back(reference.plexoId);
      },
      [&](const GeneratedObject& instance) {
        text.Instance(instance);
        document.instanceKovaIds.push_back(instance.kovaId);
      });
  text.Finish();
  document.objects = document.referencePlexoIds.size() + document.instanceKovaIds.size();
  return document;
}

}  // namespace kova::generator
