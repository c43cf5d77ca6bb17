#include <KOVAMappingServices/KOVAMappingInstance.h>

#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>

#include <utility>

#include "model/ObjectLinks.h"

KOVAMappingInstance::KOVAMappingInstance() : KOVAMappingObject(std::make_shared<KOVAMappingPrivateInstance>()) {}

KOVAMappingInstance::KOVAMappingInstance(ZANUnicodeString kovaId, ZANUnicodeString plexoId, ZANUnicodeString kssStamp,
                                         ZANUnicodeString refId, ZANUnicodeString customData, bool isLocal)
    : KOVAMappingObject(std::make_shared<KOVAMappingPrivateInstance>(std::move(kovaId), std::move(plexoId),
                                                                     std::move(kssStamp), std::move(refId),
                                                                     std::move(customData), isLocal)) {}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes it by value
KOVAMappingInstance::KOVAMappingInstance(ZANUnicodeString kovaId, ZANPLMID_Simple plmId, ZANUnicodeString kssStamp,
                                         ZANUnicodeString refId, ZANUnicodeString customData, bool isLocal)
    : KOVAMappingInstance(std::move(kovaId), plmId.GetLogicalId().ToString(), std::move(kssStamp), std::move(refId),
                          std::move(customData), isLocal) {}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes it by value
KOVAMappingInstance::KOVAMappingInstance(KOVAMappingPrivateInstance privateInstance)
    : KOVAMappingObject(std::make_shared<KOVAMappingPrivateInstance>(std::move(privateInstance))) {}

KOVAMappingInstance::KOVAMappingInstance(const KOVAMappingInstance& other) = default;

KOVAMappingInstance& KOVAMappingInstance::operator=(const KOVAMappingInstance& other) {
  // Unlike the base handle's assignment, an instance handle shares what it is assigned.
  if (private_ == other.private_) return *this;
  // This handle may be an element of a vector handed out by a reference or a table.
  kova::model::ReleasingSlot(private_.get(), this);
  private_ = other.private_;
  return *this;
}

KOVAMappingInstance::~KOVAMappingInstance() = default;

ZANUnicodeString KOVAMappingInstance::GetRefID() const { return Private()->GetRefID(); }

KOVAMappingInstance& KOVAMappingInstance::SetRefID(const ZANUnicodeString& refId) {
  Private()->SetRefID(refId);
  return *this;
}

KOVAMappingPrivateInstance* KOVAMappingInstance::Private() const {
  return static_cast<KOVAMappingPrivateInstance*>(private_.get());
}
