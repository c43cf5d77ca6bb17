#include <KOVAMappingServices/KOVAMappingTable.h>

#include <KOVAMappingServices/KOVAMappingPrivateTable.h>

#include <utility>

#include "model/TableLookups.h"

KOVAMappingTable::KOVAMappingTable() : private_(std::make_shared<KOVAMappingPrivateTable>()) {}

KOVAMappingTable::KOVAMappingTable(const KOVAMappingTable& other) = default;

KOVAMappingTable& KOVAMappingTable::operator=(const KOVAMappingTable& other) = default;

KOVAMappingTable::~KOVAMappingTable() = default;

HRESULT KOVAMappingTable::AddReference(KOVAMappingReference& reference) { return private_->AddReference(reference); }

HRESULT KOVAMappingTable::AddInstance(KOVAMappingInstance& instance, KOVAMappingReference& reference) {
  return private_->AddInstance(instance, reference);
}

HRESULT KOVAMappingTable::RemoveReference(KOVAMappingReference& reference) {
  return private_->RemoveReference(reference);
}

HRESULT KOVAMappingTable::RemoveInstance(KOVAMappingInstance& instance, KOVAMappingReference& reference) {
  return private_->RemoveInstance(instance, reference);
}

// NOLINTBEGIN(performance-unnecessary-value-param): the exported signatures take these by value
HRESULT KOVAMappingTable::GetReferenceFromKOVAId(ZANUnicodeString id, KOVAMappingReference& out) {
  return kova::model::FindReference(*private_, id, true, out);
}

HRESULT KOVAMappingTable::GetReferenceFromPlexoId(ZANUnicodeString id, KOVAMappingReference& out) {
  return kova::model::FindReference(*private_, id, false, out);
}

HRESULT KOVAMappingTable::GetInstanceFromKOVAId(ZANUnicodeString id, KOVAMappingInstance& out) {
  return kova::model::FindInstance(*private_, id, true, out);
}

HRESULT KOVAMappingTable::GetInstanceFromPlexoId(ZANUnicodeString id, KOVAMappingInstance& out) {
  return kova::model::FindInstance(*private_, id, false, out);
}
// NOLINTEND(performance-unnecessary-value-param)

HRESULT KOVAMappingTable::GetRootReference(KOVAMappingReference& out) { return private_->GetRootReference(out); }

bool KOVAMappingTable::HasRootReference() { return private_->HasRootReference(); }

std::vector<KOVAMappingReference>& KOVAMappingTable::GetReferences() { return private_->GetReferences(); }

const std::vector<KOVAMappingReference>& KOVAMappingTable::GetReferences() const {
  return std::as_const(*private_).GetReferences();
}

std::vector<KOVAMappingInstance> KOVAMappingTable::GetInstances() const { return private_->GetInstances(); }

std::vector<KOVAMappingObject> KOVAMappingTable::GetContent() const { return private_->GetContent(); }

ZANBaseUnknown KOVAMappingTable::GetOwner() { return owner_; }

KOVAMappingTable& KOVAMappingTable::SetOwner(const ZANBaseUnknown& owner) {
  owner_ = owner;
  return *this;
}
