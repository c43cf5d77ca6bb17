// UTF-8 helpers shared by the platform layer (internal).
#ifndef KOVA_PLATFORM_UTF8_H_
#define KOVA_PLATFORM_UTF8_H_

#include <cstddef>
#include <string>
#include <string_view>

namespace kova::utf8 {

// True when bytes are well-formed UTF-8 (no overlongs, no surrogates, nothing above U+10FFFF).
bool IsValid(std::string_view bytes) noexcept;

// Copy of bytes in which every ill-formed sequence is replaced by U+FFFD, following the
// "maximal subpart" practice of the Unicode standard (as browsers and ICU do).
std::string Sanitize(std::string_view bytes);

// Number of code points of valid UTF-8.
std::size_t CountCodePoints(std::string_view validUtf8) noexcept;

// Byte offset of the code point at position index of valid UTF-8 (clipped to the size).
std::size_t OffsetOfCodePoint(std::string_view validUtf8, std::size_t index) noexcept;

}  // namespace kova::utf8

#endif  // KOVA_PLATFORM_UTF8_H_
