// ZANUnicodeString: the platform's Unicode string, holding valid UTF-8.
//
// Contracts:
//  - The content is always valid UTF-8. Text given in narrow (UTF-8) form that is not valid UTF-8
//    has each ill-formed sequence replaced by U+FFFD (maximal-subpart rule).
//  - A character is a Unicode code point: GetLengthInChar counts code points, SubString takes
//    code point positions.
//  - Equality is exact; operator< is code point order, which is the byte order of UTF-8.
//  - The text may hold U+0000: it is counted by GetLengthInChar, and CastToCharPtr stops at it.
//  - Texts of up to kInlineCapacity bytes are held inside the object, with no heap block: platform
//    ids, kOVA ids and stored stamps (44 base64 characters) fit, so a mapping object's texts cost
//    no allocation of their own. Longer texts are held in a std::string.
#ifndef KOVAMAPPINGSERVICES_ZANUNICODESTRING_H_
#define KOVAMAPPINGSERVICES_ZANUNICODESTRING_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <ostream>
#include <string>
#include <string_view>

class KOVA_EXPORT ZANUnicodeString {
 public:
  ZANUnicodeString() = default;
  // From narrow text (UTF-8); ill-formed sequences become U+FFFD. A null pointer gives the empty text.
  ZANUnicodeString(const char* text);  // implicit: literals convert
  ZANUnicodeString(const char* text, std::size_t byteCount);
  explicit ZANUnicodeString(std::string_view text);
  explicit ZANUnicodeString(const std::string& text);
  explicit ZANUnicodeString(std::string&& text);

  ZANUnicodeString(const ZANUnicodeString& other) {
    if (other.IsLong()) {
      CopyLong(other);
    } else {
      CopyInline(other);
    }
  }
  // The source is left empty.
  ZANUnicodeString(ZANUnicodeString&& other) noexcept {
    if (other.IsLong()) {
      MoveLong(other);
    } else {
      CopyInline(other);
    }
    other.SetEmptyInline();
  }
  ZANUnicodeString& operator=(const ZANUnicodeString& other);
  // The source is left empty.
  ZANUnicodeString& operator=(ZANUnicodeString&& other) noexcept {
    if (this != &other) {
      if (IsLong() || other.IsLong()) {
        MoveAssignLong(other);
      } else {
        CopyInline(other);
      }
      other.SetEmptyInline();
    }
    return *this;
  }
  ~ZANUnicodeString() {
    if (IsLong()) Long().~basic_string();
  }

  // Bytes held inside the object; longer texts take a heap block.
  static constexpr std::size_t kInlineCapacity = 46;

  // Wraps text already known to be valid UTF-8, without checking it again.
  static ZANUnicodeString FromValidUTF8(std::string text);
  static ZANUnicodeString FromValidUTF8(std::string_view text);
  static ZANUnicodeString FromValidUTF8(const char* text) { return FromValidUTF8(std::string_view(text)); }

  // Number of characters (code points).
  int GetLengthInChar() const noexcept;
  // Number of bytes of the UTF-8 form, without terminator.
  std::size_t GetLengthInByte() const noexcept { return IsLong() ? Long().size() : tag_; }
  bool IsEmpty() const noexcept { return GetLengthInByte() == 0; }

  // The NUL-terminated UTF-8 text; valid until the string changes.
  const char* CastToCharPtr() const noexcept {
    return IsLong() ? Long().c_str() : reinterpret_cast<const char*>(storage_);
  }
  // The narrow form of the text, which is its UTF-8 form.
  std::string ConvertToChar() const { return std::string(View()); }
  // The UTF-8 text, moved out without a copy when it is held on the heap; the string is left empty.
  std::string TakeUTF8() &&;
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
  std::string_view View() const noexcept {
    return IsLong() ? std::string_view(Long()) : std::string_view(reinterpret_cast<const char*>(storage_), tag_);
  }

  friend bool operator==(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept { return a.View() == b.View(); }
  friend bool operator<(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept {
    // string_view compares char_traits<char>, i.e. as unsigned bytes: UTF-8 byte order,
    // which is code point order.
    return a.View() < b.View();
  }
  friend bool operator>(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept { return b < a; }
  friend bool operator<=(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept { return !(b < a); }
  friend bool operator>=(const ZANUnicodeString& a, const ZANUnicodeString& b) noexcept { return !(a < b); }

 private:
  // tag_ is the byte count of an inline text (kept NUL-terminated in storage_), or kLong when
  // storage_ holds a std::string.
  static constexpr unsigned char kLong = 0xFF;
  static_assert(kInlineCapacity < kLong);

  bool IsLong() const noexcept { return tag_ == kLong; }
  std::string& Long() noexcept { return *std::launder(reinterpret_cast<std::string*>(storage_)); }
  const std::string& Long() const noexcept { return *std::launder(reinterpret_cast<const std::string*>(storage_)); }
  // Replaces the content by text (any length); strong guarantee.
  void Assign(std::string_view text);
  // Replaces the content by text, taking its buffer when it is too long to be held inline.
  void Assign(std::string&& text) noexcept;
  // The parts of copies and moves where a std::string is involved (this one empty and inline for
  // the constructors); MoveLong and MoveAssignLong leave other's std::string destroyed.
  void CopyLong(const ZANUnicodeString& other);
  void MoveLong(ZANUnicodeString& other) noexcept;
  void MoveAssignLong(ZANUnicodeString& other) noexcept;
  // Takes other's inline text; this string's previous content must already be gone.
  void CopyInline(const ZANUnicodeString& other) noexcept {
    std::memcpy(storage_, other.storage_, sizeof storage_);
    tag_ = other.tag_;
  }
  // The empty inline text; the previous content must already be gone.
  void SetEmptyInline() noexcept {
    storage_[0] = 0;
    tag_ = 0;
  }

  alignas(std::string) unsigned char storage_[kInlineCapacity + 1] = {};
  unsigned char tag_ = 0;
};

static_assert(sizeof(std::string) <= ZANUnicodeString::kInlineCapacity + 1, "a std::string fits the inline storage");

KOVA_EXPORT ZANUnicodeString operator+(const ZANUnicodeString& a, const ZANUnicodeString& b);
KOVA_EXPORT ZANUnicodeString operator+(const ZANUnicodeString& a, const char* b);
KOVA_EXPORT ZANUnicodeString operator+(const char* a, const ZANUnicodeString& b);

// Writes the UTF-8 text (used by test frameworks and host diagnostics).
inline std::ostream& operator<<(std::ostream& out, const ZANUnicodeString& s) { return out << s.View(); }

template <>
struct std::hash<ZANUnicodeString> {
  std::size_t operator()(const ZANUnicodeString& s) const noexcept { return std::hash<std::string_view>{}(s.View()); }
};

#endif  // KOVAMAPPINGSERVICES_ZANUNICODESTRING_H_
