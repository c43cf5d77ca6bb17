#include <KOVAMappingServices/KOVAMappingReference.h>

#include <KOVAMappingServices/KOVAMappingPrivateReference.h>

#include <utility>

#include "model/ObjectLinks.h"

KOVAMappingReference::KOVAMappingReference() : KOVAMappingObject(std::make_shared<KOVAMappingPrivateReference>()) {}

KOVAMappingReference::KOVAMappingReference(ZANUnicodeString kovaId, ZANUnicodeString plexoId, ZANUnicodeString kssStamp,
                                           ZANUnicodeString customData, bool isLocal)
    : KOVAMappingObject(std::make_shared<KOVAMappingPrivateReference>(
          std::move(kovaId), std::move(plexoId), std::move(kssStamp), std::move(customData), isLocal)) {}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes it by value
KOVAMappingReference::KOVAMappingReference(ZANUnicodeString kovaId, ZANPLMID_Simple plmId, ZANUnicodeString kssStamp,
                                           ZANUnicodeString customData, bool isLocal)
    : KOVAMappingReference(std::move(kovaId), plmId.GetLogicalId().ToString(), std::move(kssStamp),
                           std::move(customData), isLocal) {}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes it by value
KOVAMappingReference::KOVAMappingReference(KOVAMappingPrivateReference privateReference)
    : KOVAMappingObject(std::make_shared<KOVAMappingPrivateReference>(std::move(privateReference))) {}

KOVAMappingReference::KOVAMappingReference(const KOVAMappingReference& other) = default;

KOVAMappingReference& KOVAMappingReference::operator=(const KOVAMappingReference& other) {
  // Unlike the base handle's assignment, a reference handle shares what it is assigned.
  if (private_ == other.private_) return *this;
  // This handle may be an element of a vector handed out by a table or a table.
  kova::model::ReleasingSlot(private_.get(), this);
  private_ = other.private_;
  return *this;
}

KOVAMappingReference::~KOVAMappingReference() = default;

// NOLINTBEGIN(performance-unnecessary-value-param): the exported signatures take these by value
HRESULT KOVAMappingReference::AddInstance(KOVAMappingInstance instance) { return Private()->AddInstance(instance); }

HRESULT KOVAMappingReference::RemoveInstance(KOVAMappingInstance instance) {
  return Private()->RemoveInstance(instance);
}
// NOLINTEND(performance-unnecessary-value-param)

std::vector<KOVAMappingInstance>& KOVAMappingReference::GetInstances() { return Private()->GetInstances(); }

const std::vector<KOVAMappingInstance>& KOVAMappingReference::GetInstances() const {
  return static_cast<const KOVAMappingPrivateReference*>(Private())->GetInstances();
}

KOVAMappingPrivateReference* KOVAMappingReference::Private() const {
  return static_cast<KOVAMappingPrivateReference*>(private_.get());
}
