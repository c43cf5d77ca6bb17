// Text helpers of the tool: UTF-8 validation and the ways values are shown on one line.
#ifndef KOVA_TOOLS_KOVA_MAPPING_TEXT_H_
#define KOVA_TOOLS_KOVA_MAPPING_TEXT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kova::tool {

// The byte offset of the first byte that does not belong to a well-formed UTF-8 sequence
// (overlong forms, surrogates and code points above U+10FFFF are ill-formed), or nothing when the
// whole text is valid UTF-8. The library's ZANUnicodeString decides what is well-formed.
std::optional<std::size_t> FindInvalidUtf8(std::string_view text);

// text as a quoted JSON string literal, escaped exactly as the library's JSON writer escapes:
// quote, backslash and the characters below U+0020 (\b \t \n \f \r, the others as \u00XX with
// upper-case digits).
std::string JsonQuoted(std::string_view text);

// A value on a one-line listing: the text itself when it is not empty and holds no blank, quote,
// backslash or control character; otherwise its quoted JSON string literal, so that every value
// can be read back without ambiguity.
std::string ShowValue(std::string_view text);

// text with each control character (below U+0020, and U+007F) written as \u00XX, so that it stays
// on one line; everything else is kept as it is.
std::string OneLine(std::string_view text);

// The pieces of text between the separators (an empty text gives one empty piece).
std::vector<std::string> Split(std::string_view text, char separator);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_TEXT_H_
