// ZANUnicodeString: the platform's Unicode string, holding valid UTF-8.
//
// Contracts:
//  - The content is always valid UTF-8. Text given in narrow (UTF-8) form that is not valid UTF-8
//    has each ill-formed sequence replaced by U+FFFD (maximal-subpart rule).
//  - A character is a Unicode code point: GetLengthInChar counts code points, SubString takes
//    code point positions.
//  - Equality is exact; operator< is code point order, which is the byte order of UTF-8.
//  - The text may hold U+0000: it is counted by GetLengthInChar, and CastToCharPtr stops at it.
#ifndef KOVAMAPPINGSERVICES_ZANUNICODESTRING_H_
#define KOVAMAPPINGSERVICES_ZANUNICODESTRING_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>

class KOVA_EXPORT ZANUnicodeString {
 public:
  ZANUnicodeString() = default;
  // From narrow text (UTF-8); ill-formed sequences become U+FFFD. A null pointer gives the empty text.
  ZANUnicodeString(const char* text);  // NOLINT(google-explicit-constructor): literals convert
  ZANUnicodeString(const char* text, std::size_t byteCount);
  explicit ZANUnicodeString(std::string_view text);
  explicit ZANUnicodeString(const std::string& text);
  explicit ZANUnicodeString(std::string&& text);

  ZANUnicodeString(const ZANUnicodeString&) = default;
  ZANUnicodeString(ZANUnicodeString&&) noexcept = default;
  ZANUnicodeString& operator=(const ZANUnicodeString&) = default;
  ZANUnicodeString& operator=(ZANUnicodeString&&) noexcept = default;
  ~ZANUnicodeString() = default;

  // Wraps text already known to be valid UTF-8, without checking it again.
  static ZANUnicodeString FromValidUTF8(std::string text);

  // Number of characters (code points).
  int GetLengthInChar() const noexcept;
  // Number of bytes of the UTF-8 form, without terminator.
  std::size_t GetLengthInByte() const noexcept { return utf8_.size(); }
  bool IsEmpty() const noexcept { return utf8_.empty(); }

  // The NUL-terminated UTF-8 text; valid until the string changes.
  const char* CastToCharPtr() const noexcept { return utf8_.c_str(); }
  // The narrow form of the text, which is its UTF-8 form.
  std::string ConvertToChar() const { return utf8_; }
  // With buffer == nullptr: stores the UTF-8 byte length in length. Otherwise buffer must hold
  // length + 1 bytes: writes the UTF-8 bytes and a terminating NUL. Returns S_OK.
  HRESULT ConvertToUTF8(char* buffer, std::size_t& length) const noexcept;

  // The characters from position start (code points), count of them, clipped to the text.
  ZANUnicodeString SubString(int start, int count) const;

  // Replaces the content by a number written with a printf format of one conversion: "%d", "%i",
  // "%u", "%x", "%.1f", "%g", "%I64u", "%lld" ... The number's type must fit the conversion;
  // otherwise (or for any other format) the string is left unchanged and ZAN_E_INVALIDARG returned.
  HRESULT BuildFromNum(int value, const char* format = "%d");
  HRESULT BuildFromNum(unsigned int value, const char* format = "%u");
  HRESULT BuildFromNum(long long value, const char* format = "%lld");
  HRESULT BuildFromNum(unsigned long long value, const char* format = "%llu");
  HRESULT BuildFromNum(double value, const char* format = "%f");

  ZANUnicodeString& Append(const ZANUnicodeString& other);
  ZANUnicodeString& operator+=(const ZANUnicodeString& other) { return Append(other); }
  ZANUnicodeString& operator+=(const char* text) { return Append(ZANUnicodeString(text)); }

  // The UTF-8 bytes, for code that works on byte views.
  std::string_view View() const noexcept { return utf8_; }
  const std::string& Str() const noexcept { return utf8_; }

  friend bool operator==(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept {
    return a.utf8_ == b.utf8_;
  }
  friend bool operator<(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept {
    // std::string compares char_traits<char>, i.e. as unsigned bytes: UTF-8 byte order,
    // which is code point order.
    return a.utf8_ < b.utf8_;
  }
  friend bool operator>(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept { return b < a; }
  friend bool operator<=(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept { return !(b < a); }
  friend bool operator>=(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept { return !(a < b); }

 private:
  std::string utf8_;
};

KOVA_EXPORT ZANUnicodeString operator+(const ZANUnicodeString& a, const ZANUnicodeString& b);
KOVA_EXPORT ZANUnicodeString operator+(const ZANUnicodeString& a, const char* b);
KOVA_EXPORT ZANUnicodeString operator+(const char* a, const ZANUnicodeString& b);

// Writes the UTF-8 text (used by test frameworks and host diagnostics).
inline std::ostream& operator<<(std::ostream& out, const ZANUnicodeString& s) { return out << s.View(); }

template <>
struct std::hash<ZANUnicodeString> {
  std::size_t operator()(const ZANUnicodeString& s) const noexcept {
    return std::hash<std::string_view>{}(s.View());
  }
};

#endif  // KOVAMAPPINGSERVICES_ZANUNICODESTRING_H_
