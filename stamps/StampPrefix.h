// Recognition of the stamp version prefixes in the narrow (UTF-8) form of a stamp text.
//
// These matchers answer exactly what a search with the ECMAScript expressions "^V\d+:" and
// "^V0KSS:" answers (\d is [0-9]; "^" anchors at the start of the text), without compiling an
// expression for every stamp of a document.
#ifndef KOVA_STAMPS_STAMPPREFIX_H_
#define KOVA_STAMPS_STAMPPREFIX_H_

#include <string_view>

namespace kova::stamps {

// "^V\d+:": a "V", one or more ASCII digits, then ":" at the very start.
inline bool HasVersionPrefix(std::string_view text) noexcept {
  if (text.size() < 3 || text[0] != 'V') return false;
  std::size_t i = 1;
  while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
  return i > 1 && i < text.size() && text[i] == ':';
}

// "^V0KSS:".
inline bool HasCEDerivedPrefix(std::string_view text) noexcept { return text.substr(0, 6) == "V0KSS:"; }

// The version a stamp text carries: the digit right after "V" of a "^V\d+:" prefix (V12:abc
// carries 1), 0 for "^V0KSS:", -1 for no prefix.
inline int VersionOfStamp(std::string_view text) noexcept {
  if (HasVersionPrefix(text)) return text[1] - '0';
  if (HasCEDerivedPrefix(text)) return 0;
  return -1;
}

// The stamp text without its prefix: three characters dropped after "^V\d+:" (matching the
// single-digit reading above), six after "^V0KSS:", nothing otherwise. The prefixes are ASCII, so
// what follows them is still valid UTF-8.
inline std::string_view StampWithoutPrefix(std::string_view text) noexcept {
  if (HasVersionPrefix(text)) return text.substr(3);
  if (HasCEDerivedPrefix(text)) return text.substr(6);
  return text;
}

}  // namespace kova::stamps

#endif  // KOVA_STAMPS_STAMPPREFIX_H_
