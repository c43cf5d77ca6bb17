// The platform's JSON object model: objects, arrays and keys.
//
// Handles: ZANOmxJsonObject and ZANOmxJsonArray are handles onto JSON values. Copying a handle
// shares the value (reading a sub-object or sub-array hands out a handle onto the value inside
// its container, without copying it). The Put operations store a copy of what they are given,
// so a value put into a container is independent of the argument afterwards. A handle onto a
// value that its container later replaces keeps the former value, detached from the container.
// A handle left empty by a move reads as an empty object (or array) and gets a new one on Put.
//
// Loading (LoadFromString):
//  - any well-formed JSON text loads; the root may be any JSON value, and IsValidJsonObject() is
//    false when it is not an object;
//  - one leading UTF-8 byte order mark is skipped; a text that is then empty or made of JSON blanks
//    (space, tab, line feed, carriage return) only loads as an empty object;
//  - malformed text (syntax, invalid UTF-8, lone surrogate escapes, trailing content, NaN or
//    Infinity) gives ZAN_E_INVALIDDATA and leaves the object as it was;
//  - nesting of up to 10,000 levels loads; deeper input is refused with ZAN_E_INVALIDDATA;
//  - numbers of any size or precision load, and keep the text they were written with;
//  - duplicate keys in one object: the last value wins, the key keeps the place of its first
//    appearance;
//  - a null text pointer with a non-zero length gives ZAN_E_INVALIDARG; running out of memory,
//    or a text of 4 GiB or more, gives E_FAIL.
//
// Getters return S_OK, ZAN_E_NOTFOUND when the key is absent (or an array index is out of
// range, or the handle is not onto an object), ZAN_E_TYPEMISMATCH when the value has another
// type; a failed getter leaves its output untouched. GetInteger succeeds only for an integer token
// (no fraction, no exponent; "-0" is one) whose value fits 32-bit signed, and GetType tells
// Integer exactly for those numbers, Real for all others. Strings may hold U+0000.
//
// Output: ToString gives compact text with members in insertion order and raw UTF-8 (only quote,
// backslash and control characters are escaped). PrettyPrint gives an indented text, for logs
// (compact beyond 256 levels of nesting).
//
// Distinct documents may be used from different threads at once; one document may be read from
// several threads at once as long as none changes it.
#ifndef KOVAMAPPINGSERVICES_ZANOMXJSON_H_
#define KOVAMAPPINGSERVICES_ZANOMXJSON_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kova::json {
struct Node;  // the value tree behind the handles (internal)
}

// A key of a JSON object, made where it is passed: from a string (copied) or from a character
// pointer. A key made from a character pointer refers to that text without copying it, so the
// text must outlive the key; string literals are the intended use. One key is not meant to be
// used by several threads at once.
class KOVA_EXPORT ZANOmxKeyString {
 public:
  // Both implicit: keys convert from text where they are passed.
  ZANOmxKeyString(const ZANUnicodeString& key) : text_(nullptr), size_(0), key_(key) {}
  ZANOmxKeyString(const char* key) noexcept
      : text_(key != nullptr ? key : ""), size_(std::char_traits<char>::length(text_)) {}
  // The key as a string; the text of a key made from a character pointer is read as UTF-8, with
  // ill-formed sequences replaced as ZANUnicodeString does.
  const ZANUnicodeString& GetString() const;
  // The bytes of the key as given (for look-ups).
  std::string_view View() const noexcept { return text_ != nullptr ? std::string_view(text_, size_) : key_->View(); }

 private:
  const char* text_;  // the text of a key made from a character pointer, else null
  std::size_t size_;
  mutable std::optional<ZANUnicodeString> key_;  // made on first use for character pointers
};

// Kinds of JSON values, as told by the GetType operations.
enum class ZANOmxJsonType { Null, Boolean, Integer, Real, String, Array, Object };

class ZANOmxJsonArray;

class KOVA_EXPORT ZANOmxJsonObject {
 public:
  // A new, empty JSON object.
  ZANOmxJsonObject();
  ZANOmxJsonObject(const ZANOmxJsonObject&) = default;
  ZANOmxJsonObject(ZANOmxJsonObject&&) noexcept = default;
  ZANOmxJsonObject& operator=(const ZANOmxJsonObject&) = default;
  ZANOmxJsonObject& operator=(ZANOmxJsonObject&&) noexcept = default;
  ~ZANOmxJsonObject();

  // Parses UTF-8 JSON text and makes this handle its root (see the loading rules above).
  HRESULT LoadFromString(const char* utf8, std::size_t length);
  HRESULT LoadFromString(const ZANUnicodeString& text);

  // True when the value is an object without members (or not an object at all).
  bool IsEmpty() const;
  // True when the value is a JSON object.
  bool IsValidJsonObject() const;

  // True when the key is present, whatever its value (null included).
  bool Has(const ZANOmxKeyString& key) const;
  // The kind of the value under key; ZAN_E_NOTFOUND when the key is absent.
  HRESULT GetType(const ZANOmxKeyString& key, ZANOmxJsonType& type) const;

