// KOVAMappingReference: the public handle of a mapping reference. Copies and assignments share
// the private reference.
//
// Ownership: AddInstance stores the caller's instance, not a copy. The vector GetInstances returns
// is the private reference's own, valid as long as the reference lives (any handle or table
// holding it).
//
// Failure: AddInstance and RemoveInstance return E_FAIL with nothing changed (an equal instance is
// already there; no equal instance is there).
//
// Thread safety: that of every handle (KOVAMappingObject.h). A reference, its instances and every
// table holding it are used by one thread at a time (KOVAMappingTable.h).
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGREFERENCE_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGREFERENCE_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/ZANPLMID.h>

#include <vector>

class KOVAMappingPrivateReference;
class KOVAPrivateAccess;

class KOVA_EXPORT KOVAMappingReference : public KOVAMappingObject {
 public:
  KOVAMappingReference();
  KOVAMappingReference(ZANUnicodeString kovaId, ZANUnicodeString plexoId, ZANUnicodeString kssStamp,
                       ZANUnicodeString customData, bool isLocal);
  KOVAMappingReference(ZANUnicodeString kovaId, ZANPLMID_Simple plmId, ZANUnicodeString kssStamp,
                       ZANUnicodeString customData, bool isLocal);
  KOVAMappingReference(const KOVAMappingReference& other);
  KOVAMappingReference& operator=(const KOVAMappingReference& other);
  ~KOVAMappingReference() override;

  HRESULT AddInstance(KOVAMappingInstance instance);
  HRESULT RemoveInstance(KOVAMappingInstance instance);
  // The instance vector itself, to change in place (see KOVAMappingPrivateReference::GetInstances:
  // handing it out costs nothing, the indexes follow the caller's changes). A vector handed out
  // empty or with room left is checked by size at every instance look-up of the tables holding
  // this reference: to read, use the const overload.
  std::vector<KOVAMappingInstance>& GetInstances();
  // The instance vector, read-only: costs nothing and changes nothing. Reached on a const handle,
  // e.g. std::as_const(reference).GetInstances().
  const std::vector<KOVAMappingInstance>& GetInstances() const;

 private:
  friend class KOVAPrivateAccess;
  // A handle on a fresh copy of the given private reference (its instance handles still share).
  explicit KOVAMappingReference(KOVAMappingPrivateReference privateReference);
  KOVAMappingPrivateReference* Private() const;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGREFERENCE_H_
