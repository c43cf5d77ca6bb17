#include "stamps/ParmValueToString.h"

#include <KOVAMappingServices/ZANKnwParmDictionary.h>

#include <cstdint>
#include <sstream>
#include <string>

namespace kova::stamps {

namespace {

// Separator of the element texts of a list value (U+0007), built at load.
const ZANUnicodeString kListSeparator("\x07");

enum class ValueText { None, String, Integer, Real, Boolean, Time };

// The parameter dictionary, obtained at the first call and kept for the life of the process.
const ZANIParmDictionary_var& ParmDictionary() {
  static const ZANIParmDictionary_var dictionary = ZANKnwGlobalFunctions::GetParmDictionary();
  return dictionary;
}

// The text a value of this type is written with, lists aside. The order of the tests decides
// between types that pass several of them.
ValueText ChooseValueText(const ZANIType_var& type, const ZANIParmDictionary_var& dictionary) {
  if (type->IsString()) return ValueText::String;
  if (type->IsInteger()) return ValueText::Integer;
  if (type->IsReal()) return ValueText::Real;
  if (type->IsBoolean()) return ValueText::Boolean;
  if (type->IsaKindOf(dictionary->GetTimeType())) return ValueText::Time;
  if (type->IsaKindOf(dictionary->GetEnumType())) return ValueText::Integer;
  return ValueText::None;
}

ZANUnicodeString IntegerText(std::int32_t value) {
  ZANUnicodeString text;
  (void)text.BuildFromNum(static_cast<int>(value), "%d");
  return text;
}

ZANUnicodeString RealText(double value) {
  ZANUnicodeString text;
  (void)text.BuildFromNum(value, "%.1f");  // the status has no use here: the text stays empty
  return text;
}

ZANUnicodeString TimeText(const ZANTime& time) {
  // Milliseconds in 64 bits; computed unsigned so that times beyond the range wrap around
  // instead of overflowing.
  const auto milliseconds =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(time.Gettime_t()) * std::uint64_t{1000});
  std::ostringstream out;
  out << milliseconds;
  return ZANUnicodeString(out.str());
}

// The text of parm's value read as the chosen kind. parm and its value must not be null
// (ZANNullVarError otherwise).
ZANUnicodeString WriteValue(ValueText kind, const ZANIKnwParm_var& parm) {
  const ZANIKnwValue_var value = parm->GetValue();
  switch (kind) {
    case ValueText::String:
      return value->AsString();
    case ValueText::Integer:
      return IntegerText(value->AsInteger());
    case ValueText::Real:
      return RealText(value->AsReal());
    case ValueText::Boolean:
      return ZANUnicodeString(value->AsBoolean() != 0 ? "TRUE" : "FALSE");
    case ValueText::Time:
      return TimeText(value->AsTime());
    case ValueText::None:
      break;
  }
  return {};
}

ZANUnicodeString ListText(const ZANIKnwParm_var& parm, const ZANIParmDictionary_var& dictionary) {
  const ZANIList_var list(parm->GetValue()->AsObject());
  if (!list) return {};
  const std::int32_t size = list->Size();
  if (size <= 0) return {};

  // One text for all elements, chosen from the first element.
  const ZANIKnwParm_var first(list->GetElement(1));
  if (!first) return {};
  const ZANIType_var firstType = first->GetType();
  if (!firstType) return {};
  const ValueText kind = ChooseValueText(firstType, dictionary);
  if (kind == ValueText::None) return {};

  ZANUnicodeString text;
  for (std::int32_t i = 1; i <= size; ++i) {
    const ZANIKnwParm_var element(list->GetElement(i));
    if (!element) return {};
    text += WriteValue(kind, element);
    if (i != size) text += kListSeparator;
  }
  return text;
}

}  // namespace

ZANUnicodeString ParmValueToString(const ZANIKnwParm_var& parm, int /*n*/) {
  const ZANIType_var type = parm->GetType();
  if (!type) return {};
  const ZANIParmDictionary_var& dictionary = ParmDictionary();
  const ValueText kind = ChooseValueText(type, dictionary);
  if (kind != ValueText::None) return WriteValue(kind, parm);
  if (type->IsaKindOf(dictionary->GetListType())) return ListText(parm, dictionary);
  return {};
}

}  // namespace kova::stamps
