#include <KOVAMappingServices/KOVAMappingPrivateTable.h>

#include <KOVAMappingServices/ZANEnvironment.h>

#include "model/MappingIndex.h"

#include <algorithm>
#include <utility>

namespace {

using kova::model::IndexAccess;
using kova::model::TableIndexes;
constexpr std::uint32_t kNone = kova::model::FirstPositionMap::kNone;

// The document version of this process, fixed when the library is loaded.
const std::int32_t kCurrentVersion = ZANGetEnv("RollBackMappingVersion").has_value() ? 11 : 12;

}  // namespace

std::int32_t KOVAMappingPrivateTable::GetCurrentVersion() { return kCurrentVersion; }

KOVAMappingPrivateTable::KOVAMappingPrivateTable() : version_(kCurrentVersion) {}

// The copy starts without indexes and with its own vector, not handed out.
KOVAMappingPrivateTable::KOVAMappingPrivateTable(const KOVAMappingPrivateTable& other)
    : std::enable_shared_from_this<KOVAMappingPrivateTable>(), version_(other.version_), references_(other.references_) {}

KOVAMappingPrivateTable& KOVAMappingPrivateTable::operator=(const KOVAMappingPrivateTable& other) {
  version_ = other.version_;
  if (this != &other) {
    references_ = other.references_;
    indexes_.reset();
  }
  return *this;
}

KOVAMappingPrivateTable::~KOVAMappingPrivateTable() = default;

std::int32_t KOVAMappingPrivateTable::GetVersion() const { return version_; }

KOVAMappingPrivateTable& KOVAMappingPrivateTable::SetVersion(const std::int32_t& version) {
  version_ = version;
  return *this;
}

TableIndexes& KOVAMappingPrivateTable::Indexes() {
  if (!indexes_) indexes_ = std::make_unique<TableIndexes>();
  return *indexes_;
}

namespace {

// The plain walks, used whenever an index cannot be trusted. They read the containers in place
// (nothing is handed out, no id is copied) and give the answers of the documented algorithms.
std::uint32_t WalkEqual(const std::vector<KOVAMappingReference>& references, const KOVAMappingReference& reference) {
  for (std::size_t i = 0; i < references.size(); ++i) {
    if (references[i] == reference) return static_cast<std::uint32_t>(i);
  }
  return kNone;
}

std::uint32_t WalkFirstNotLocal(const std::vector<KOVAMappingReference>& references) {
  for (std::size_t i = 0; i < references.size(); ++i) {
    if (!IndexAccess::IsLocal(IndexAccess::Data(references[i]))) return static_cast<std::uint32_t>(i);
  }
  return kNone;
}

template <bool kKova>
const KOVAMappingInstance* WalkInstance(const std::vector<KOVAMappingReference>& references,
                                        const ZANUnicodeString& id) {
  for (const KOVAMappingReference& reference : references) {
    for (const KOVAMappingInstance& instance : IndexAccess::Instances(reference)) {
      if ((kKova ? IndexAccess::KovaId(instance) : IndexAccess::PlexoId(instance)) == id) return &instance;
    }
  }
  return nullptr;
}

// The first instance of the table whose kOVA id (kKova) or Plexo id is id, shared into out.
template <bool kKova>
HRESULT FindInstance(const std::vector<KOVAMappingReference>& references, bool handedOut, TableIndexes& indexes,
                     const ZANUnicodeString& id, KOVAMappingInstance& out) {
  if (indexes.instances.Usable(references, handedOut)) {
    const auto* found = kKova ? indexes.instances.FindKova(id) : indexes.instances.FindPlexo(id);
    if (found == nullptr) return E_FAIL;
    IndexAccess::ShareInto(out, *found);
    return S_OK;
  }
  const KOVAMappingInstance* found = WalkInstance<kKova>(references, id);
  if (found == nullptr) return E_FAIL;
  out = *found;
  return S_OK;
}

// Position of the first stored reference equal to reference (either-id rule), or kNone.
std::uint32_t FindEqualReference(std::vector<KOVAMappingReference>& references, bool handedOut,
                                 TableIndexes& indexes, const KOVAMappingReference& reference) {
  if (!handedOut && indexes.references.Usable(references)) {
    return indexes.references.FindEqual(references, IndexAccess::Data(reference));
  }
  return WalkEqual(references, reference);
}

}  // namespace

HRESULT KOVAMappingPrivateTable::AddReference(KOVAMappingReference reference) {
  TableIndexes& indexes = Indexes();
  const bool indexed = !referencesHandedOut_ && indexes.references.Usable(references_);
  kova::model::VectorIndex<KOVAMappingReference>::Hashes hashes{};
  if (indexed) {
    hashes = indexes.references.HashesOf(IndexAccess::Data(reference));
    if (indexes.references.FindEqual(references_, IndexAccess::Data(reference), hashes) != kNone) return E_FAIL;
    // At most one reference that is not local: the root.
    if (indexes.references.FirstNotLocal() != kNone && !reference.GetIsLocal()) return E_FAIL;
  } else {
    if (WalkEqual(references_, reference) != kNone) return E_FAIL;
    if (WalkFirstNotLocal(references_) != kNone && !reference.GetIsLocal()) return E_FAIL;
  }
  const bool instancesExact = !referencesHandedOut_ && indexes.instances.Exact();
  references_.push_back(reference);
  const auto position = static_cast<std::uint32_t>(references_.size() - 1);
  if (indexed) indexes.references.Appended(references_, position, hashes);
  if (instancesExact) {
    indexes.instances.AppendedReference(references_, position);
  } else {
    indexes.instances.Drop();
  }
  return S_OK;
}

