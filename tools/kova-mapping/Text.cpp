#include "Text.h"

#include <cstdint>

namespace kova::tool {

std::optional<std::size_t> FindInvalidUtf8(std::string_view text) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  const std::size_t size = text.size();
  std::size_t i = 0;
  while (i < size) {
    const unsigned char lead = bytes[i];
    if (lead < 0x80) {
      ++i;
      continue;
    }
    std::size_t length = 0;
    // The accepted range of the second byte narrows for E0, ED, F0 and F4 (no overlong forms, no
    // surrogates, nothing above U+10FFFF).
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
      length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      length = 3;
      if (lead == 0xE0) low = 0xA0;
      if (lead == 0xED) high = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      length = 4;
      if (lead == 0xF0) low = 0x90;
      if (lead == 0xF4) high = 0x8F;
    } else {
      return i;
    }
    if (i + length > size) return i;
    if (bytes[i + 1] < low || bytes[i + 1] > high) return i;
    for (std::size_t k = 2; k < length; ++k) {
      if (bytes[i + k] < 0x80 || bytes[i + k] > 0xBF) return i;
    }
    i += length;
  }
  return std::nullopt;
}

void AppendJsonEscaped(std::string& out, std::string_view text) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '"': out.append("\\\""); break;
      case '\\': out.append("\\\\"); break;
      case '\b': out.append("\\b"); break;
      case '\t': out.append("\\t"); break;
      case '\n': out.append("\\n"); break;
      case '\f': out.append("\\f"); break;
      case '\r': out.append("\\r"); break;
      default:
        if (byte < 0x20) {
          out.append("\\u00");
          out.push_back(kHex[byte >> 4]);
          out.push_back(kHex[byte & 0xF]);
        } else {
          out.push_back(c);
        }
    }
  }
}

std::string JsonQuoted(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 2);
  out.push_back('"');
  AppendJsonEscaped(out, text);
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
