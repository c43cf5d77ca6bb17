#include "Attributes.h"

#include <KOVAMappingServices/ZANKnwBuilder.h>
#include <KOVAMappingServices/ZANKnwTypes.h>
#include <KOVAMappingServices/ZANOmxJson.h>

#include <charconv>
#include <cstdint>
#include <vector>

#include "Status.h"
#include "Text.h"

namespace kova::tool {

namespace {

// One value of the file: a member of an object or an element of an array, read through the JSON
// model's getters of either.
class Slot {
 public:
  Slot(const ZANOmxJsonObject& object, ZANUnicodeString key) : object_(&object), key_(std::move(key)) {}
  Slot(const ZANOmxJsonArray& array, int index) : array_(&array), index_(index) {}

  ZANOmxJsonType Type() const {
    ZANOmxJsonType type = ZANOmxJsonType::Null;
    if (object_ != nullptr) {
      object_->GetType(key_, type);
    } else {
      array_->GetType(index_, type);
    }
    return type;
  }

  HRESULT Get(ZANUnicodeString& value) const {
    return object_ ? object_->GetString(key_, value) : array_->GetString(index_, value);
  }
  HRESULT Get(int& value) const {
    return object_ ? object_->GetInteger(key_, value) : array_->GetInteger(index_, value);
  }
  HRESULT Get(double& value) const { return object_ ? object_->GetReal(key_, value) : array_->GetReal(index_, value); }
  HRESULT Get(bool& value) const {
    return object_ ? object_->GetBoolean(key_, value) : array_->GetBoolean(index_, value);
  }
  HRESULT Get(ZANOmxJsonObject& value) const {
    return object_ ? object_->GetJsonObject(key_, value) : array_->GetJsonObject(index_, value);
  }
  HRESULT Get(ZANOmxJsonArray& value) const {
    return object_ ? object_->GetJsonArray(key_, value) : array_->GetJsonArray(index_, value);
  }
  HRESULT GetNumberText(ZANUnicodeString& value) const {
    return object_ ? object_->GetNumberText(key_, value) : array_->GetNumberText(index_, value);
  }

