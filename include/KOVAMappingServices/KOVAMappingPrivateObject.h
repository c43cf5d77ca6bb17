// Private mapping objects: the data behind the public handles KOVAMappingObject,
// KOVAMappingInstance and KOVAMappingReference. Reached from outside through KOVAPrivateAccess.
#ifndef KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEOBJECT_H_
#define KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEOBJECT_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>

namespace kova::model {
struct IndexAccess;
class ObjectLinks;
}  // namespace kova::model

// One object of the external CAD system and the platform object it corresponds to.
//
// The stamp is always stored without a version prefix: SetKSStamp (and the stamp-taking
// constructors) read the version carried by a versioned stamp text, store it as the KSS version
// and keep the stripped text. An unversioned text leaves the KSS version as it was.
//
// The object knows which containers (a reference's instances, a table's references) hold it, so a
// change of its kOVA id, Plexo id or is-local flag updates the look-up indexes of exactly those
// containers, at once. Copies (construction and assignment) never copy that membership.
//
// Ownership: handles share a private object through std::shared_ptr. A copy of a private object
// is a new object with the same fields (a private reference's copy shares its instances).
//
// Thread safety: none of its own. An object held by a table is used, like the table, by one
// thread at a time; that includes copying, assigning and destroying the handles that share it.
class KOVA_EXPORT KOVAMappingPrivateObject {
 public:
  KOVAMappingPrivateObject();
  KOVAMappingPrivateObject(ZANUnicodeString kovaId, ZANUnicodeString plexoId, ZANUnicodeString kssStamp);
  KOVAMappingPrivateObject(ZANUnicodeString kovaId, ZANUnicodeString plexoId, ZANUnicodeString kssStamp,
                           ZANUnicodeString customData, bool isLocal);
  // Copies the six fields; the copy belongs to no container.
  KOVAMappingPrivateObject(const KOVAMappingPrivateObject& other);
  // Copies the six fields; the containers holding this object see its new ids at once.
  KOVAMappingPrivateObject& operator=(const KOVAMappingPrivateObject& other);
  virtual ~KOVAMappingPrivateObject();

  ZANUnicodeString GetKOVAID() const;
  ZANUnicodeString GetPlexoID() const;
  ZANUnicodeString GetKSStamp() const;
  ZANUnicodeString GetCustomData() const;
  bool GetIsLocal() const;
  std::int32_t GetKSSVersion() const;

  KOVAMappingPrivateObject& SetKOVAID(const ZANUnicodeString& kovaId);
  KOVAMappingPrivateObject& SetPlexoID(const ZANUnicodeString& plexoId);
  KOVAMappingPrivateObject& SetCustomData(const ZANUnicodeString& customData);
  KOVAMappingPrivateObject& SetIsLocal(const bool& isLocal);
  // Stores the number as given, unchecked.
  KOVAMappingPrivateObject& SetKSSVersion(const std::int32_t& version);
  KOVAMappingPrivateObject& SetKSStamp(const ZANUnicodeString& stamp);

  // True exactly when the KSS version is 0.
  bool isKSSComputedFromCEStamp() const;
  // True exactly when the KSS version is greater than 1.
  bool isKSSComputedWithUnsetAttributes() const;

  // True when the stored stamps are equal.
  bool CompareKSS(const KOVAMappingPrivateObject& other) const;
  // True when the stored stamp equals stamp exactly (stamp is not version-stripped first).
  bool CompareKSS(ZANUnicodeString stamp) const;

  // Identity: equal kOVA ids, or else equal Plexo ids. Nothing else takes part.
  bool operator==(const KOVAMappingPrivateObject& other) const;
  // Orders by kOVA id followed by Plexo id, concatenated without separator.
  bool operator<(const KOVAMappingPrivateObject& other) const;

 private:
  // The model's indexes read the ids in place.
  friend struct kova::model::IndexAccess;
  friend class kova::model::ObjectLinks;
  // The containers holding this object (model/ObjectLinks.h); 0 when none.
  std::uintptr_t links_ = 0;
  ZANUnicodeString kovaId_;
  ZANUnicodeString plexoId_;
  ZANUnicodeString kssStamp_;
  ZANUnicodeString customData_;
  bool isLocal_ = false;
  std::int32_t kssVersion_ = 3;
};

#endif  // KOVAMAPPINGSERVICES_KOVAMAPPINGPRIVATEOBJECT_H_
