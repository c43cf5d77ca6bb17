// KOVAMappingInstance: the public handle of a mapping instance. Copies and assignments share the
// private instance.
//
// Ownership and thread safety: those of every handle (KOVAMappingObject.h). An instance held by a
// table is used by one thread at a time together with that table (KOVAMappingTable.h).
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGINSTANCE_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGINSTANCE_H_

#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/ZANPLMID.h>

class KOVAMappingPrivateInstance;
class KOVAPrivateAccess;

class KOVA_EXPORT KOVAMappingInstance : public KOVAMappingObject {
 public:
  KOVAMappingInstance();
  KOVAMappingInstance(ZANUnicodeString kovaId, ZANUnicodeString plexoId, ZANUnicodeString kssStamp,
                      ZANUnicodeString refId, ZANUnicodeString customData, bool isLocal);
  // The Plexo id is the text of the platform id's logical id.
  KOVAMappingInstance(ZANUnicodeString kovaId, ZANPLMID_Simple plmId, ZANUnicodeString kssStamp, ZANUnicodeString refId,
                      ZANUnicodeString customData, bool isLocal);
  KOVAMappingInstance(const KOVAMappingInstance& other);
  KOVAMappingInstance& operator=(const KOVAMappingInstance& other);
  ~KOVAMappingInstance() override;

  ZANUnicodeString GetRefID() const;
  KOVAMappingInstance& SetRefID(const ZANUnicodeString& refId);

 private:
  friend class KOVAPrivateAccess;
  // A handle on a fresh copy of the given private instance.
  explicit KOVAMappingInstance(KOVAMappingPrivateInstance privateInstance);
  KOVAMappingPrivateInstance* Private() const;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGINSTANCE_H_