  HRESULT GetInteger(const ZANOmxKeyString& key, int& value) const;
  // Any JSON number, as the nearest double (out-of-range numbers give infinities).
  HRESULT GetReal(const ZANOmxKeyString& key, double& value) const;
  // The number token exactly as written in the loaded text (or as generated by PutInteger).
  HRESULT GetNumberText(const ZANOmxKeyString& key, ZANUnicodeString& value) const;
  HRESULT GetString(const ZANOmxKeyString& key, ZANUnicodeString& value) const;
  HRESULT GetBoolean(const ZANOmxKeyString& key, bool& value) const;
  HRESULT GetJsonObject(const ZANOmxKeyString& key, ZANOmxJsonObject& value) const;
  HRESULT GetJsonArray(const ZANOmxKeyString& key, ZANOmxJsonArray& value) const;
  // The string under key, or defaultValue when the key is absent or not a string.
  ZANUnicodeString OptString(const ZANOmxKeyString& key, const ZANUnicodeString& defaultValue) const;
  // The member names in document (insertion) order, each once, replacing the content of keys.
  // ZAN_E_TYPEMISMATCH when the value is not an object.
  HRESULT GetKeys(std::vector<ZANUnicodeString>& keys) const;

  // Each Put sets key to the value, replacing an earlier value in place (keeping its position),
  // or appending the key when it is new. Returns S_OK (ZAN_E_TYPEMISMATCH on a non-object;
  // ZAN_E_INVALIDARG for a real that is not finite, which JSON cannot write; E_FAIL when memory
  // runs out). PutJsonObject of a handle onto a loaded non-object root stores that value.
  HRESULT PutInteger(const ZANOmxKeyString& key, int value);
  HRESULT PutReal(const ZANOmxKeyString& key, double value);
  HRESULT PutString(const ZANOmxKeyString& key, const ZANUnicodeString& value);
  HRESULT PutBoolean(const ZANOmxKeyString& key, bool value);
  HRESULT PutNull(const ZANOmxKeyString& key);
  HRESULT PutJsonObject(const ZANOmxKeyString& key, const ZANOmxJsonObject& value);
  HRESULT PutJsonArray(const ZANOmxKeyString& key, const ZANOmxJsonArray& value);

  // Compact JSON text of the value.
  ZANUnicodeString ToString() const;
  // Indented JSON text of the value, for diagnostics.
  ZANUnicodeString PrettyPrint() const;

 private:
  friend class ZANOmxJsonArray;
  friend struct kova::json::Node;
  ZANOmxJsonObject(std::shared_ptr<kova::json::Node> node);
  std::shared_ptr<kova::json::Node> node_;
};

class KOVA_EXPORT ZANOmxJsonArray {
 public:
  // A new, empty JSON array.
  ZANOmxJsonArray();
  ZANOmxJsonArray(const ZANOmxJsonArray&) = default;
  ZANOmxJsonArray(ZANOmxJsonArray&&) noexcept = default;
  ZANOmxJsonArray& operator=(const ZANOmxJsonArray&) = default;
  ZANOmxJsonArray& operator=(ZANOmxJsonArray&&) noexcept = default;
  ~ZANOmxJsonArray();

  // Number of elements.
  int Length() const;

  // Elements are numbered from 1 to Length(); other indices give ZAN_E_NOTFOUND.
  HRESULT GetType(int index, ZANOmxJsonType& type) const;
  HRESULT GetJsonObject(int index, ZANOmxJsonObject& value) const;
  HRESULT GetJsonArray(int index, ZANOmxJsonArray& value) const;
  HRESULT GetString(int index, ZANUnicodeString& value) const;
  HRESULT GetInteger(int index, int& value) const;
  HRESULT GetReal(int index, double& value) const;
  HRESULT GetNumberText(int index, ZANUnicodeString& value) const;
  HRESULT GetBoolean(int index, bool& value) const;

  // Each Put appends a copy of the value at the end. Returns S_OK (ZAN_E_INVALIDARG for a real
  // that is not finite; E_FAIL when memory runs out).
  HRESULT PutJsonObject(const ZANOmxJsonObject& value);
  HRESULT PutJsonArray(const ZANOmxJsonArray& value);
  HRESULT PutString(const ZANUnicodeString& value);
  HRESULT PutInteger(int value);
  HRESULT PutReal(double value);
  HRESULT PutBoolean(bool value);
  HRESULT PutNull();

  ZANUnicodeString ToString() const;
  ZANUnicodeString PrettyPrint() const;

 private:
  friend class ZANOmxJsonObject;
  friend struct kova::json::Node;
  ZANOmxJsonArray(std::shared_ptr<kova::json::Node> node);
  std::shared_ptr<kova::json::Node> node_;
};

#endif  // KOVAMAPPINGSERVICES_ZANOMXJSON_H_
