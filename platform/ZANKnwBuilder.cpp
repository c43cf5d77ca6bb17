// ZANKnwBuilder: making types, values, lists, parameters and objects of the knowledge engine.
#include <KOVAMappingServices/ZANKnwBuilder.h>

#include <KOVAMappingServices/ZANKnwParmDictionary.h>

#include <type_traits>
#include <utility>

#include "platform/ZANKnwComponents.h"

using kova::knw::Make;

namespace {

// A datum holding exactly the alternative T (no conversion between the numeric alternatives).
template <class T>
kova::knw::ValueComponent::Datum MakeDatum(const std::remove_cvref_t<T>& value) {
  return kova::knw::ValueComponent::Datum(std::in_place_type<std::remove_cvref_t<T>>, value);
}

ZANIType_var OrDefault(const ZANIType_var& type, const char* standardName) {
  return type ? type : ZANKnwBuilder::FindType(standardName);
}

}  // namespace

ZANIType_var ZANKnwBuilder::FindType(const ZANUnicodeString& name) {
  ZANIType_var type;
  const ZANITypeDictionary_var dictionary = ZANGlobalFunctions::GetTypeDictionary();
  if (dictionary) dictionary->FindType(name, type);
  return type;
}

ZANIType_var ZANKnwBuilder::CreateType(const ZANUnicodeString& name, const ZANIType_var& parent) {
  return Make<ZANIType, kova::knw::TypeComponent>(name, parent, kova::knw::InheritedLiteralKind(parent));
}

ZANIKnwValue_var ZANKnwBuilder::MakeStringValue(const ZANUnicodeString& value) {
  return Make<ZANIKnwValue, kova::knw::ValueComponent>(MakeDatum<decltype(value)>(value));
}

ZANIKnwValue_var ZANKnwBuilder::MakeIntegerValue(std::int32_t value) {
  return Make<ZANIKnwValue, kova::knw::ValueComponent>(MakeDatum<decltype(value)>(value));
}

ZANIKnwValue_var ZANKnwBuilder::MakeRealValue(double value) {
  return Make<ZANIKnwValue, kova::knw::ValueComponent>(MakeDatum<decltype(value)>(value));
}

ZANIKnwValue_var ZANKnwBuilder::MakeBooleanValue(ZANKnw::Boolean value) {
  return Make<ZANIKnwValue, kova::knw::ValueComponent>(MakeDatum<decltype(value)>(value));
}

ZANIKnwValue_var ZANKnwBuilder::MakeTimeValue(ZANTime value) {
  return Make<ZANIKnwValue, kova::knw::ValueComponent>(MakeDatum<decltype(value)>(value));
}

ZANIKnwValue_var ZANKnwBuilder::MakeObjectValue(const ZANBaseUnknown_var& object) {
  return Make<ZANIKnwValue, kova::knw::ValueComponent>(MakeDatum<ZANBaseUnknown_var>(object));
}

ZANIList_var ZANKnwBuilder::MakeList(const std::vector<ZANBaseUnknown_var>& elements) {
  return Make<ZANIList, kova::knw::ListComponent>(elements);
}

ZANIKnwParm_var ZANKnwBuilder::MakeParm(const ZANIType_var& type, const ZANIKnwValue_var& value, bool isSet) {
  return Make<ZANIKnwParm, kova::knw::ParmComponent>(type, value, isSet);
}

ZANIKnwParm_var ZANKnwBuilder::MakeStringParm(const ZANUnicodeString& value, bool isSet, const ZANIType_var& type) {
  return MakeParm(OrDefault(type, "String"), MakeStringValue(value), isSet);
}

ZANIKnwParm_var ZANKnwBuilder::MakeIntegerParm(std::int32_t value, bool isSet, const ZANIType_var& type) {
  return MakeParm(OrDefault(type, "Integer"), MakeIntegerValue(value), isSet);
}

ZANIKnwParm_var ZANKnwBuilder::MakeRealParm(double value, bool isSet, const ZANIType_var& type) {
  return MakeParm(OrDefault(type, "Real"), MakeRealValue(value), isSet);
}

ZANIKnwParm_var ZANKnwBuilder::MakeBooleanParm(ZANKnw::Boolean value, bool isSet, const ZANIType_var& type) {
  return MakeParm(OrDefault(type, "Boolean"), MakeBooleanValue(value), isSet);
}

ZANIKnwParm_var ZANKnwBuilder::MakeTimeParm(ZANTime value, bool isSet, const ZANIType_var& type) {
  return MakeParm(OrDefault(type, "Time"), MakeTimeValue(value), isSet);
}

ZANIKnwParm_var ZANKnwBuilder::MakeEnumParm(std::int32_t value, bool isSet, const ZANIType_var& type) {
  return MakeParm(OrDefault(type, "Enumeration"), MakeIntegerValue(value), isSet);
}

ZANIKnwParm_var ZANKnwBuilder::MakeListParm(const ZANIList_var& list, bool isSet, const ZANIType_var& type) {
  return MakeParm(OrDefault(type, "List"), MakeObjectValue(list), isSet);
}

ZANIKnwParm_var ZANKnwBuilder::MakeUnsetParm(const ZANIType_var& type) {
  ZANIKnwValue_var value;
  if (type) {
    const ZANIParmDictionary_var parms = ZANKnwGlobalFunctions::GetParmDictionary();
    if (type->IsString()) {
      value = MakeStringValue(ZANUnicodeString());
    } else if (type->IsInteger()) {
      value = MakeIntegerValue(0);
    } else if (type->IsReal()) {
      value = MakeRealValue(0.0);
    } else if (type->IsBoolean()) {
      value = MakeBooleanValue(0);
    } else if (type->IsaKindOf(parms->GetTimeType())) {
      value = MakeTimeValue(ZANTime());
    } else if (type->IsaKindOf(parms->GetEnumType())) {
      value = MakeIntegerValue(0);
    } else if (type->IsaKindOf(parms->GetListType())) {
      value = MakeObjectValue(MakeList({}));
    }
  }
  return MakeParm(type, value, false);
}

ZANBaseUnknown_var ZANKnwBuilder::MakeObject(const ZANIType_var& type,
                                             const std::map<ZANUnicodeString, ZANIKnwParm_var>& attributes,
                                             ZANKnwObjectFacets facets) {
  std::shared_ptr<ZANComponent> object;
  switch (facets) {
    case ZANKnwObjectFacets::InstanceOnly: object = std::make_shared<kova::knw::InstanceObject>(type); break;
    case ZANKnwObjectFacets::KnowledgeObjectOnly:
      object = std::make_shared<kova::knw::KnowledgeObject>(attributes);
      break;
    case ZANKnwObjectFacets::InstanceAndKnowledgeObject:
    default: object = std::make_shared<kova::knw::InstanceKnowledgeObject>(type, attributes); break;
  }
  return ZANBaseUnknown_var(std::move(object));
}
