#include <KOVAGenerator/Table.h>

#include <optional>

namespace kova::generator {

GeneratedTable BuildTable(const Options& options) {
  Generator generator(options);
  GeneratedTable generated;
  std::optional<KOVAMappingReference> reference;  // the last one the table took
  generator.Generate(
      [&](const GeneratedObject& object) {
        reference.emplace(ZANUnicodeString(object.kovaId), ZANUnicodeString(object.plexoId),
                          ZANUnicodeString(object.stamp), ZANUnicodeString(object.customData), object.isLocal);
        if (ZANFailed(generated.table.AddReference(*reference))) {
          ++generated.refusedReferences;
          reference.reset();
        }
      },
      [&](const GeneratedObject& object) {
        if (!reference) return;
        KOVAMappingInstance instance(ZANUnicodeString(object.kovaId), ZANUnicodeString(object.plexoId),
                                     ZANUnicodeString(object.stamp), ZANUnicodeString(object.refId),
                                     ZANUnicodeString(object.customData), object.isLocal);
        if (ZANFailed(generated.table.AddInstance(instance, *reference))) ++generated.refusedInstances;
      });
  return generated;
}

}  // namespace kova::generator
