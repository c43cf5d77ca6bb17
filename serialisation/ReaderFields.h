// The fields of one reference or instance object of a mapping document, as the document reader
// uses them, whatever holds the loaded document (internal to the reader).
#ifndef KOVA_SERIALISATION_READERFIELDS_H_
#define KOVA_SERIALISATION_READERFIELDS_H_

#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace kova::reader {

// What a key holds, as far as the reader tells values apart.
enum class FieldKind : std::uint8_t { Absent, String, True, False, Array, Other };

// The value under one key. ArrayRef names an array in the loaded document.
template <typename ArrayRef>
struct Field {
  FieldKind kind = FieldKind::Absent;
  std::string_view text;  // String
  ArrayRef array{};       // Array
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

template <typename ArrayRef>
using Fields = std::array<Field<ArrayRef>, kFieldCount>;

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

// As ZANOmxJsonObject::GetString on the key.
template <typename ArrayRef>
HRESULT ReadString(const Field<ArrayRef>& field, ZANUnicodeString& value) {
  if (field.kind == FieldKind::Absent) return ZAN_E_NOTFOUND;
  if (field.kind != FieldKind::String) return ZAN_E_TYPEMISMATCH;
  value = ZANUnicodeString::FromValidUTF8(std::string_view(field.text));
  return S_OK;
}

// As ZANOmxJsonObject::GetBoolean on the key.
template <typename ArrayRef>
HRESULT ReadBoolean(const Field<ArrayRef>& field, bool& value) {
  if (field.kind == FieldKind::Absent) return ZAN_E_NOTFOUND;
  if (field.kind != FieldKind::True && field.kind != FieldKind::False) return ZAN_E_TYPEMISMATCH;
  value = field.kind == FieldKind::True;
  return S_OK;
}

}  // namespace kova::reader

#endif  // KOVA_SERIALISATION_READERFIELDS_H_
