// Types and the type dictionary of the knowledge engine.
#include <KOVAMappingServices/ZANKnwTypes.h>

#include "platform/ZANKnwComponents.h"

ZANIType::~ZANIType() = default;
ZANITypeDictionary::~ZANITypeDictionary() = default;

namespace kova::knw {

TypeComponent::TypeComponent(ZANUnicodeString name, ZANIType_var parent, LiteralKind kind)
    : name_(std::move(name)), parent_(std::move(parent)), kind_(kind) {}

bool TypeComponent::IsaKindOf(const ZANIType_var& other) const {
  const ZANIType* wanted = other.Get();
  if (wanted == nullptr) return false;
  if (wanted == this) return true;
  // Parents are fixed at creation, so the chain has no cycle; each handle keeps its parent alive.
  ZANIType_var current = parent_;
  while (current) {
    if (current.Get() == wanted) return true;
    current = current->GetParent();
  }
  return false;
}

LiteralKind InheritedLiteralKind(const ZANIType_var& parent) {
  if (!parent) return LiteralKind::None;
  if (parent->IsString()) return LiteralKind::String;
  if (parent->IsInteger()) return LiteralKind::Integer;
  if (parent->IsReal()) return LiteralKind::Real;
  if (parent->IsBoolean()) return LiteralKind::Boolean;
  return LiteralKind::None;
}

TypeDictionaryComponent::TypeDictionaryComponent() {
  const auto add = [this](const char* name, const ZANIType_var& parent, LiteralKind kind) {
    ZANIType_var type = Make<ZANIType, TypeComponent>(ZANUnicodeString(name), parent, kind);
    types_.emplace(ZANUnicodeString(name), type);
    return type;
  };
  add("String", nullptr, LiteralKind::String);
  add("Integer", nullptr, LiteralKind::Integer);
  const ZANIType_var real = add("Real", nullptr, LiteralKind::Real);
  add("Boolean", nullptr, LiteralKind::Boolean);
  add("Length", real, LiteralKind::Real);
  add("Mass", real, LiteralKind::Real);
  add("Time", nullptr, LiteralKind::None);
  add("Enumeration", nullptr, LiteralKind::None);
  add("List", nullptr, LiteralKind::None);
  const ZANIType_var entity = add("GRDEntity", nullptr, LiteralKind::None);
  add("GRDReference", entity, LiteralKind::None);
  add("GRDRepReference", entity, LiteralKind::None);
  add("GRDInstance", entity, LiteralKind::None);
  add("GRDRepInstance", entity, LiteralKind::None);
}

HRESULT TypeDictionaryComponent::FindType(const ZANUnicodeString& name, ZANIType_var& type) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto it = types_.find(name);
  if (it == types_.end()) return E_FAIL;
  type = it->second;
  return S_OK;
}

HRESULT TypeDictionaryComponent::RegisterType(const ZANIType_var& type) {
  if (!type) return E_FAIL;
  ZANUnicodeString name = type->GetName();
  if (name.IsEmpty()) return E_FAIL;
  const std::lock_guard<std::mutex> lock(mutex_);
  return types_.emplace(std::move(name), type).second ? S_OK : E_FAIL;
}

}  // namespace kova::knw

ZANITypeDictionary_var ZANGlobalFunctions::GetTypeDictionary() {
  // Created once, at the first call, under the thread-safe initialisation of a local static.
  static const ZANITypeDictionary_var dictionary =
      kova::knw::Make<ZANITypeDictionary, kova::knw::TypeDictionaryComponent>();
  return dictionary;
}
