// KOVAMappingPrivateTable: the data behind a KOVAMappingTable.
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATETABLE_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATETABLE_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace kova::model {
struct IndexAccess;
class TableIndexes;
}  // namespace kova::model

// Ownership: the table holds handles of its references, sharing them with the callers that added
// them; the vector GetReferences returns is its own, valid as long as the table lives. Handles it
// gives out share its objects.
//
// Failure: E_FAIL changes nothing and leaves outputs untouched; after std::bad_alloc the table is
// fit only to be assigned to or destroyed.
//
// Thread safety: none, not even for reading: look-ups make or bring up to date the indexes. A
// table, its objects and the handles that share them are used by one thread at a time, with every
// other table holding one of those objects; tables that share no object may be used by different
// threads at once.
//
// Look-ups are answered from hash indexes that the table keeps in step with every change, made
// through the table, through any handle of its objects (ids, is-local flag) or in place in the
// vectors it hands out; their answers are exactly those of walking the vectors in order.
class KOVA_EXPORT KOVAMappingPrivateTable : public std::enable_shared_from_this<KOVAMappingPrivateTable> {
 public:
  // An empty table of the current document version.
  KOVAMappingPrivateTable();
  // Copies the version and the reference handles (the copies share the private references).
  KOVAMappingPrivateTable(const KOVAMappingPrivateTable& other);
  // Assignment to itself copies the version only.
  KOVAMappingPrivateTable& operator=(const KOVAMappingPrivateTable& other);
  virtual ~KOVAMappingPrivateTable();

  // The document version written by this process: 12, or 11 when "RollBackMappingVersion" was set
  // when the library was loaded.
  static std::int32_t GetCurrentVersion();

  std::int32_t GetVersion() const;
  // Stores the number unchecked.
  KOVAMappingPrivateTable& SetVersion(const std::int32_t& version);

  // Appends the reference unless one equal to it (either-id rule) is stored, or it is not local
  // while the table already has a root: S_OK or E_FAIL.
  HRESULT AddReference(KOVAMappingReference reference);
  // Adds the instance to the stored reference equal to reference: that reference's status, or
  // E_FAIL when no stored reference is equal.
  HRESULT AddInstance(KOVAMappingInstance& instance, KOVAMappingReference reference);
  // Removes the first stored reference equal to reference (with its instances).
  HRESULT RemoveReference(KOVAMappingReference reference);
  // Removes instance from the first stored reference equal to reference.
  HRESULT RemoveInstance(KOVAMappingInstance& instance, KOVAMappingReference reference);

  // Look-ups by exact id; the first match in table order is shared into out. E_FAIL leaves out
  // untouched.
  HRESULT GetReferenceFromKOVAId(ZANUnicodeString id, KOVAMappingReference& out);
  HRESULT GetReferenceFromPlexoId(ZANUnicodeString id, KOVAMappingReference& out);
  HRESULT GetInstanceFromKOVAId(ZANUnicodeString id, KOVAMappingInstance& out);
  HRESULT GetInstanceFromPlexoId(ZANUnicodeString id, KOVAMappingInstance& out);

  // The root is the first reference, in table order, that is not local.
  HRESULT GetRootReference(KOVAMappingReference& out);
  bool HasRootReference();

  // The reference vector itself; callers may change it in place, now or at any later time.
  // Handing it out costs nothing. The table's indexes follow what the caller does with it: a change
  // that replaces or removes elements is noted by the handles as it happens, an append is seen from
  // the vector's size, and the next operation compares the element pointers once and redoes only
  // what changed.
  std::vector<KOVAMappingReference>& GetReferences();
  // The reference vector, read-only: costs nothing and changes nothing.
  const std::vector<KOVAMappingReference>& GetReferences() const;
  // All instances, reference by reference (a new vector of shared handles).
  std::vector<KOVAMappingInstance> GetInstances() const;
  // Each reference followed by its instances, in table order (a new vector of shared handles).
  std::vector<KOVAMappingObject> GetContent() const;

 private:
  friend struct kova::model::IndexAccess;
  // The table's indexes, made on first use; see model/TableInstanceIndex.h.
  kova::model::TableIndexes& Indexes();

  std::int32_t version_;
  std::vector<KOVAMappingReference> references_;
  std::unique_ptr<kova::model::TableIndexes> indexes_;
  // references_ was handed out by GetReferences().
  bool referencesHandedOut_ = false;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATETABLE_H_
