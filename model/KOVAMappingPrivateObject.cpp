#include <KOVAMappingServices/KOVAMappingPrivateObject.h>

#include <KOVAMappingServices/KOVAKSSVersioning.h>

#include "model/ContainerIndex.h"
#include "model/ObjectLinks.h"
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

using kova::model::ContainerIndex;
using kova::model::ObjectLinks;

// Changes fields of object through change(): every container holding the object takes it out of
// its indexes under the old values first and puts it back under the new ones after, also when
// change() throws (the fields are then as they were).
template <typename Change>
void ChangeFields(KOVAMappingPrivateObject& object, unsigned fields, Change&& change) {
  if (ObjectLinks::Empty(object)) {
    change();
    return;
  }
  ObjectLinks::ForEachContainer(object, [&](ContainerIndex* container) { container->BeforeChange(object, fields); });
  struct After {
    KOVAMappingPrivateObject& object;
    unsigned fields;
    ~After() {
      ObjectLinks::ForEachContainer(object,
                                    [this](ContainerIndex* container) { container->AfterChange(object, fields); });
    }
  } after{object, fields};
  change();
}

}  // namespace

KOVAMappingPrivateObject::KOVAMappingPrivateObject() : customData_("") {}

KOVAMappingPrivateObject::KOVAMappingPrivateObject(ZANUnicodeString kovaId, ZANUnicodeString plexoId,
                                                   ZANUnicodeString kssStamp)
    : kovaId_(std::move(kovaId)), plexoId_(std::move(plexoId)), customData_("") {
  StoreStamp(std::move(kssStamp), kssStamp_, kssVersion_);
}

KOVAMappingPrivateObject::KOVAMappingPrivateObject(ZANUnicodeString kovaId, ZANUnicodeString plexoId,
                                                   ZANUnicodeString kssStamp, ZANUnicodeString customData, bool isLocal)
    : kovaId_(std::move(kovaId)), plexoId_(std::move(plexoId)), customData_(std::move(customData)), isLocal_(isLocal) {
  StoreStamp(std::move(kssStamp), kssStamp_, kssVersion_);
}

// The copy belongs to no container: links_ starts empty.
KOVAMappingPrivateObject::KOVAMappingPrivateObject(const KOVAMappingPrivateObject& other)
    : kovaId_(other.kovaId_),
      plexoId_(other.plexoId_),
      kssStamp_(other.kssStamp_),
      customData_(other.customData_),
      isLocal_(other.isLocal_),
      kssVersion_(other.kssVersion_) {}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::operator=(const KOVAMappingPrivateObject& other) {
  ChangeFields(*this, kova::model::kKovaField | kova::model::kPlexoField | kova::model::kLocalField, [&] {
    kovaId_ = other.kovaId_;
    plexoId_ = other.plexoId_;
    isLocal_ = other.isLocal_;
  });
  kssStamp_ = other.kssStamp_;
  customData_ = other.customData_;
  kssVersion_ = other.kssVersion_;
  return *this;
}

KOVAMappingPrivateObject::~KOVAMappingPrivateObject() {
  if (ObjectLinks::Empty(*this)) return;
  // Only reached when a caller took the object's last handle out of a handed-out vector: the
  // containers that still describe it forget it.
  ObjectLinks::ForEachContainer(*this, [this](ContainerIndex* container) { container->ObjectDying(*this); });
  ObjectLinks::Release(*this);
}

ZANUnicodeString KOVAMappingPrivateObject::GetKOVAID() const { return kovaId_; }
ZANUnicodeString KOVAMappingPrivateObject::GetPlexoID() const { return plexoId_; }
ZANUnicodeString KOVAMappingPrivateObject::GetKSStamp() const { return kssStamp_; }
ZANUnicodeString KOVAMappingPrivateObject::GetCustomData() const { return customData_; }
bool KOVAMappingPrivateObject::GetIsLocal() const { return isLocal_; }
std::int32_t KOVAMappingPrivateObject::GetKSSVersion() const { return kssVersion_; }

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetKOVAID(const ZANUnicodeString& kovaId) {
  ChangeFields(*this, kova::model::kKovaField, [&] { kovaId_ = kovaId; });
  return *this;
}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetPlexoID(const ZANUnicodeString& plexoId) {
  ChangeFields(*this, kova::model::kPlexoField, [&] { plexoId_ = plexoId; });
  return *this;
}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetCustomData(const ZANUnicodeString& customData) {
  customData_ = customData;
  return *this;
}

KOVAMappingPrivateObject& KOVAMappingPrivateObject::SetIsLocal(const bool& isLocal) {
  ChangeFields(*this, kova::model::kLocalField, [&] { isLocal_ = isLocal; });
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

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes it by value
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
