// KOVAMappingTable: the references of a mapping document, each with its instances, plus the
// document version and the platform object that owns the table.
//
// Copies of a table (copy construction, assignment) refer to the same private table and the same
// content; the private table lives as long as any copy does.
//
// Look-ups by id are hash look-ups whatever the host did before: the table's indexes follow every
// change made through the table, through any handle of its objects, or in place in the vectors it
// hands out, at a cost in proportion to what changed. Answers are those of walking the references
// (and their instances) in order: the first match wins.
//
// Ownership: copies of a table share its content; the owner handle (GetOwner, SetOwner) is held by
// each copy, not shared. AddReference and AddInstance store the caller's object, not a copy: later
// changes through the caller's handle are the table's. Handles the table gives out (look-ups,
// GetRootReference, GetInstances, GetContent) share the table's objects and keep them alive after
// the table is gone. The vector GetReferences returns is the table's own, valid while any copy of
// the table lives.
//
// Failure: a call that returns E_FAIL changes nothing, and a failed look-up leaves its output
// untouched. When memory runs out a call raises std::bad_alloc and may have made part of its
// change; such a table is fit only to be assigned to or destroyed.
//
// Thread safety: none, not even for reading: a look-up may make or bring up to date the table's
// indexes, so every call, const ones included, uses the table. A table, its copies, its objects and
// the handles that share them are used by one thread at a time; assigning or destroying a handle
// uses its object (KOVAMappingObject.h). An object held by several tables (a reference, or an
// instance under references of two tables) ties those tables together: they are used by one thread
// at a time as one. The reference counts of handles and table copies are atomic. Tables that share
// no object may be used by different threads at once: the library keeps no state shared between
// tables.
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGTABLE_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGTABLE_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/ZANBaseUnknown.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <memory>
#include <vector>

class KOVAMappingPrivateTable;
class KOVAPrivateAccess;

class KOVA_EXPORT KOVAMappingTable {
 public:
  KOVAMappingTable();
  KOVAMappingTable(const KOVAMappingTable& other);
  KOVAMappingTable& operator=(const KOVAMappingTable& other);
  virtual ~KOVAMappingTable();

  HRESULT AddReference(KOVAMappingReference& reference);
  HRESULT AddInstance(KOVAMappingInstance& instance, KOVAMappingReference& reference);
  HRESULT RemoveReference(KOVAMappingReference& reference);
  HRESULT RemoveInstance(KOVAMappingInstance& instance, KOVAMappingReference& reference);

  HRESULT GetReferenceFromKOVAId(ZANUnicodeString id, KOVAMappingReference& out);
  HRESULT GetReferenceFromPlexoId(ZANUnicodeString id, KOVAMappingReference& out);
  HRESULT GetInstanceFromKOVAId(ZANUnicodeString id, KOVAMappingInstance& out);
  HRESULT GetInstanceFromPlexoId(ZANUnicodeString id, KOVAMappingInstance& out);

  HRESULT GetRootReference(KOVAMappingReference& out);
  bool HasRootReference();

  // Ways to go through the content, and what each costs:
  //  - GetReferences(): the reference vector itself, to change in place; handing it out costs
  //    nothing, and the table's indexes follow whatever the caller then does with it.
  //  - GetReferences() const (e.g. std::as_const(table).GetReferences()): the same vector,
  //    read-only; costs nothing.
  //  - KOVAMappingReference::GetInstances(), mutable or const: a reference's instance vector, the
  //    same way.
  //  - GetInstances(), GetContent(): new vectors of handles sharing the table's objects, built on
  //    each call (one handle copy per object).
  std::vector<KOVAMappingReference>& GetReferences();
  const std::vector<KOVAMappingReference>& GetReferences() const;
  // All instances, reference by reference, each reference's instances in order.
  std::vector<KOVAMappingInstance> GetInstances() const;
  // Each reference followed by its instances, in table order.
  std::vector<KOVAMappingObject> GetContent() const;

  ZANBaseUnknown GetOwner();
  KOVAMappingTable& SetOwner(const ZANBaseUnknown& owner);

 private:
  friend class KOVAPrivateAccess;
  std::shared_ptr<KOVAMappingPrivateTable> private_;
  ZANBaseUnknown owner_;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGTABLE_H_
