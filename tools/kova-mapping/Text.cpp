#include "Text.h"

#include <KOVAGenerator/DocumentText.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <algorithm>

namespace kova::tool {

std::optional<std::size_t> FindInvalidUtf8(std::string_view text) {
  // ZANUnicodeString keeps valid UTF-8 as it is and puts U+FFFD (EF BF BD) in place of each
  // ill-formed sequence. The first byte where the two differ lies in the first replacement
  // character, whose start in the checked text is the offset of the first bad byte in text (the
  // bytes before it are the same in both).
  const ZANUnicodeString checked(text);
  const std::string_view valid = checked.View();
  if (valid == text) return std::nullopt;
  std::size_t offset = static_cast<std::size_t>(
      std::mismatch(text.begin(), text.end(), valid.begin(), valid.end()).second - valid.begin());
  while (offset > 0 && (static_cast<unsigned char>(valid[offset]) & 0xC0) == 0x80) --offset;
  return offset;
}

std::string JsonQuoted(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 2);
  out.push_back('"');
  generator::AppendJsonEscaped(out, text);
  out.push_back('"');
  return out;
}

std::string ShowValue(std::string_view text) {
  bool plain = !text.empty();
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte <= 0x20 || byte == 0x7F || c == '"' || c == '\\') {
      plain = false;
      break;
    }
  }
  return plain ? std::string(text) : JsonQuoted(text);
}

std::string OneLine(std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) {
      out.append("\\u00");
      out.push_back(kHex[byte >> 4]);
      out.push_back(kHex[byte & 0xF]);
    } else {
      out.push_back(c);
    }
  }
  return out;
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find(separator, start);
    if (end == std::string_view::npos) {
      pieces.emplace_back(text.substr(start));
      return pieces;
    }
    pieces.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
}

}  // namespace kova::tool
