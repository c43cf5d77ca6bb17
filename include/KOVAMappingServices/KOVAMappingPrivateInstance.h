// Private mapping instance: a mapping object plus the id of the reference it instantiates.
//
// Ownership and thread safety: those of every private object (KOVAMappingPrivateObject.h).
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEINSTANCE_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEINSTANCE_H_

#include <KOVAMappingServices/KOVAMappingPrivateObject.h>

class KOVA_EXPORT KOVAMappingPrivateInstance : public KOVAMappingPrivateObject {
 public:
  KOVAMappingPrivateInstance();
  KOVAMappingPrivateInstance(ZANUnicodeString kovaId, ZANUnicodeString plexoId, ZANUnicodeString kssStamp,
                             ZANUnicodeString refId, ZANUnicodeString customData, bool isLocal);
  KOVAMappingPrivateInstance(const KOVAMappingPrivateInstance& other);
  KOVAMappingPrivateInstance& operator=(const KOVAMappingPrivateInstance& other);
  ~KOVAMappingPrivateInstance() override;

  // The id of the reference this instance instantiates, as read from the document (never checked).
  ZANUnicodeString GetRefID() const;
  KOVAMappingPrivateInstance& SetRefID(const ZANUnicodeString& refId);

 private:
  ZANUnicodeString refId_;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEINSTANCE_H_
