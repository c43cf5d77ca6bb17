// KOVAMappingTable: the references of a mapping document, each with its instances, plus the
// document version and the platform object that owns the table.
//
// Copies of a table (copy construction, assignment) refer to the same private table and the same
// content; the private table lives as long as any copy does.
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

  std::vector<KOVAMappingReference>& GetReferences();
  std::vector<KOVAMappingInstance> GetInstances();
  std::vector<KOVAMappingObject> GetContent();

  ZANBaseUnknown GetOwner();
  KOVAMappingTable& SetOwner(const ZANBaseUnknown& owner);

 private:
  friend class KOVAPrivateAccess;
  std::shared_ptr<KOVAMappingPrivateTable> private_;
  ZANBaseUnknown owner_;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGTABLE_H_