 private:
  const ZANOmxJsonObject* object_ = nullptr;
  ZANUnicodeString key_;
  const ZANOmxJsonArray* array_ = nullptr;
  int index_ = 0;
};

ZANIType_var StandardType(const char* name) { return ZANKnwBuilder::FindType(name); }

ZANIKnwParm_var Convert(const Slot& slot, const std::string& where);

// The JSON model types integers beyond 32 bits as reals: an integer is told by its token, which has
// no fraction and no exponent.
bool IsIntegerToken(const ZANUnicodeString& token) {
  const std::string_view text = token.View();
  return !text.empty() && text.find_first_of(".eE") == std::string_view::npos;
}

ZANIKnwParm_var ConvertNumber(const Slot& slot, const std::string& where) {
  ZANUnicodeString token;
  slot.GetNumberText(token);
  if (!IsIntegerToken(token)) {
    double value = 0;
    slot.Get(value);
    return ZANKnwBuilder::MakeRealParm(value);
  }
  int value = 0;
  if (ZANFailed(slot.Get(value))) {
    throw ToolError(where + ": integer " + std::string(token.View()) + " does not fit 32 bits");
  }
  return ZANKnwBuilder::MakeIntegerParm(value);
}

// {"time": SECONDS}, {"enum": N} or {"unset": TYPE}.
ZANIKnwParm_var ConvertObject(const Slot& slot, const std::string& where) {
  ZANOmxJsonObject object;
  slot.Get(object);
  std::vector<ZANUnicodeString> keys;
  object.GetKeys(keys);
  const std::string expected =
      R"(: an object value must be {"time": SECONDS}, {"enum": N} or {"unset": "string"|"integer"|"real"|"boolean"|"time"})";
  if (keys.size() != 1) throw ToolError(where + expected);
  const std::string key(keys.front().View());
  ZANOmxJsonType type = ZANOmxJsonType::Null;
  object.GetType(keys.front(), type);
  const bool isNumber = type == ZANOmxJsonType::Integer || type == ZANOmxJsonType::Real;
  ZANUnicodeString token;
  if (isNumber) object.GetNumberText(keys.front(), token);
  if (key == "time") {
    if (!isNumber || !IsIntegerToken(token)) throw ToolError(where + ": \"time\" must be an integer number of seconds");
    const std::string_view text = token.View();
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error != std::errc() || end != text.data() + text.size()) {
      throw ToolError(where + ": time " + std::string(text) + " does not fit 64 bits");
    }
    return ZANKnwBuilder::MakeTimeParm(ZANTime(seconds));
  }
  if (key == "enum") {
    if (!isNumber || !IsIntegerToken(token)) throw ToolError(where + ": \"enum\" must be an integer");
    int value = 0;
    if (ZANFailed(object.GetInteger("enum", value))) {
      throw ToolError(where + ": enumeration value " + std::string(token.View()) + " does not fit 32 bits");
    }
    return ZANKnwBuilder::MakeEnumParm(value);
  }
  if (key == "unset") {
    ZANUnicodeString kind;
    object.GetString("unset", kind);
    static const std::pair<const char*, const char*> kKinds[] = {
        {"string", "String"}, {"integer", "Integer"}, {"real", "Real"}, {"boolean", "Boolean"}, {"time", "Time"}};
    for (const auto& [word, typeName] : kKinds) {
      if (type == ZANOmxJsonType::String && kind == ZANUnicodeString(word)) {
        return ZANKnwBuilder::MakeUnsetParm(StandardType(typeName));
      }
    }
    throw ToolError(where + ": \"unset\" must be \"string\", \"integer\", \"real\", \"boolean\" or \"time\"");
  }
  throw ToolError(where + expected);
}

ZANIKnwParm_var ConvertArray(const Slot& slot, const std::string& where) {
  ZANOmxJsonArray array;
  slot.Get(array);
  std::vector<ZANBaseUnknown_var> elements;
  elements.reserve(static_cast<std::size_t>(array.Length()));
  for (int i = 1; i <= array.Length(); ++i) {
    elements.emplace_back(Convert(Slot(array, i), where + " element " + std::to_string(i)));
  }
  return ZANKnwBuilder::MakeListParm(ZANKnwBuilder::MakeList(elements));
}

ZANIKnwParm_var Convert(const Slot& slot, const std::string& where) {
  switch (slot.Type()) {
    case ZANOmxJsonType::String: {
      ZANUnicodeString value;
      slot.Get(value);
      return ZANKnwBuilder::MakeStringParm(value);
    }
    case ZANOmxJsonType::Integer:
    case ZANOmxJsonType::Real: return ConvertNumber(slot, where);
    case ZANOmxJsonType::Boolean: {
      bool value = false;
      slot.Get(value);
      return ZANKnwBuilder::MakeBooleanParm(value ? 1 : 0);
    }
    case ZANOmxJsonType::Null: return ZANKnwBuilder::MakeUnsetParm(StandardType("String"));
    case ZANOmxJsonType::Array: return ConvertArray(slot, where);
    case ZANOmxJsonType::Object: return ConvertObject(slot, where);
  }
  throw ToolError(where + ": value of unknown kind");
}

}  // namespace

AttributeMap AttributesOf(const ZANOmxJsonObject& object, const std::string& name) {
  std::vector<ZANUnicodeString> keys;
  object.GetKeys(keys);
  AttributeMap attributes;
  for (const ZANUnicodeString& key : keys) {
    attributes[key] = Convert(Slot(object, key), name + ": attribute " + JsonQuoted(key.View()));
  }
  return attributes;
}

AttributeMap ReadAttributes(const std::string& text, const std::string& name) {
  ZANOmxJsonObject root;
  const HRESULT loaded = root.LoadFromString(ZANUnicodeString(text));
  if (ZANFailed(loaded)) {
    throw ToolError(name + ": not JSON (error " + FormatStatus(loaded) + ": " + StatusMeaning(loaded) + ")");
  }
  if (!root.IsValidJsonObject()) throw ToolError(name + ": not a JSON object of attribute names and values");
  return AttributesOf(root, name);
}

}  // namespace kova::tool
