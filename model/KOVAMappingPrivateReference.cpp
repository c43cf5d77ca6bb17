#include <KOVAMappingServices/KOVAMappingPrivateReference.h>

#include <utility>

#include "model/MappingIndex.h"

using kova::model::ContainerIndex;
using kova::model::IndexAccess;
using kova::model::InstanceVectorIndex;
using kova::model::ObjectLinks;
using kova::model::TableInstanceIndex;

KOVAMappingPrivateReference::KOVAMappingPrivateReference() = default;

KOVAMappingPrivateReference::KOVAMappingPrivateReference(ZANUnicodeString kovaId, ZANUnicodeString plexoId,
                                                         ZANUnicodeString kssStamp, ZANUnicodeString customData,
                                                         bool isLocal)
    : KOVAMappingPrivateObject(std::move(kovaId), std::move(plexoId), std::move(kssStamp), std::move(customData),
                               isLocal) {}

// The copy starts without an index and with its own vector, not handed out.
KOVAMappingPrivateReference::KOVAMappingPrivateReference(const KOVAMappingPrivateReference& other)
    : KOVAMappingPrivateObject(other), instances_(other.instances_) {}

KOVAMappingPrivateReference& KOVAMappingPrivateReference::operator=(const KOVAMappingPrivateReference& other) {
  KOVAMappingPrivateObject::operator=(other);
  if (this == &other) return *this;
  if (index_) {
    index_->Assign(other.instances_);
  } else {
    instances_ = other.instances_;
  }
  return *this;
}

KOVAMappingPrivateReference::~KOVAMappingPrivateReference() {
  if (!index_) return;
  // Tables still holding this reference (only possible when a caller took it out of a handed-out
  // vector) forget its instances before the index of them goes.
  ObjectLinks::ForEach(*this, [this](ContainerIndex* references, bool) {
    if (TableInstanceIndex* table = references->OwnerTable()->InstancesIfMade()) table->ContainerRemoved(*index_);
  });
  ObjectLinks::ForEachContainer(*this, [this](ContainerIndex* references) {
    if (TableInstanceIndex* table = references->OwnerTable()->InstancesIfMade()) table->Unwatch(*index_);
  });
  index_.reset();
}

InstanceVectorIndex& KOVAMappingPrivateReference::Index() {
  if (!index_) {
    index_ = std::make_unique<InstanceVectorIndex>(this, instances_);
    if (instancesHandedOut_) index_->HandOut();
  } else {
    index_->Sync();
  }
  return *index_;
}

// NOLINTBEGIN(performance-unnecessary-value-param): the exported signatures take these by value
HRESULT KOVAMappingPrivateReference::AddInstance(KOVAMappingInstance instance) {
  InstanceVectorIndex& index = Index();
  ContainerIndex::Hashes hashes;
  if (index.HasEqual(IndexAccess::Data(instance), &hashes)) return E_FAIL;
  index.PushBack(instance, &hashes);
  return S_OK;
}

HRESULT KOVAMappingPrivateReference::RemoveInstance(KOVAMappingInstance instance) {
  if (instances_.empty()) return E_FAIL;
  InstanceVectorIndex& index = Index();
  const std::uint32_t position = index.FindEqual(IndexAccess::Data(instance));
  if (position == ContainerIndex::kNone) return E_FAIL;
  index.EraseAt(position);
  return S_OK;
}
// NOLINTEND(performance-unnecessary-value-param)

std::vector<KOVAMappingInstance>& KOVAMappingPrivateReference::GetInstances() {
  // Only the first hand-out changes anything: from then on the index watches the vector.
  if (!instancesHandedOut_) {
    instancesHandedOut_ = true;
    if (index_) index_->HandOut();
  }
  return instances_;
}

const std::vector<KOVAMappingInstance>& KOVAMappingPrivateReference::GetInstances() const { return instances_; }
