#include <KOVAMappingServices/KOVAMappingPrivateTable.h>

#include <KOVAMappingServices/ZANEnvironment.h>

#include <utility>

#include "model/MappingIndex.h"
#include "model/TableLookups.h"

namespace {

using kova::model::ContainerIndex;
using kova::model::IndexAccess;
using kova::model::ReferenceVectorIndex;
using kova::model::TableIndexes;
constexpr std::uint32_t kNone = ContainerIndex::kNone;

// The document version of this process, fixed when the library is loaded.
const std::int32_t kCurrentVersion = ZANGetEnv("RollBackMappingVersion").has_value() ? 11 : 12;

}  // namespace

std::int32_t KOVAMappingPrivateTable::GetCurrentVersion() { return kCurrentVersion; }

KOVAMappingPrivateTable::KOVAMappingPrivateTable() : version_(kCurrentVersion) {}

// The copy starts without indexes and with its own vector, not handed out, and owned by no handle
// (copying enable_shared_from_this leaves the copy's owner empty).
KOVAMappingPrivateTable::KOVAMappingPrivateTable(const KOVAMappingPrivateTable& other)
    : std::enable_shared_from_this<KOVAMappingPrivateTable>(other),
      version_(other.version_),
      references_(other.references_) {}

KOVAMappingPrivateTable& KOVAMappingPrivateTable::operator=(const KOVAMappingPrivateTable& other) {
  version_ = other.version_;
  if (this == &other) return *this;
  ReferenceVectorIndex* references = indexes_ ? indexes_->ReferencesIfMade() : nullptr;
  if (references != nullptr) {
    references->Sync();
    references->Assign(other.references_);
  } else {
    references_ = other.references_;
  }
  return *this;
}

KOVAMappingPrivateTable::~KOVAMappingPrivateTable() {
  // The indexes go before the handles they describe.
  indexes_.reset();
}

std::int32_t KOVAMappingPrivateTable::GetVersion() const { return version_; }

KOVAMappingPrivateTable& KOVAMappingPrivateTable::SetVersion(const std::int32_t& version) {
  version_ = version;
  return *this;
}

TableIndexes& KOVAMappingPrivateTable::Indexes() {
  if (!indexes_) indexes_ = std::make_unique<TableIndexes>(*this);
  return *indexes_;
}

// NOLINTBEGIN(performance-unnecessary-value-param): the exported signatures take these by value
HRESULT KOVAMappingPrivateTable::AddReference(KOVAMappingReference reference) {
  ReferenceVectorIndex& references = Indexes().References();
  ContainerIndex::Hashes hashes;
  if (references.FindEqual(IndexAccess::Data(reference), &hashes) != kNone) return E_FAIL;
  // At most one reference that is not local: the root.
  if (references.FirstNotLocal() != kNone && !IndexAccess::IsLocal(IndexAccess::Data(reference))) return E_FAIL;
  references.PushBack(reference, &hashes);
  return S_OK;
}

HRESULT KOVAMappingPrivateTable::AddInstance(KOVAMappingInstance& instance, KOVAMappingReference reference) {
  const std::uint32_t position = Indexes().References().FindEqual(IndexAccess::Data(reference));
  if (position == kNone) return E_FAIL;
  return references_[position].AddInstance(instance);
}

HRESULT KOVAMappingPrivateTable::RemoveReference(KOVAMappingReference reference) {
  if (references_.empty()) return E_FAIL;
  ReferenceVectorIndex& references = Indexes().References();
  const std::uint32_t position = references.FindEqual(IndexAccess::Data(reference));
  if (position == kNone) return E_FAIL;
  references.EraseAt(position);
  return S_OK;
}

HRESULT KOVAMappingPrivateTable::RemoveInstance(KOVAMappingInstance& instance, KOVAMappingReference reference) {
  const std::uint32_t position = Indexes().References().FindEqual(IndexAccess::Data(reference));
  if (position == kNone) return E_FAIL;
  return references_[position].RemoveInstance(instance);
}
// NOLINTEND(performance-unnecessary-value-param)

