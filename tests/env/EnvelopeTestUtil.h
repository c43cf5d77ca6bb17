// Test-side helpers for the compression service and the envelope: an independent base64 coder,
// Adler-32, hand-made zlib streams (stored blocks), envelope pieces and memory figures of the
// process. Nothing here calls the library.
#ifndef KOVA_TESTS_ENV_ENVELOPETESTUTIL_H_
#define KOVA_TESTS_ENV_ENVELOPETESTUTIL_H_

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

namespace kova::test {

inline constexpr std::string_view kBase64Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// RFC 4648 base64 with "=" padding.
inline std::string Base64Encode(std::string_view bytes) {
  std::string out;
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    const std::uint32_t n = (std::uint32_t{static_cast<unsigned char>(bytes[i])} << 16) |
                            (std::uint32_t{static_cast<unsigned char>(bytes[i + 1])} << 8) |
                            std::uint32_t{static_cast<unsigned char>(bytes[i + 2])};
    for (int shift = 18; shift >= 0; shift -= 6) out.push_back(kBase64Alphabet[(n >> shift) & 63u]);
  }
  const std::size_t rest = bytes.size() - i;
  if (rest != 0) {
    std::uint32_t n = std::uint32_t{static_cast<unsigned char>(bytes[i])} << 16;
    if (rest == 2) n |= std::uint32_t{static_cast<unsigned char>(bytes[i + 1])} << 8;
    out.push_back(kBase64Alphabet[(n >> 18) & 63u]);
    out.push_back(kBase64Alphabet[(n >> 12) & 63u]);
    out.push_back(rest == 2 ? kBase64Alphabet[(n >> 6) & 63u] : '=');
    out.push_back('=');
  }
  return out;
}

// Strict RFC 4648 decoding (padding required, no blanks); nothing for anything else.
inline std::optional<std::string> Base64Decode(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::string out;
  for (std::size_t i = 0; i < text.size(); i += 4) {
    std::uint32_t n = 0;
    int padding = 0;
    for (std::size_t j = 0; j < 4; ++j) {
      const char c = text[i + j];
      std::uint32_t value = 0;
      if (c == '=') {
        if (i + 4 != text.size() || j < 2) return std::nullopt;
        ++padding;
      } else {
        if (padding != 0) return std::nullopt;
        const std::size_t at = kBase64Alphabet.find(c);
        if (at == std::string_view::npos) return std::nullopt;
        value = static_cast<std::uint32_t>(at);
      }
      n = (n << 6) | value;
    }
    out.push_back(static_cast<char>((n >> 16) & 0xFFu));
    if (padding < 2) out.push_back(static_cast<char>((n >> 8) & 0xFFu));
    if (padding < 1) out.push_back(static_cast<char>(n & 0xFFu));
  }
  return out;
}

// Adler-32 as RFC 1950 defines it.
inline std::uint32_t Adler32(std::string_view bytes) {
  std::uint32_t a = 1;
  std::uint32_t b = 0;
  for (const char c : bytes) {
    a = (a + static_cast<unsigned char>(c)) % 65521u;
    b = (b + a) % 65521u;
  }
  return (b << 16) | a;
}

// A zlib stream (RFC 1950) holding data in stored DEFLATE blocks (RFC 1951), built by hand.
inline std::string StoredZlibStream(std::string_view data) {
  std::string out("\x78\x01", 2);  // deflate, 32 KB window; 0x7801 is a multiple of 31
  std::size_t at = 0;
  do {
    const std::size_t n = data.size() - at < 65535 ? data.size() - at : 65535;
    const bool last = at + n == data.size();
    out.push_back(last ? '\x01' : '\x00');
    out.push_back(static_cast<char>(n & 0xFFu));
    out.push_back(static_cast<char>((n >> 8) & 0xFFu));
    out.push_back(static_cast<char>(~n & 0xFFu));
    out.push_back(static_cast<char>((~n >> 8) & 0xFFu));
    out.append(data.substr(at, n));
    at += n;
  } while (at < data.size());
  const std::uint32_t adler = Adler32(data);
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<char>((adler >> shift) & 0xFFu));
  return out;
}

inline std::string Bytes(std::initializer_list<unsigned> values) {
  std::string out;
  for (const unsigned v : values) out.push_back(static_cast<char>(v));
  return out;
}

// "V" + version + ":" + size + ":" + base64 of stream.
inline std::string MakeEnvelope(std::string_view version, std::string_view size, std::string_view stream) {
  return "V" + std::string(version) + ":" + std::string(size) + ":" + Base64Encode(stream);
}

// The payload of an envelope that starts the text ("V...:...:" then the payload).
inline std::string PayloadOf(const std::string& envelope) {
  const std::size_t first = envelope.find(':');
  const std::size_t second = envelope.find(':', first + 1);
  return envelope.substr(second + 1);
}

// text (valid UTF-8) without its first count code points, each as long as its lead byte says:
// 0xxxxxxx one byte, 110xxxxx two, 1110xxxx three, 11110xxx four.
inline std::string DropCodePoints(const std::string& text, std::size_t count) {
  std::size_t at = 0;
  for (std::size_t seen = 0; at < text.size() && seen < count; ++seen) {
    const auto lead = static_cast<unsigned char>(text[at]);
    at += lead < 0x80u ? 1 : lead < 0xE0u ? 2 : lead < 0xF0u ? 3 : 4;
  }
  return at < text.size() ? text.substr(at) : std::string();
}

// Log output as the library writes it: one "[PrdKOVALog]" line per message.
inline std::string LogLines(std::initializer_list<std::string> messages) {
  std::string out;
  for (const std::string& m : messages) out += "[PrdKOVALog]" + m + "\n";
  return out;
}

// The label as the size lines show it: from position size onwards, nothing beyond its end.
inline std::string AdvancedLabel(std::string_view label, std::size_t size) {
  return size <= label.size() ? std::string(label.substr(size)) : std::string();
}

// Random text of length bytes drawn from alphabet.
inline std::string RandomText(std::size_t length, std::string_view alphabet, std::uint32_t seed) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
  std::string out(length, '\0');
  for (char& c : out) c = alphabet[pick(rng)];
  return out;
}

// Random bytes.
inline std::string RandomBytes(std::size_t length, std::uint32_t seed) {
  std::mt19937 rng(seed);
  std::string out(length, '\0');
  for (char& c : out) c = static_cast<char>(rng() & 0xFFu);
  return out;
}

// A field of /proc/self/status in bytes ("VmHWM", "VmRSS", "VmSize"); 0 when absent.
inline std::uint64_t ProcStatusBytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind(field + ":", 0) == 0) {
      std::istringstream in(line.substr(field.size() + 1));
      std::uint64_t kilobytes = 0;
      in >> kilobytes;
      return kilobytes * 1024u;
    }
  }
  return 0;
}

}  // namespace kova::test

#endif  // KOVA_TESTS_ENV_ENVELOPETESTUTIL_H_
