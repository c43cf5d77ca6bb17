#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>

#include <utility>

KOVAMappingPrivateInstance::KOVAMappingPrivateInstance() = default;

KOVAMappingPrivateInstance::KOVAMappingPrivateInstance(ZANUnicodeString kovaId, ZANUnicodeString plexoId,
                                                       ZANUnicodeString kssStamp, ZANUnicodeString refId,
                                                       ZANUnicodeString customData, bool isLocal)
    : KOVAMappingPrivateObject(std::move(kovaId), std::move(plexoId), std::move(kssStamp), std::move(customData),
                               isLocal),
      refId_(std::move(refId)) {}

KOVAMappingPrivateInstance::KOVAMappingPrivateInstance(const KOVAMappingPrivateInstance& other) = default;
KOVAMappingPrivateInstance& KOVAMappingPrivateInstance::operator=(const KOVAMappingPrivateInstance& other) = default;
KOVAMappingPrivateInstance::~KOVAMappingPrivateInstance() = default;

ZANUnicodeString KOVAMappingPrivateInstance::GetRefID() const { return refId_; }

KOVAMappingPrivateInstance& KOVAMappingPrivateInstance::SetRefID(const ZANUnicodeString& refId) {
  refId_ = refId;
  return *this;
}
