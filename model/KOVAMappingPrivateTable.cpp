#include <KOVAMappingServices/KOVAMappingPrivateTable.h>

#include <KOVAMappingServices/ZANEnvironment.h>

#include <algorithm>
#include <utility>

namespace {

// The document version of this process, fixed when the library is loaded.
const std::int32_t kCurrentVersion = ZANGetEnv("RollBackMappingVersion").has_value() ? 11 : 12;

}  // namespace

std::int32_t KOVAMappingPrivateTable::GetCurrentVersion() { return kCurrentVersion; }

KOVAMappingPrivateTable::KOVAMappingPrivateTable() : version_(kCurrentVersion) {}

KOVAMappingPrivateTable::KOVAMappingPrivateTable(const KOVAMappingPrivateTable& other)
    : std::enable_shared_from_this<KOVAMappingPrivateTable>(), version_(other.version_), references_(other.references_) {}

KOVAMappingPrivateTable& KOVAMappingPrivateTable::operator=(const KOVAMappingPrivateTable& other) {
  version_ = other.version_;
  if (this != &other) references_ = other.references_;
  return *this;
}

KOVAMappingPrivateTable::~KOVAMappingPrivateTable() = default;

std::int32_t KOVAMappingPrivateTable::GetVersion() const { return version_; }

KOVAMappingPrivateTable& KOVAMappingPrivateTable::SetVersion(const std::int32_t& version) {
  version_ = version;
  return *this;
}

HRESULT KOVAMappingPrivateTable::AddReference(KOVAMappingReference reference) {
  for (const KOVAMappingReference& stored : references_) {
    if (stored == reference) return E_FAIL;
  }
  // At most one reference that is not local: the root.
  if (HasRootReference() && !reference.GetIsLocal()) return E_FAIL;
  references_.push_back(reference);
  return S_OK;
}

HRESULT KOVAMappingPrivateTable::AddInstance(KOVAMappingInstance& instance, KOVAMappingReference reference) {
  for (std::size_t i = 0; i < references_.size(); ++i) {
    if (references_[i] == reference) return references_[i].AddInstance(instance);
  }
  return E_FAIL;
}

HRESULT KOVAMappingPrivateTable::RemoveReference(KOVAMappingReference reference) {
  if (references_.empty()) return E_FAIL;
  const auto found = std::find(references_.begin(), references_.end(), reference);
  if (found == references_.end()) return E_FAIL;
  references_.erase(found);
  return S_OK;
}

HRESULT KOVAMappingPrivateTable::RemoveInstance(KOVAMappingInstance& instance, KOVAMappingReference reference) {
  for (KOVAMappingReference& stored : references_) {
    if (stored == reference) return stored.RemoveInstance(instance);
  }
  return E_FAIL;
}

HRESULT KOVAMappingPrivateTable::GetReferenceFromKOVAId(ZANUnicodeString id, KOVAMappingReference& out) {
  for (const KOVAMappingReference& stored : references_) {
    if (stored.GetKOVAID() == id) {
      out = stored;
      return S_OK;
    }
  }
  return E_FAIL;
}

HRESULT KOVAMappingPrivateTable::GetReferenceFromPlexoId(ZANUnicodeString id, KOVAMappingReference& out) {
  for (const KOVAMappingReference& stored : references_) {
    if (stored.GetPlexoID() == id) {
      out = stored;
      return S_OK;
    }
  }
  return E_FAIL;
}

HRESULT KOVAMappingPrivateTable::GetInstanceFromKOVAId(ZANUnicodeString id, KOVAMappingInstance& out) {
  for (KOVAMappingReference& reference : references_) {
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      if (instance.GetKOVAID() == id) {
        out = instance;
        return S_OK;
      }
    }
  }
  return E_FAIL;
}

HRESULT KOVAMappingPrivateTable::GetInstanceFromPlexoId(ZANUnicodeString id, KOVAMappingInstance& out) {
  for (KOVAMappingReference& reference : references_) {
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      if (instance.GetPlexoID() == id) {
        out = instance;
        return S_OK;
      }
    }
  }
  return E_FAIL;
}

HRESULT KOVAMappingPrivateTable::GetRootReference(KOVAMappingReference& out) {
  for (const KOVAMappingReference& stored : references_) {
    if (!stored.GetIsLocal()) {
      out = stored;
      return S_OK;
    }
  }
  return E_FAIL;
}

bool KOVAMappingPrivateTable::HasRootReference() {
  return std::any_of(references_.begin(), references_.end(),
                     [](const KOVAMappingReference& stored) { return !stored.GetIsLocal(); });
}

std::vector<KOVAMappingReference>& KOVAMappingPrivateTable::GetReferences() { return references_; }

std::vector<KOVAMappingInstance> KOVAMappingPrivateTable::GetInstances() {
  std::vector<KOVAMappingInstance> all;
  for (KOVAMappingReference& reference : references_) {
    const std::vector<KOVAMappingInstance>& instances = reference.GetInstances();
    all.insert(all.end(), instances.begin(), instances.end());
  }
  return all;
}

std::vector<KOVAMappingObject> KOVAMappingPrivateTable::GetContent() {
  std::vector<KOVAMappingObject> content;
  for (KOVAMappingReference& reference : references_) {
    content.emplace_back(reference);
    for (const KOVAMappingInstance& instance : reference.GetInstances()) content.emplace_back(instance);
  }
  return content;
}
