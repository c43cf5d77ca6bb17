// Private mapping reference: a mapping object plus its instances, in insertion order.
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>

#include <vector>

class KOVA_EXPORT KOVAMappingPrivateReference : public KOVAMappingPrivateObject {
 public:
  KOVAMappingPrivateReference();
  KOVAMappingPrivateReference(ZANUnicodeString kovaId, ZANUnicodeString plexoId, ZANUnicodeString kssStamp,
                              ZANUnicodeString customData, bool isLocal);
  // Copies the fields and the instance handles (the copies share the private instances).
  KOVAMappingPrivateReference(const KOVAMappingPrivateReference& other);
  KOVAMappingPrivateReference& operator=(const KOVAMappingPrivateReference& other);
  ~KOVAMappingPrivateReference() override;

  // Appends the handle (sharing its private instance) unless an instance equal to it by the
  // either-id rule is already there: S_OK, or E_FAIL with nothing changed.
  HRESULT AddInstance(KOVAMappingInstance instance);
  // Removes the first instance equal to the given one: S_OK, or E_FAIL when there is none.
  HRESULT RemoveInstance(KOVAMappingInstance instance);
  // The instance vector itself; callers may change it in place.
  std::vector<KOVAMappingInstance>& GetInstances();

 private:
  std::vector<KOVAMappingInstance> instances_;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_
