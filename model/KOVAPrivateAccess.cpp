#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <utility>

std::shared_ptr<KOVAMappingPrivateInstance> KOVAPrivateAccess::GetPrivate(const KOVAMappingInstance& instance) {
  return std::static_pointer_cast<KOVAMappingPrivateInstance>(instance.GetPrivate());
}

std::shared_ptr<KOVAMappingPrivateReference> KOVAPrivateAccess::GetPrivate(const KOVAMappingReference& reference) {
  return std::static_pointer_cast<KOVAMappingPrivateReference>(reference.GetPrivate());
}

KOVAMappingPrivateTable* KOVAPrivateAccess::GetPrivate(KOVAMappingTable& table) { return table.private_.get(); }

// NOLINTBEGIN(performance-unnecessary-value-param): the exported signatures take these by value
KOVAMappingInstance KOVAPrivateAccess::GetPublic(KOVAMappingPrivateInstance privateInstance) {
  return KOVAMappingInstance(privateInstance);
}

KOVAMappingReference KOVAPrivateAccess::GetPublic(KOVAMappingPrivateReference privateReference) {
  return KOVAMappingReference(privateReference);
}
// NOLINTEND(performance-unnecessary-value-param)

KOVAMappingTable KOVAPrivateAccess::GetPublic(KOVAMappingPrivateTable& privateTable) {
  KOVAMappingTable table;
  // A private table already owned by a table is shared with it, never owned twice: that would
  // delete it twice.
  std::shared_ptr<KOVAMappingPrivateTable> owner = privateTable.weak_from_this().lock();
  table.private_ = owner ? std::move(owner) : std::shared_ptr<KOVAMappingPrivateTable>(&privateTable);
  return table;
}
