#include "stamps/ParmValueToString.h"

#include <KOVAMappingServices/ZANKnwParmDictionary.h>

#include <langinfo.h>

#include <cfenv>
#include <charconv>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>

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

ZANUnicodeString RealText(double value) {
  ZANUnicodeString text;
  (void)text.BuildFromNum(value, "%.1f");  // the status has no use here: the text stays empty
  return text;
}

// "%d": no conversion flag, so the locale plays no part and to_chars writes the same digits.
void AppendInteger(std::string& out, std::int32_t value) {
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out.append(digits, end);
}

// "%.1f". to_chars with a precision writes what printf writes in the "C" locale under
// round-to-nearest: it is used only then, printf otherwise.
void AppendReal(std::string& out, double value) {
  const char* radix = nl_langinfo(RADIXCHAR);
  if (radix != nullptr && radix[0] == '.' && radix[1] == '\0' && std::fegetround() == FE_TONEAREST) {
    char digits[400];  // the largest double has 309 integer digits
    const auto result = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 1);
    if (result.ec == std::errc()) {
      out.append(digits, result.ptr);
      return;
    }
  }
  out.append(RealText(value).View());
}

// Milliseconds in 64 bits; computed unsigned so that times beyond the range wrap around instead of
// overflowing. Written as a stream of the global locale writes it: straight digits when that
// locale is the classic one.
void AppendTime(std::string& out, const ZANTime& time) {
  const auto milliseconds =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(time.Gettime_t()) * std::uint64_t{1000});
  if (std::locale() == std::locale::classic()) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, milliseconds).ptr;
    out.append(digits, end);
    return;
  }
  std::ostringstream stream;
  stream << milliseconds;
  out.append(ZANUnicodeString(stream.str()).View());
}

// Appends the text of parm's value read as the chosen kind. parm and its value must not be null
// (ZANNullVarError otherwise).
void AppendValue(std::string& out, ValueText kind, const ZANIKnwParm_var& parm) {
  const ZANIKnwValue_var value = parm->GetValue();
  switch (kind) {
    case ValueText::String: out.append(value->AsString().View()); return;
    case ValueText::Integer: AppendInteger(out, value->AsInteger()); return;
    case ValueText::Real: AppendReal(out, value->AsReal()); return;
    case ValueText::Boolean: out.append(value->AsBoolean() != 0 ? "TRUE" : "FALSE"); return;
    case ValueText::Time: AppendTime(out, value->AsTime()); return;
    case ValueText::None: break;
  }
}

// A list's text: all elements or nothing (out is left as it was when the list gives no text).
void AppendList(std::string& out, const ZANIKnwParm_var& parm, const ZANIParmDictionary_var& dictionary) {
  const ZANIList_var list(parm->GetValue()->AsObject());
  if (!list) return;
  const std::int32_t size = list->Size();
  if (size <= 0) return;

  // One text for all elements, chosen from the first element.
  const ZANIKnwParm_var first(list->GetElement(1));
  if (!first) return;
  const ZANIType_var firstType = first->GetType();
  if (!firstType) return;
  const ValueText kind = ChooseValueText(firstType, dictionary);
  if (kind == ValueText::None) return;

  const std::size_t start = out.size();
  for (std::int32_t i = 1; i <= size; ++i) {
    const ZANIKnwParm_var element(list->GetElement(i));
    if (!element) {
      out.resize(start);
      return;
    }
    AppendValue(out, kind, element);
    if (i != size) out.append(kListSeparator.View());
  }
}

}  // namespace

void AppendParmValueText(std::string& out, const ZANIKnwParm_var& parm) {
  const ZANIType_var type = parm->GetType();
  if (!type) return;
  const ZANIParmDictionary_var& dictionary = ParmDictionary();
  const ValueText kind = ChooseValueText(type, dictionary);
  if (kind != ValueText::None) {
    AppendValue(out, kind, parm);
    return;
  }
  if (type->IsaKindOf(dictionary->GetListType())) AppendList(out, parm, dictionary);
}

ZANUnicodeString ParmValueToString(const ZANIKnwParm_var& parm, int /*n*/) {
  std::string text;
  AppendParmValueText(text, parm);
  return ZANUnicodeString::FromValidUTF8(std::move(text));  // every piece is valid UTF-8
}

}  // namespace kova::stamps