HRESULT KOVAMappingPrivateTable::AddInstance(KOVAMappingInstance& instance, KOVAMappingReference reference) {
  TableIndexes& indexes = Indexes();
  const std::uint32_t position = FindEqualReference(references_, referencesHandedOut_, indexes, reference);
  if (position == kNone) return E_FAIL;
  // The table-wide instance index follows the append when it was exact before and the append is
  // the only change of any instance vector in between.
  const bool instancesExact = !referencesHandedOut_ && indexes.instances.Exact();
  const std::uint64_t before = kova::model::InstanceVectorsEpoch();
  const HRESULT status = references_[position].AddInstance(instance);
  if (status == S_OK && instancesExact && kova::model::InstanceVectorsEpoch() == before + 1 &&
      before == indexes.instances.KnownInstanceEpoch()) {
    indexes.instances.AppendedInstance(references_, position);
  }
  return status;
}

HRESULT KOVAMappingPrivateTable::RemoveReference(KOVAMappingReference reference) {
  if (references_.empty()) return E_FAIL;
  TableIndexes& indexes = Indexes();
  const std::uint32_t position = FindEqualReference(references_, referencesHandedOut_, indexes, reference);
  if (position == kNone) return E_FAIL;
  references_.erase(references_.begin() + position);
  // Positions after the removed one moved.
  indexes.references.Drop();
  indexes.instances.Drop();
  return S_OK;
}

HRESULT KOVAMappingPrivateTable::RemoveInstance(KOVAMappingInstance& instance, KOVAMappingReference reference) {
  const std::uint32_t position = FindEqualReference(references_, referencesHandedOut_, Indexes(), reference);
  if (position == kNone) return E_FAIL;
  return references_[position].RemoveInstance(instance);
}

HRESULT KOVAMappingPrivateTable::GetReferenceFromKOVAId(ZANUnicodeString id, KOVAMappingReference& out) {
  TableIndexes& indexes = Indexes();
  if (!referencesHandedOut_ && indexes.references.Usable(references_)) {
    const std::uint32_t position = indexes.references.FindKova(references_, id);
    if (position == kNone) return E_FAIL;
    out = references_[position];
    return S_OK;
  }
  for (const KOVAMappingReference& stored : references_) {
    if (IndexAccess::KovaId(stored) == id) {
      out = stored;
      return S_OK;
    }
  }
  return E_FAIL;
}

HRESULT KOVAMappingPrivateTable::GetReferenceFromPlexoId(ZANUnicodeString id, KOVAMappingReference& out) {
  TableIndexes& indexes = Indexes();
  if (!referencesHandedOut_ && indexes.references.Usable(references_)) {
    const std::uint32_t position = indexes.references.FindPlexo(references_, id);
    if (position == kNone) return E_FAIL;
    out = references_[position];
    return S_OK;
  }
  for (const KOVAMappingReference& stored : references_) {
    if (IndexAccess::PlexoId(stored) == id) {
      out = stored;
      return S_OK;
    }
  }
  return E_FAIL;
}

HRESULT KOVAMappingPrivateTable::GetInstanceFromKOVAId(ZANUnicodeString id, KOVAMappingInstance& out) {
  return FindInstance<true>(references_, referencesHandedOut_, Indexes(), id, out);
}

HRESULT KOVAMappingPrivateTable::GetInstanceFromPlexoId(ZANUnicodeString id, KOVAMappingInstance& out) {
  return FindInstance<false>(references_, referencesHandedOut_, Indexes(), id, out);
}

HRESULT KOVAMappingPrivateTable::GetRootReference(KOVAMappingReference& out) {
  TableIndexes& indexes = Indexes();
  const std::uint32_t position = !referencesHandedOut_ && indexes.references.Usable(references_)
                                     ? indexes.references.FirstNotLocal()
                                     : WalkFirstNotLocal(references_);
  if (position == kNone) return E_FAIL;
  out = references_[position];
  return S_OK;
}

bool KOVAMappingPrivateTable::HasRootReference() {
  TableIndexes& indexes = Indexes();
  if (!referencesHandedOut_ && indexes.references.Usable(references_)) {
    return indexes.references.FirstNotLocal() != kNone;
  }
  return WalkFirstNotLocal(references_) != kNone;
}

std::vector<KOVAMappingReference>& KOVAMappingPrivateTable::GetReferences() {
  // The caller may change the vector at any later time: the table is walked from now on.
  referencesHandedOut_ = true;
  indexes_.reset();
  return references_;
}

std::vector<KOVAMappingInstance> KOVAMappingPrivateTable::GetInstances() {
  std::vector<KOVAMappingInstance> all;
  for (const KOVAMappingReference& reference : references_) {
    const std::vector<KOVAMappingInstance>& instances = IndexAccess::Instances(reference);
    all.insert(all.end(), instances.begin(), instances.end());
  }
  return all;
}

std::vector<KOVAMappingObject> KOVAMappingPrivateTable::GetContent() {
  std::vector<KOVAMappingObject> content;
  for (const KOVAMappingReference& reference : references_) {
    content.emplace_back(reference);
    for (const KOVAMappingInstance& instance : IndexAccess::Instances(reference)) content.emplace_back(instance);
  }
  return content;
}