namespace kova::model {

HRESULT FindReference(KOVAMappingPrivateTable& table, const ZANUnicodeString& id, bool byKova,
                      KOVAMappingReference& out) {
  ReferenceVectorIndex& references = IndexAccess::Indexes(table).References();
  const std::uint32_t position = byKova ? references.FindKova(id) : references.FindPlexo(id);
  if (position == kNone) return E_FAIL;
  out = IndexAccess::References(table)[position];
  return S_OK;
}

HRESULT FindInstance(KOVAMappingPrivateTable& table, const ZANUnicodeString& id, bool byKova,
                     KOVAMappingInstance& out) {
  TableInstanceIndex& instances = IndexAccess::Indexes(table).Instances();
  const auto* found = byKova ? instances.FindKova(id) : instances.FindPlexo(id);
  if (found == nullptr) return E_FAIL;
  IndexAccess::ShareInto(out, *found);
  return S_OK;
}

}  // namespace kova::model

// NOLINTBEGIN(performance-unnecessary-value-param): the exported signatures take these by value
HRESULT KOVAMappingPrivateTable::GetReferenceFromKOVAId(ZANUnicodeString id, KOVAMappingReference& out) {
  return kova::model::FindReference(*this, id, true, out);
}

HRESULT KOVAMappingPrivateTable::GetReferenceFromPlexoId(ZANUnicodeString id, KOVAMappingReference& out) {
  return kova::model::FindReference(*this, id, false, out);
}

HRESULT KOVAMappingPrivateTable::GetInstanceFromKOVAId(ZANUnicodeString id, KOVAMappingInstance& out) {
  return kova::model::FindInstance(*this, id, true, out);
}

HRESULT KOVAMappingPrivateTable::GetInstanceFromPlexoId(ZANUnicodeString id, KOVAMappingInstance& out) {
  return kova::model::FindInstance(*this, id, false, out);
}
// NOLINTEND(performance-unnecessary-value-param)

HRESULT KOVAMappingPrivateTable::GetRootReference(KOVAMappingReference& out) {
  const std::uint32_t position = Indexes().References().FirstNotLocal();
  if (position == kNone) return E_FAIL;
  out = references_[position];
  return S_OK;
}

bool KOVAMappingPrivateTable::HasRootReference() { return Indexes().References().FirstNotLocal() != kNone; }

std::vector<KOVAMappingReference>& KOVAMappingPrivateTable::GetReferences() {
  // Only the first hand-out changes anything: from then on the index watches the vector.
  if (!referencesHandedOut_) {
    referencesHandedOut_ = true;
    if (indexes_ && indexes_->ReferencesIfMade() != nullptr) indexes_->ReferencesIfMade()->HandOut();
  }
  return references_;
}

const std::vector<KOVAMappingReference>& KOVAMappingPrivateTable::GetReferences() const { return references_; }

std::vector<KOVAMappingInstance> KOVAMappingPrivateTable::GetInstances() const {
  std::size_t count = 0;
  for (const KOVAMappingReference& reference : references_) count += IndexAccess::Instances(reference).size();
  std::vector<KOVAMappingInstance> all;
  all.reserve(count);
  for (const KOVAMappingReference& reference : references_) {
    const std::vector<KOVAMappingInstance>& instances = IndexAccess::Instances(reference);
    all.insert(all.end(), instances.begin(), instances.end());
  }
  return all;
}

std::vector<KOVAMappingObject> KOVAMappingPrivateTable::GetContent() const {
  std::size_t count = references_.size();
  for (const KOVAMappingReference& reference : references_) count += IndexAccess::Instances(reference).size();
  std::vector<KOVAMappingObject> content;
  content.reserve(count);
  for (const KOVAMappingReference& reference : references_) {
    content.emplace_back(reference);
    for (const KOVAMappingInstance& instance : IndexAccess::Instances(reference)) content.emplace_back(instance);
  }
  return content;
}
