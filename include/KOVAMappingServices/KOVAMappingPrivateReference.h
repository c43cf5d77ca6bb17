// Private mapping reference: a mapping object plus its instances, in insertion order.
//
// Ownership: the reference holds handles of its instances, sharing them with the caller and with
// any other reference that holds them; the vector GetInstances returns is its own, valid as long
// as the reference lives.
//
// Thread safety: none of its own (KOVAMappingPrivateObject.h). Instance look-ups through a table
// may bring the reference's index up to date: the reference is used, with every table holding it,
// by one thread at a time.
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>

#include <memory>
#include <vector>

namespace kova::model {
struct IndexAccess;
template <class Handle>
class VectorIndex;
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
  // The instance vector itself; callers may change it in place, now or at any later time.
  // Handing it out costs nothing. The reference's index of its instances (and the instance index
  // of every table holding the reference) follows what the caller does with it: a change that
  // replaces or removes elements (assignment, swap, sort, erase, clear) is noted by the handles as
  // it happens, and the next operation compares the element pointers once and redoes only what
  // changed. An append within the vector's capacity runs no code of the library: while the vector
  // is out with room left (or empty), each table holding the reference checks its size before an
  // instance look-up.
  std::vector<KOVAMappingInstance>& GetInstances();
  // The instance vector, read-only: costs nothing and changes nothing.
  const std::vector<KOVAMappingInstance>& GetInstances() const;

 private:
  friend struct kova::model::IndexAccess;
  // The index of instances_, made if need be and brought up to date; see model/ContainerIndex.h.
  kova::model::VectorIndex<KOVAMappingInstance>& Index();

  std::vector<KOVAMappingInstance> instances_;
  std::unique_ptr<kova::model::VectorIndex<KOVAMappingInstance>> index_;
  // instances_ was handed out by GetInstances().
  bool instancesHandedOut_ = false;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEREFERENCE_H_
