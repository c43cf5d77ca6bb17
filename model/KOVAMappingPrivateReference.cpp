#include <KOVAMappingServices/KOVAMappingPrivateReference.h>

#include <algorithm>
#include <utility>

#include "model/MappingIndex.h"

using kova::model::IndexAccess;
using kova::model::InstanceVectorIndex;

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
  instances_ = other.instances_;
  if (index_) index_->Drop();
  kova::model::BumpInstanceVectorsEpoch();
  return *this;
}

KOVAMappingPrivateReference::~KOVAMappingPrivateReference() = default;

InstanceVectorIndex* KOVAMappingPrivateReference::Index() {
  if (instancesHandedOut_) return nullptr;
  if (!index_) index_ = std::make_unique<InstanceVectorIndex>();
  return index_->Usable(instances_) ? index_.get() : nullptr;
}

HRESULT KOVAMappingPrivateReference::AddInstance(KOVAMappingInstance instance) {
  InstanceVectorIndex* index = Index();
  InstanceVectorIndex::Hashes hashes{};
  if (index != nullptr) {
    hashes = InstanceVectorIndex::HashesOf(IndexAccess::Data(instance));
    if (index->FindEqual(instances_, IndexAccess::Data(instance), hashes) != InstanceVectorIndex::kNone) return E_FAIL;
  } else {
    for (const KOVAMappingInstance& stored : instances_) {
      if (stored == instance) return E_FAIL;
    }
  }
  instances_.push_back(instance);
  if (index != nullptr) index->Appended(instances_, static_cast<std::uint32_t>(instances_.size() - 1), hashes);
  kova::model::BumpInstanceVectorsEpoch();
  return S_OK;
}

HRESULT KOVAMappingPrivateReference::RemoveInstance(KOVAMappingInstance instance) {
  if (instances_.empty()) return E_FAIL;
  InstanceVectorIndex* index = Index();
  auto found = instances_.end();
  if (index != nullptr) {
    const std::uint32_t position = index->FindEqual(instances_, IndexAccess::Data(instance));
    if (position != InstanceVectorIndex::kNone) found = instances_.begin() + position;
  } else {
    found = std::find(instances_.begin(), instances_.end(), instance);
  }
  if (found == instances_.end()) return E_FAIL;
  instances_.erase(found);
  // Positions after the removed one moved.
  if (index_) index_->Drop();
  kova::model::BumpInstanceVectorsEpoch();
  return S_OK;
}

std::vector<KOVAMappingInstance>& KOVAMappingPrivateReference::GetInstances() {
  // The caller may change the vector at any later time: it is walked from now on.
  instancesHandedOut_ = true;
  index_.reset();
  kova::model::BumpInstanceVectorsEpoch();
  return instances_;
}
