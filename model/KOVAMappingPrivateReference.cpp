#include <KOVAMappingServices/KOVAMappingPrivateReference.h>

#include <algorithm>
#include <utility>

KOVAMappingPrivateReference::KOVAMappingPrivateReference() = default;

KOVAMappingPrivateReference::KOVAMappingPrivateReference(ZANUnicodeString kovaId, ZANUnicodeString plexoId,
                                                         ZANUnicodeString kssStamp, ZANUnicodeString customData,
                                                         bool isLocal)
    : KOVAMappingPrivateObject(std::move(kovaId), std::move(plexoId), std::move(kssStamp), std::move(customData),
                               isLocal) {}

KOVAMappingPrivateReference::KOVAMappingPrivateReference(const KOVAMappingPrivateReference& other) = default;
KOVAMappingPrivateReference& KOVAMappingPrivateReference::operator=(const KOVAMappingPrivateReference& other) = default;
KOVAMappingPrivateReference::~KOVAMappingPrivateReference() = default;

HRESULT KOVAMappingPrivateReference::AddInstance(KOVAMappingInstance instance) {
  for (const KOVAMappingInstance& stored : instances_) {
    if (stored == instance) return E_FAIL;
  }
  instances_.push_back(instance);
  return S_OK;
}

HRESULT KOVAMappingPrivateReference::RemoveInstance(KOVAMappingInstance instance) {
  if (instances_.empty()) return E_FAIL;
  const auto found = std::find(instances_.begin(), instances_.end(), instance);
  if (found == instances_.end()) return E_FAIL;
  instances_.erase(found);
  return S_OK;
}

std::vector<KOVAMappingInstance>& KOVAMappingPrivateReference::GetInstances() { return instances_; }
