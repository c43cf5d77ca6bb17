#include <KOVAMappingServices/KOVAMappingPrivateObject.h>

#include <KOVAMappingServices/KOVAKSSVersioning.h>

#include "model/MappingIndex.h"
#include "stamps/StampPrefix.h"

#include <string>
#include <utility>

namespace {

// What SetKSStamp and the stamp-taking constructors do with a stamp text: a versioned text is
// stored stripped and sets the version it carries; an unversioned text is stored as it is and
// leaves the version as it was.
template <typename Stamp>
void StoreStamp(Stamp&& stamp, ZANUnicodeString& stored, std::int32_t& storedVersion) {
  const std::string_view text = stamp.View();
  const std::int32_t version = kova::stamps::VersionOfStamp(text);
  if (version >= 0) {
    stored = ZANUnicodeString::FromValidUTF8(std::string_view(kova::stamps::StampWithoutPrefix(text)));
    storedVersion = version;
  } else {
    stored = std::forward<Stamp>(stamp);
  }
}

}  // namespace

KOVAMappingPrivateObject::KOVAMappingPrivateObject() : customData_("") {}

KOVAMappingPrivateObject::KOVAMappingPrivateObject(ZANUnicodeString kovaId, ZANUnicodeString plexoId,
                                                   ZANUnicodeString kssStamp)
    : kovaId_(std::move(kovaId)), plexoId_(std::move(plexoId)), customData_("") {
  StoreStamp(std::move(kssStamp), kssStamp_, kssVersion_);
}

KOVAMappingPrivateObject::KOVAMappingPrivateObject(ZANUnicodeString kovaId, ZANUnicodeString plexoId,
                                                   ZANUnicodeString kssStamp, ZANUnicodeString customData,
                                                   bool isLocal)
    : kovaId_(std::move(kovaId)), plexoId_(std::move(plexoId)), customData_(std::move(customData)), isLocal_(isLocal) {
  StoreStamp(std::move(kssStamp), kssStamp_, kssVersion_);
}

KOVAMappingPrivateObject::KOVAMappingPrivateObject(const KOVAMappingPrivateObject& other) = default;
KOVAMappingPrivateObject& KOVAMappingPrivateObject::operator=(const KOVAMappingPrivateObject& other) {
  kovaId_ = other.kovaId_;
  plexoId_ = other.plexoId_;
  kssStamp_ = other.kssStamp_;
  customData_ = other.customData_;
  isLocal_ = other.isLocal_;
  kssVersion_ = other.kssVersion_;
  // The ids and is-local flag may have changed under the indexes of the containers holding this
  // object.
  kova::model::BumpIdentityEpoch();
  return *this;
}
KOVAMappingPrivateObject::~KOVAMappingPrivateObject() = default;

ZANUnicodeString KOVAMappingPrivateObject::GetKOVAID() const { return kovaId_; }
ZANUnicodeString KOVAMappingPrivateObject::GetPlexoID() const { return plexoId_; }
ZANUnicodeString KOVAMappingPrivateObject::GetKSStamp() const { return kssStamp_; }
ZANUnicodeString KOVAMappingPrivateObject::GetCustomData() const { return customData_; }
bool KOVAMappingPrivateObject::GetIsLocal() const { return isLocal_; }
std::int32_t KOVAMappingPrivateObject::GetKSSVersion() const { return kssVersion_; }

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetKOVAID(const ZANUnicodeString& kovaId) {
  kovaId_ = kovaId;
  kova::model::BumpIdentityEpoch();
  return *this;
}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetPlexoID(const ZANUnicodeString& plexoId) {
  plexoId_ = plexoId;
  kova::model::BumpIdentityEpoch();
  return *this;
}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetCustomData(const ZANUnicodeString& customData) {
  customData_ = customData;
  return *this;
}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetIsLocal(const bool& isLocal) {
  isLocal_ = isLocal;
  kova::model::BumpIdentityEpoch();
  return *this;
}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetKSSVersion(const std::int32_t& version) {
  kssVersion_ = version;
  return *this;
}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetKSStamp(const ZANUnicodeString& stamp) {
  StoreStamp(stamp, kssStamp_, kssVersion_);
  return *this;
}

bool KOVAMappingPrivateObject::isKSSComputedFromCEStamp() const { return kssVersion_ == 0; }

bool KOVAMappingPrivateObject::isKSSComputedWithUnsetAttributes() const { return kssVersion_ > 1; }

bool KOVAMappingPrivateObject::CompareKSS(const KOVAMappingPrivateObject& other) const {
  return kssStamp_ == other.kssStamp_;
}

bool KOVAMappingPrivateObject::CompareKSS(ZANUnicodeString stamp) const { return kssStamp_ == stamp; }

bool KOVAMappingPrivateObject::operator==(const KOVAMappingPrivateObject& other) const {
  return kovaId_ == other.kovaId_ || plexoId_ == other.plexoId_;
}

bool KOVAMappingPrivateObject::operator<(const KOVAMappingPrivateObject& other) const {
  std::string left;
  left.reserve(kovaId_.GetLengthInByte() + plexoId_.GetLengthInByte());
  left.append(kovaId_.View()).append(plexoId_.View());
  std::string right;
  right.reserve(other.kovaId_.GetLengthInByte() + other.plexoId_.GetLengthInByte());
  right.append(other.kovaId_.View()).append(other.plexoId_.View());
  return left < right;
}
