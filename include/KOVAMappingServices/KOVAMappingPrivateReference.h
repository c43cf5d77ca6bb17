// Private mapping reference: a mapping object plus its instances, in insertion order.
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>

#include <memory>
#include <vector>

namespace kova::model {
struct IndexAccess;
struct InstanceVectorIndex;
}  // namespace kova::model

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
  // The instance vector itself; callers may change it in place. From then on the reference no
  // longer indexes its instances (the caller may change them unseen) and walks them instead.
  std::vector<KOVAMappingInstance>& GetInstances();

 private:
  friend struct kova::model::IndexAccess;
  // The index of instances_, or null; see model/MappingIndex.h.
  kova::model::InstanceVectorIndex* Index();

  std::vector<KOVAMappingInstance> instances_;
  std::unique_ptr<kova::model::InstanceVectorIndex> index_;
  // instances_ was handed out by GetInstances().
  bool instancesHandedOut_ = false;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_
