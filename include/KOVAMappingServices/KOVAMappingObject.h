// KOVAMappingObject: the public handle of a mapping object.
//
// A handle holds nothing but a shared pointer to its private object and is never empty. Copy
// construction shares the private object; assignment, deliberately, gives the target a fresh,
// independent copy of the source's base private object.
//
// A handle stored in a vector that a table or reference handed out tells the table's indexes when
// it is assigned or destroyed there, so in-place changes of those vectors are seen.
//
// Ownership: handles own their private object jointly; it lives as long as any handle or any table
// holding it. Getters return copies of the texts.
//
// Thread safety: the reference count is atomic; nothing else is. Copying, assigning or destroying
// a handle uses its object (assignment and destruction read which containers hold it), as does
// every getter and setter. An object is used by one thread at a time; an object held by a table,
// like the table and together with it (KOVAMappingTable.h).
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGOBJECT_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGOBJECT_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/KOVAMappingPrivateObject.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <memory>

namespace kova::model {
struct IndexAccess;
}  // namespace kova::model

class KOVA_EXPORT KOVAMappingObject {
 public:
  KOVAMappingObject();
  // A handle on a fresh copy of the given private object.
  explicit KOVAMappingObject(const KOVAMappingPrivateObject& privateObject);
  // Shares the source's private object.
  KOVAMappingObject(const KOVAMappingObject& other);
  // Replaces this handle's private object by a fresh copy of the source's (base part only).
  KOVAMappingObject& operator=(const KOVAMappingObject& other);
  virtual ~KOVAMappingObject();

  ZANUnicodeString GetKOVAID() const;
  ZANUnicodeString GetPlexoID() const;
  ZANUnicodeString GetCustomData() const;
  bool GetIsLocal() const;

  KOVAMappingObject& SetKOVAID(const ZANUnicodeString& kovaId);
  KOVAMappingObject& SetPlexoID(const ZANUnicodeString& plexoId);
  KOVAMappingObject& SetCustomData(const ZANUnicodeString& customData);
  KOVAMappingObject& SetKSStamp(const ZANUnicodeString& stamp);

  bool isKSSComputedFromCEStamp() const;
  bool isKSSComputedWithUnsetAttributes() const;

  bool CompareKSS(const KOVAMappingObject& other) const;
  bool CompareKSS(ZANUnicodeString stamp) const;

  // Either-id identity of the private objects.
  bool operator==(const KOVAMappingObject& other) const;

 protected:
  explicit KOVAMappingObject(std::shared_ptr<KOVAMappingPrivateObject> privateObject);
  std::shared_ptr<KOVAMappingPrivateObject> GetPrivate() const;

 private:
  friend class KOVAMappingInstance;
  friend class KOVAMappingReference;
  friend struct kova::model::IndexAccess;
  std::shared_ptr<KOVAMappingPrivateObject> private_;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGOBJECT_H_
