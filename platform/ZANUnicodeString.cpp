#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/Utf8.h"

ZANUnicodeString::ZANUnicodeString(const char* text) {
  if (text != nullptr) Assign(kova::utf8::Sanitize(text));
}

ZANUnicodeString::ZANUnicodeString(const char* text, std::size_t byteCount) {
  if (text != nullptr) Assign(kova::utf8::Sanitize(std::string_view(text, byteCount)));
}

ZANUnicodeString::ZANUnicodeString(std::string_view text) { Assign(kova::utf8::Sanitize(text)); }

ZANUnicodeString::ZANUnicodeString(const std::string& text) { Assign(kova::utf8::Sanitize(text)); }

ZANUnicodeString::ZANUnicodeString(std::string&& text) {
  if (kova::utf8::IsValid(text)) {
    Assign(std::move(text));
  } else {
    Assign(kova::utf8::Sanitize(text));
  }
}

void ZANUnicodeString::CopyLong(const ZANUnicodeString& other) {
  ::new (static_cast<void*>(storage_)) std::string(other.Long());
  tag_ = kLong;
}

void ZANUnicodeString::MoveLong(ZANUnicodeString& other) noexcept {
  ::new (static_cast<void*>(storage_)) std::string(std::move(other.Long()));
  tag_ = kLong;
  other.Long().~basic_string();
}

void ZANUnicodeString::MoveAssignLong(ZANUnicodeString& other) noexcept {
  if (other.IsLong()) {
    Assign(std::move(other.Long()));
    other.Long().~basic_string();
  } else {
    Long().~basic_string();
    CopyInline(other);
  }
}

ZANUnicodeString& ZANUnicodeString::operator=(const ZANUnicodeString& other) {
  if (this == &other) return *this;
  if (IsLong() && other.IsLong()) {
    Long() = other.Long();  // reuses this string's buffer when it is large enough
  } else {
    Assign(other.View());
  }
  return *this;
}

void ZANUnicodeString::Assign(std::string_view text) {
  if (text.size() <= kInlineCapacity) {
    // text may lie in this string's own heap block: copy it before that block goes.
    unsigned char copy[kInlineCapacity + 1];
    std::memcpy(copy, text.data(), text.size());
    if (IsLong()) Long().~basic_string();
    std::memcpy(storage_, copy, text.size());
    storage_[text.size()] = 0;
    tag_ = static_cast<unsigned char>(text.size());
    return;
  }
  if (IsLong()) {
    Long().assign(text.data(), text.size());
    return;
  }
  // The new string is made before the inline text is overwritten: a failed allocation leaves it.
  std::string made(text);
  ::new (static_cast<void*>(storage_)) std::string(std::move(made));
  tag_ = kLong;
}

void ZANUnicodeString::Assign(std::string&& text) noexcept {
  if (text.size() <= kInlineCapacity) {
    Assign(std::string_view(text));  // inline: cannot throw
    return;
  }
  if (IsLong()) {
    Long() = std::move(text);
    return;
  }
  ::new (static_cast<void*>(storage_)) std::string(std::move(text));
  tag_ = kLong;
}

std::string ZANUnicodeString::TakeUTF8() && {
  std::string text = IsLong() ? std::move(Long()) : std::string(View());
  if (IsLong()) Long().~basic_string();
  SetEmptyInline();
  return text;
}

ZANUnicodeString ZANUnicodeString::FromValidUTF8(std::string text) {
  ZANUnicodeString s;
  s.Assign(std::move(text));
  return s;
}

ZANUnicodeString ZANUnicodeString::FromValidUTF8(std::string_view text) {
  ZANUnicodeString s;
  s.Assign(text);
  return s;
}

int ZANUnicodeString::GetLengthInChar() const noexcept { return static_cast<int>(kova::utf8::CountCodePoints(View())); }

HRESULT ZANUnicodeString::ConvertToUTF8(char* buffer, std::size_t& length) const noexcept {
  const std::string_view text = View();
  if (buffer == nullptr) {
    length = text.size();
    return S_OK;
  }
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  return S_OK;
}

ZANUnicodeString ZANUnicodeString::SubString(int start, int count) const {
  if (start < 0) start = 0;
  if (count <= 0) return {};
  const std::string_view text = View();
  const std::size_t begin = kova::utf8::OffsetOfCodePoint(text, static_cast<std::size_t>(start));
  const std::string_view rest = text.substr(begin);
  const std::size_t end = kova::utf8::OffsetOfCodePoint(rest, static_cast<std::size_t>(count));
  return FromValidUTF8(rest.substr(0, end));
}

