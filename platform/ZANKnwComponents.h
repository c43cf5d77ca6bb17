// The concrete components of the knowledge engine (internal). Each class offers one or more of the
// public interfaces; handles reach them through dynamic_cast (ZANVar<I>).
#ifndef KOVA_PLATFORM_ZANKNWCOMPONENTS_H_
#define KOVA_PLATFORM_ZANKNWCOMPONENTS_H_

#include <KOVAMappingServices/ZANKnwObjects.h>
#include <KOVAMappingServices/ZANKnwParmDictionary.h>
#include <KOVAMappingServices/ZANKnwParms.h>
#include <KOVAMappingServices/ZANKnwTypes.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <variant>
#include <vector>

namespace kova::knw {

// A handle of interface I on a freshly made component.
template <class I, class Component, class... Args>
ZANVar<I> Make(Args&&... args) {
  std::shared_ptr<ZANComponent> component = std::make_shared<Component>(std::forward<Args>(args)...);
  return ZANVar<I>(component);
}

// Which literal test a type answers true (inherited by derived types).
enum class LiteralKind { None, String, Integer, Real, Boolean };

class TypeComponent final : public ZANComponent, public ZANIType {
 public:
  TypeComponent(ZANUnicodeString name, ZANIType_var parent, LiteralKind kind);

  ZANUnicodeString GetName() const override { return name_; }
  ZANIType_var GetParent() const override { return parent_; }
  bool IsaKindOf(const ZANIType_var& other) const override;
  ZANKnw::Boolean IsString() const override { return kind_ == LiteralKind::String ? 1 : 0; }
  ZANKnw::Boolean IsInteger() const override { return kind_ == LiteralKind::Integer ? 1 : 0; }
  ZANKnw::Boolean IsReal() const override { return kind_ == LiteralKind::Real ? 1 : 0; }
  ZANKnw::Boolean IsBoolean() const override { return kind_ == LiteralKind::Boolean ? 1 : 0; }

 private:
  const ZANUnicodeString name_;
  const ZANIType_var parent_;
  const LiteralKind kind_;
};

// The literal kind a type derived from parent inherits.
LiteralKind InheritedLiteralKind(const ZANIType_var& parent);

class TypeDictionaryComponent final : public ZANComponent, public ZANITypeDictionary {
 public:
  TypeDictionaryComponent();  // with the standard types

  HRESULT FindType(const ZANUnicodeString& name, ZANIType_var& type) const override;
  HRESULT RegisterType(const ZANIType_var& type) override;

 private:
  mutable std::mutex mutex_;
  std::map<ZANUnicodeString, ZANIType_var> types_;
};

class ValueComponent final : public ZANComponent, public ZANIKnwValue {
 public:
  using Datum = std::variant<ZANUnicodeString, std::int32_t, double, ZANKnw::Boolean, ZANTime, ZANBaseUnknown_var>;
  explicit ValueComponent(Datum datum) : datum_(std::move(datum)) {}

  ZANUnicodeString AsString() const override;
  std::int32_t AsInteger() const override;
  double AsReal() const override;
  ZANKnw::Boolean AsBoolean() const override;
  ZANTime AsTime() const override;
  ZANBaseUnknown_var AsObject() const override;

 private:
  const Datum datum_;
};

class ParmComponent final : public ZANComponent, public ZANIKnwParm {
 public:
  ParmComponent(ZANIType_var type, ZANIKnwValue_var value, bool isSet)
      : type_(std::move(type)), value_(std::move(value)), isSet_(isSet) {}

  ZANIType_var GetType() const override { return type_; }
  ZANIKnwValue_var GetValue() const override { return value_; }
  ZANKnw::Boolean IsSet() const override { return isSet_ ? 1 : 0; }

 private:
  const ZANIType_var type_;
  const ZANIKnwValue_var value_;
  const bool isSet_;
};

class ListComponent final : public ZANComponent, public ZANIList {
 public:
  explicit ListComponent(std::vector<ZANBaseUnknown_var> elements) : elements_(std::move(elements)) {}

  std::int32_t Size() const override { return static_cast<std::int32_t>(elements_.size()); }
  ZANBaseUnknown_var GetElement(std::int32_t index) const override;

 private:
  const std::vector<ZANBaseUnknown_var> elements_;
};

class ParmDictionaryComponent final : public ZANComponent, public ZANIParmDictionary {
 public:
  ParmDictionaryComponent(ZANIType_var time, ZANIType_var enumeration, ZANIType_var list)
      : time_(std::move(time)), enum_(std::move(enumeration)), list_(std::move(list)) {}

  ZANIType_var GetTimeType() const override { return time_; }
  ZANIType_var GetEnumType() const override { return enum_; }
  ZANIType_var GetListType() const override { return list_; }

 private:
  const ZANIType_var time_;
  const ZANIType_var enum_;
  const ZANIType_var list_;
};

// The two facets of objects, combined by the object classes below.
class InstanceFacet : public ZANIInstance {
 public:
  explicit InstanceFacet(ZANIType_var type) : type_(std::move(type)) {}
  ZANIType_var GetType() const override { return type_; }

 private:
  const ZANIType_var type_;
};

class KnowledgeFacet : public ZANIKnwObject {
 public:
  explicit KnowledgeFacet(std::map<ZANUnicodeString, ZANIKnwParm_var> attributes)
      : attributes_(std::move(attributes)) {}

  HRESULT GetAttribute(const ZANUnicodeString& name, ZANIKnwParm_var& parm) const override;
  ZANListValZANUnicodeString GetAttributeNames() const override;
  void SetAttribute(const ZANUnicodeString& name, const ZANIKnwParm_var& parm) override;
  HRESULT RemoveAttribute(const ZANUnicodeString& name) override;

 private:
  std::map<ZANUnicodeString, ZANIKnwParm_var> attributes_;
};

class InstanceObject final : public ZANComponent, public InstanceFacet {
 public:
  explicit InstanceObject(ZANIType_var type) : InstanceFacet(std::move(type)) {}
};

class KnowledgeObject final : public ZANComponent, public KnowledgeFacet {
 public:
  explicit KnowledgeObject(std::map<ZANUnicodeString, ZANIKnwParm_var> attributes)
      : KnowledgeFacet(std::move(attributes)) {}
};

class InstanceKnowledgeObject final : public ZANComponent, public InstanceFacet, public KnowledgeFacet {
 public:
  InstanceKnowledgeObject(ZANIType_var type, std::map<ZANUnicodeString, ZANIKnwParm_var> attributes)
      : InstanceFacet(std::move(type)), KnowledgeFacet(std::move(attributes)) {}
};

}  // namespace kova::knw

#endif  // KOVA_PLATFORM_ZANKNWCOMPONENTS_H_
