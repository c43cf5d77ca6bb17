#include <KOVAMappingServices/KOVAMappingObject.h>

#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>

#include <utility>

#include "model/ObjectLinks.h"

KOVAMappingObject::KOVAMappingObject() : private_(std::make_shared<KOVAMappingPrivateObject>()) {}

KOVAMappingObject::KOVAMappingObject(const KOVAMappingPrivateObject& privateObject)
    : private_(std::make_shared<KOVAMappingPrivateObject>(privateObject)) {}

KOVAMappingObject::KOVAMappingObject(const KOVAMappingObject& other) = default;

KOVAMappingObject::KOVAMappingObject(std::shared_ptr<KOVAMappingPrivateObject> privateObject)
    : private_(std::move(privateObject)) {}

KOVAMappingObject& KOVAMappingObject::operator=(const KOVAMappingObject& other) {
  if (this == &other) return *this;
  // Assignment detaches: the target gets its own copy of the source's base data. When the target
  // is the base part of an instance or reference handle, the fresh private object keeps that kind
  // (with the source's base data), so the derived handle never points at a plain object.
  const auto& base = static_cast<const KOVAMappingPrivateObject&>(*other.private_);
  std::shared_ptr<KOVAMappingPrivateObject> fresh;
  if (dynamic_cast<KOVAMappingPrivateInstance*>(private_.get()) != nullptr) {
    fresh = std::make_shared<KOVAMappingPrivateInstance>();
  } else if (dynamic_cast<KOVAMappingPrivateReference*>(private_.get()) != nullptr) {
    fresh = std::make_shared<KOVAMappingPrivateReference>();
  } else {
    fresh = std::make_shared<KOVAMappingPrivateObject>();
  }
  static_cast<KOVAMappingPrivateObject&>(*fresh) = base;
  // This handle may be an element of a vector handed out by a reference or a table.
  kova::model::ReleasingSlot(private_.get(), this);
  private_ = std::move(fresh);
  return *this;
}

KOVAMappingObject::~KOVAMappingObject() { kova::model::ReleasingSlot(private_.get(), this); }

ZANUnicodeString KOVAMappingObject::GetKOVAID() const { return private_->GetKOVAID(); }
ZANUnicodeString KOVAMappingObject::GetPlexoID() const { return private_->GetPlexoID(); }
ZANUnicodeString KOVAMappingObject::GetCustomData() const { return private_->GetCustomData(); }
bool KOVAMappingObject::GetIsLocal() const { return private_->GetIsLocal(); }

KOVAMappingObject& KOVAMappingObject::SetKOVAID(const ZANUnicodeString& kovaId) {
  private_->SetKOVAID(kovaId);
  return *this;
}

KOVAMappingObject& KOVAMappingObject::SetPlexoID(const ZANUnicodeString& plexoId) {
  private_->SetPlexoID(plexoId);
  return *this;
}

KOVAMappingObject& KOVAMappingObject::SetCustomData(const ZANUnicodeString& customData) {
  private_->SetCustomData(customData);
  return *this;
}

KOVAMappingObject& KOVAMappingObject::SetKSStamp(const ZANUnicodeString& stamp) {
  private_->SetKSStamp(stamp);
  return *this;
}

bool KOVAMappingObject::isKSSComputedFromCEStamp() const { return private_->isKSSComputedFromCEStamp(); }

bool KOVAMappingObject::isKSSComputedWithUnsetAttributes() const {
  return private_->isKSSComputedWithUnsetAttributes();
}

bool KOVAMappingObject::CompareKSS(const KOVAMappingObject& other) const {
  return private_->CompareKSS(other.private_->GetKSStamp());
}

bool KOVAMappingObject::CompareKSS(ZANUnicodeString stamp) const { return private_->CompareKSS(std::move(stamp)); }

bool KOVAMappingObject::operator==(const KOVAMappingObject& other) const { return *private_ == *other.private_; }

std::shared_ptr<KOVAMappingPrivateObject> KOVAMappingObject::GetPrivate() const { return private_; }
