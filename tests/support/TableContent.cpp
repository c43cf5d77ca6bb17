#include "tests/support/TableContent.h"

#include <KOVAMappingServices/KOVAPrivateAccess.h>

namespace kova::test {

namespace {

void Describe(std::string& out, const char* kind, const KOVAMappingPrivateObject& object, const std::string& refId) {
  out += std::string(kind) + " kOVAId=[" + object.GetKOVAID().ConvertToChar() + "] PlexoId=[" +
         object.GetPlexoID().ConvertToChar() + "] stamp=[" + object.GetKSStamp().ConvertToChar() +
         "] version=" + std::to_string(object.GetKSSVersion()) + " custom=[" + object.GetCustomData().ConvertToChar() +
         "] local=" + (object.GetIsLocal() ? "1" : "0") + " RefId=[" + refId + "]\n";
}

}  // namespace

std::string DescribeContent(KOVAMappingTable& table) {
  std::string out;
  for (KOVAMappingReference& reference : table.GetReferences()) {
    Describe(out, "reference", *KOVAPrivateAccess::GetPrivate(reference), "");
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      const auto data = KOVAPrivateAccess::GetPrivate(instance);
      Describe(out, "  instance", *data, data->GetRefID().ConvertToChar());
    }
  }
  return out;
}

}  // namespace kova::test
