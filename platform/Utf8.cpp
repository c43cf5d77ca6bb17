#include "platform/Utf8.h"

#include <simdjson.h>

namespace kova::utf8 {

bool IsValid(std::string_view bytes) noexcept { return simdjson::validate_utf8(bytes.data(), bytes.size()); }

namespace {

// Length of the well-formed prefix of a sequence starting at s[i] (0 when s[i] itself cannot
// start one), and whether the whole sequence is complete.
struct Step {
  std::size_t length;  // bytes consumed: the full sequence, or the maximal subpart to replace
  bool valid;
};

Step Decode(std::string_view s, std::size_t i) noexcept {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned char b0 = byte(i);
  if (b0 < 0x80) return {1, true};
  std::size_t need;
  unsigned char lo = 0x80, hi = 0xBF;  // accepted range of the second byte
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    need = 1;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    need = 2;
    if (b0 == 0xE0) lo = 0xA0;
    if (b0 == 0xED) hi = 0x9F;
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    need = 3;
    if (b0 == 0xF0) lo = 0x90;
    if (b0 == 0xF4) hi = 0x8F;
  } else {
    return {1, false};
  }
  std::size_t k = 1;
  for (; k <= need; ++k) {
    if (i + k >= s.size()) return {k, false};
    const unsigned char b = byte(i + k);
    const unsigned char l = k == 1 ? lo : 0x80;
    const unsigned char h = k == 1 ? hi : 0xBF;
    if (b < l || b > h) return {k, false};
  }
  return {need + 1, true};
}

}  // namespace

std::string Sanitize(std::string_view bytes) {
  if (IsValid(bytes)) return std::string(bytes);
  static constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  std::string out;
  out.reserve(bytes.size() + 8);
  std::size_t i = 0;
  while (i < bytes.size()) {
    const Step step = Decode(bytes, i);
    if (step.valid) {
      out.append(bytes.substr(i, step.length));
    } else {
      out.append(kReplacement);
    }
    i += step.length;
  }
  return out;
}

std::size_t CountCodePoints(std::string_view s) noexcept {
  std::size_t count = 0;
  for (const char c : s) count += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  return count;
}

std::size_t OffsetOfCodePoint(std::string_view s, std::size_t index) noexcept {
  std::size_t offset = 0;
  while (offset < s.size() && index > 0) {
    ++offset;
    while (offset < s.size() && (static_cast<unsigned char>(s[offset]) & 0xC0) == 0x80) ++offset;
    --index;
  }
  return offset;
}

}  // namespace kova::utf8
