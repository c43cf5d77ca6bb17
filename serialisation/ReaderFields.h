// The fields of one reference or instance object of a parsed mapping document, read as
// ZANOmxJsonObject's getters would read them from the same object (internal to the reader).
#ifndef KOVA_SERIALISATION_READERFIELDS_H_
#define KOVA_SERIALISATION_READERFIELDS_H_

#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <simdjson.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace kova::reader {

// What a key holds, as far as the reader tells values apart.
enum class FieldKind : std::uint8_t { Absent, String, True, False, Array, Object, Other };

// The value under one key.
struct Field {
  FieldKind kind = FieldKind::Absent;
  std::string_view text;         // String
  simdjson::dom::array array;    // Array
  simdjson::dom::object object;  // Object
};

// The keys the reader looks at in a reference or instance object.
enum FieldName : std::uint8_t {
  kKovaIdField,
  kPlexoIdField,
  kRefIdField,
  kIsLocalField,
  kIsSetKSSField,
  kKOVASynchroStampField,
  kCEStampField,
  kCustomDataField,
  kInstancesField,
  kFieldCount
};

inline constexpr std::array<std::string_view, kFieldCount> kFieldKeys = {
    "kOVAId", "PlexoId", "RefId", "IsLocal", "IsSetKSS", "KOVASynchroStamp", "CEStamp", "CustomData", "Instances"};

using Fields = std::array<Field, kFieldCount>;

// The field name of key, or kFieldCount when the reader does not look at it.
inline FieldName FieldOfKey(std::string_view key) noexcept {
  const auto is = [key](FieldName name) {
    return std::memcmp(key.data(), kFieldKeys[name].data(), key.size()) == 0 ? name : kFieldCount;
  };
  switch (key.size()) {
    case 5: return is(kRefIdField);
    case 6: return is(kKovaIdField);
    case 7:
      if (key[0] == 'P') return is(kPlexoIdField);
      if (key[0] == 'I') return is(kIsLocalField);
      return is(kCEStampField);
    case 8: return is(kIsSetKSSField);
    case 9: return is(kInstancesField);
    case 10: return is(kCustomDataField);
    case 16: return is(kKOVASynchroStampField);
    default: return kFieldCount;
  }
}

inline Field FieldOf(simdjson::dom::element value) {
  Field field;
  switch (value.type()) {
    case simdjson::dom::element_type::STRING:
      field.kind = FieldKind::String;
      field.text = value.get_string().value_unsafe();
      break;
    case simdjson::dom::element_type::BOOL:
      field.kind = value.get_bool().value_unsafe() ? FieldKind::True : FieldKind::False;
      break;
    case simdjson::dom::element_type::ARRAY:
      field.kind = FieldKind::Array;
      field.array = value.get_array().value_unsafe();
      break;
    case simdjson::dom::element_type::OBJECT:
      field.kind = FieldKind::Object;
      field.object = value.get_object().value_unsafe();
      break;
    default: field.kind = FieldKind::Other; break;
  }
  return field;
}

// The fields of object in one pass; a repeated key leaves the value of its last appearance, as
// ZANOmxJsonObject keeps it.
inline void FieldsOf(simdjson::dom::object object, Fields& fields) {
  fields = {};
  for (const simdjson::dom::key_value_pair member : object) {
    const FieldName name = FieldOfKey(member.key);
    if (name != kFieldCount) fields[name] = FieldOf(member.value);
  }
}

// As ZANOmxJsonObject::GetString on the key.
inline HRESULT ReadString(const Field& field, ZANUnicodeString& value) {
  if (field.kind == FieldKind::Absent) return ZAN_E_NOTFOUND;
  if (field.kind != FieldKind::String) return ZAN_E_TYPEMISMATCH;
  value = ZANUnicodeString::FromValidUTF8(field.text);
  return S_OK;
}

// As ZANOmxJsonObject::GetBoolean on the key.
inline HRESULT ReadBoolean(const Field& field, bool& value) {
  if (field.kind == FieldKind::Absent) return ZAN_E_NOTFOUND;
  if (field.kind != FieldKind::True && field.kind != FieldKind::False) return ZAN_E_TYPEMISMATCH;
  value = field.kind == FieldKind::True;
  return S_OK;
}

// The elements of an array in order, each as the fields of an object.
class ObjectCursor {
 public:
  explicit ObjectCursor(simdjson::dom::array array) : next_(array.begin()), end_(array.end()) {}

  // False past the last element; else status is S_OK and fields are those of the element, or the
  // status ZANOmxJsonArray::GetJsonObject gives for an element that is not an object.
  bool Next(HRESULT& status, Fields& fields) {
    // At most as many elements as ZANOmxJsonArray::Length counts.
    if (next_ == end_ || left_ == 0) return false;
    --left_;
    const simdjson::dom::element element = *next_;
    ++next_;
    simdjson::dom::object object;
    if (element.get_object().get(object) != simdjson::SUCCESS) {
      status = ZAN_E_TYPEMISMATCH;
    } else {
      status = S_OK;
      FieldsOf(object, fields);
    }
    return true;
  }

 private:
  simdjson::dom::array::iterator next_;
  simdjson::dom::array::iterator end_;
  std::uint32_t left_ = static_cast<std::uint32_t>(std::numeric_limits<int>::max());
};

}  // namespace kova::reader

#endif  // KOVA_SERIALISATION_READERFIELDS_H_