namespace {

// The printf conversion of a one-conversion format, after mapping the Windows length "I64" to
// "ll"; '\0' when the format is not a single conversion with an optional literal text around it.
struct Format {
  std::string text;
  char conversion = '\0';
  int lengthLongs = 0;  // number of 'l' length modifiers
};

Format ParseFormat(const char* format) {
  Format f;
  if (format == nullptr) return f;
  const std::string_view in(format);
  bool seen = false;
  for (std::size_t i = 0; i < in.size(); ++i) {
    const char c = in[i];
    if (c != '%') {
      f.text.push_back(c);
      continue;
    }
    if (i + 1 < in.size() && in[i + 1] == '%') {
      f.text.append("%%");
      ++i;
      continue;
    }
    if (seen) return {};
    seen = true;
    f.text.push_back('%');
    ++i;
    while (i < in.size() && std::strchr("-+ #0", in[i]) != nullptr) f.text.push_back(in[i++]);
    while (i < in.size() && in[i] >= '0' && in[i] <= '9') f.text.push_back(in[i++]);
    if (i < in.size() && in[i] == '.') {
      f.text.push_back(in[i++]);
      while (i < in.size() && in[i] >= '0' && in[i] <= '9') f.text.push_back(in[i++]);
    }
    if (in.compare(i, 3, "I64") == 0) {
      f.text.append("ll");
      f.lengthLongs = 2;
      i += 3;
    } else {
      while (i < in.size() && in[i] == 'l' && f.lengthLongs < 2) {
        f.text.push_back('l');
        ++f.lengthLongs;
        ++i;
      }
    }
    if (i >= in.size()) return {};
    f.conversion = in[i];
    f.text.push_back(in[i]);
  }
  if (!seen) return {};
  return f;
}

bool IsIntegerConversion(char c) { return c == 'd' || c == 'i'; }
bool IsUnsignedConversion(char c) { return c == 'u' || c == 'x' || c == 'X' || c == 'o'; }
bool IsRealConversion(char c) { return std::strchr("fFeEgGaA", c) != nullptr && c != '\0'; }

template <typename T>
HRESULT Print(ZANUnicodeString& out, const std::string& format, T value) {
  char small[64];
  const int n = std::snprintf(small, sizeof small, format.c_str(), value);
  if (n < 0) return ZAN_E_INVALIDARG;
  if (static_cast<std::size_t>(n) < sizeof small) {
    out = ZANUnicodeString::FromValidUTF8(std::string_view(small, static_cast<std::size_t>(n)));
    return S_OK;
  }
  std::string big(static_cast<std::size_t>(n) + 1, '\0');
  std::snprintf(big.data(), big.size(), format.c_str(), value);
  big.resize(static_cast<std::size_t>(n));
  out = ZANUnicodeString::FromValidUTF8(std::move(big));
  return S_OK;
}

}  // namespace

HRESULT ZANUnicodeString::BuildFromNum(int value, const char* format) {
  const Format f = ParseFormat(format);
  if (IsIntegerConversion(f.conversion) && f.lengthLongs == 0) return Print(*this, f.text, value);
  if (IsUnsignedConversion(f.conversion) && f.lengthLongs == 0)
    return Print(*this, f.text, static_cast<unsigned int>(value));
  return BuildFromNum(static_cast<long long>(value), format);
}

HRESULT ZANUnicodeString::BuildFromNum(unsigned int value, const char* format) {
  const Format f = ParseFormat(format);
  if ((IsUnsignedConversion(f.conversion) || IsIntegerConversion(f.conversion)) && f.lengthLongs == 0)
    return Print(*this, f.text, value);
  return BuildFromNum(static_cast<unsigned long long>(value), format);
}

HRESULT ZANUnicodeString::BuildFromNum(long long value, const char* format) {
  const Format f = ParseFormat(format);
  if (f.conversion == '\0') return ZAN_E_INVALIDARG;
  if (IsIntegerConversion(f.conversion) && f.lengthLongs == 2) return Print(*this, f.text, value);
  if (IsUnsignedConversion(f.conversion) && f.lengthLongs == 2)
    return Print(*this, f.text, static_cast<unsigned long long>(value));
  if (IsRealConversion(f.conversion) && f.lengthLongs == 0) return Print(*this, f.text, static_cast<double>(value));
  return ZAN_E_INVALIDARG;
}

HRESULT ZANUnicodeString::BuildFromNum(unsigned long long value, const char* format) {
  const Format f = ParseFormat(format);
  if (f.conversion == '\0') return ZAN_E_INVALIDARG;
  if ((IsUnsignedConversion(f.conversion) || IsIntegerConversion(f.conversion)) && f.lengthLongs == 2)
    return Print(*this, f.text, value);
  if (IsRealConversion(f.conversion) && f.lengthLongs == 0) return Print(*this, f.text, static_cast<double>(value));
  return ZAN_E_INVALIDARG;
}

HRESULT ZANUnicodeString::BuildFromNum(double value, const char* format) {
  const Format f = ParseFormat(format);
  if (IsRealConversion(f.conversion) && f.lengthLongs == 0) return Print(*this, f.text, value);
  return ZAN_E_INVALIDARG;
}

ZANUnicodeString& ZANUnicodeString::Append(const ZANUnicodeString& other) {
  const std::size_t size = GetLengthInByte();
  const std::size_t added = other.GetLengthInByte();
  if (IsLong()) {
    Long().append(other.View());  // other may be this string: append reads it first
  } else if (size + added <= kInlineCapacity) {
    std::memmove(storage_ + size, other.View().data(), added);
    tag_ = static_cast<unsigned char>(size + added);
    storage_[tag_] = 0;
  } else {
    std::string joined;
    joined.reserve(size + added);
    joined.append(View()).append(other.View());
    Assign(std::move(joined));
  }
  return *this;
}

ZANUnicodeString operator+(const ZANUnicodeString& a, const ZANUnicodeString& b) {
  std::string joined;
  joined.reserve(a.GetLengthInByte() + b.GetLengthInByte());
  joined.append(a.View()).append(b.View());
  return ZANUnicodeString::FromValidUTF8(std::move(joined));
}

ZANUnicodeString operator+(const ZANUnicodeString& a, const char* b) { return a + ZANUnicodeString(b); }

ZANUnicodeString operator+(const char* a, const ZANUnicodeString& b) { return ZANUnicodeString(a) + b; }
