#include <KOVAMappingServices/QORSysServices.h>

#include <openssl/evp.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

// OpenSSL's block encoder takes int lengths; larger inputs go through in chunks that keep the
// base64 grouping (3 bytes in, 4 characters out).
constexpr std::uint64_t kEncodeChunk = std::uint64_t{3} * 256 * 1024 * 1024;  // bytes

bool InAlphabet(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

// The 6-bit value of each base64 character; kNotInAlphabet for every other byte, '=' included.
constexpr unsigned char kNotInAlphabet = 0xFF;
constexpr std::array<unsigned char, 256> kSextets = [] {
  std::array<unsigned char, 256> table{};
  table.fill(kNotInAlphabet);
  const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (unsigned char value = 0; value < 64; ++value) table[static_cast<unsigned char>(alphabet[value])] = value;
  return table;
}();

// Strict decoding in one pass: every character in the alphabet except one or two '=' closing the
// text, the form the separate check accepted. The bits of the last sextet beyond the last byte are
// ignored, as OpenSSL's block decoder ignores them. out receives textLength / 4 * 3 - padding
// bytes; false (out partly written) for anything else.
bool DecodeStrict(const unsigned char* text, std::uint64_t textLength, unsigned char* out,
                  std::uint64_t& padding) noexcept {
  padding = 0;
  if (textLength == 0) return true;
  const std::uint64_t last = textLength - 4;  // the last group may hold the padding
  for (std::uint64_t i = 0; i < last; i += 4) {
    const unsigned a = kSextets[text[i]], b = kSextets[text[i + 1]], c = kSextets[text[i + 2]],
                   d = kSextets[text[i + 3]];
    if (((a | b | c | d) & 0x80u) != 0) return false;
    const unsigned group = (a << 18) | (b << 12) | (c << 6) | d;
    out[0] = static_cast<unsigned char>(group >> 16);
    out[1] = static_cast<unsigned char>(group >> 8);
    out[2] = static_cast<unsigned char>(group);
    out += 3;
  }
  const unsigned char* tail = text + last;
  const unsigned a = kSextets[tail[0]], b = kSextets[tail[1]];
  if (((a | b) & 0x80u) != 0) return false;
  unsigned c = kSextets[tail[2]], d = kSextets[tail[3]];
  if (tail[2] == '=') {
    if (tail[3] != '=') return false;
    padding = 2;
    c = d = 0;
  } else if (tail[3] == '=') {
    if ((c & 0x80u) != 0) return false;
    padding = 1;
    d = 0;
  } else if (((c | d) & 0x80u) != 0) {
    return false;
  }
  const unsigned group = (a << 18) | (b << 12) | (c << 6) | d;
  out[0] = static_cast<unsigned char>(group >> 16);
  if (padding < 2) out[1] = static_cast<unsigned char>(group >> 8);
  if (padding < 1) out[2] = static_cast<unsigned char>(group);
  return true;
}

// The separate check, for when there is no memory to decode into: it tells invalid text (reported
// before anything else) from a lack of memory.
bool IsStrictBase64(const char* text, std::uint64_t textLength) noexcept {
  std::uint64_t padding = 0;
  for (std::uint64_t i = 0; i < textLength; ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '=') {
      if (i + 2 < textLength) return false;  // only in the last two places
      ++padding;
    } else if (padding != 0 || !InAlphabet(c)) {
      return false;  // a character after padding, or outside the alphabet
    }
  }
  return true;
}

}  // namespace

HRESULT QORSysConverter::ConvertToBase64(const unsigned char* bytes, std::uint64_t length, char*& text) {
  if (bytes == nullptr && length > 0) return ZAN_E_INVALIDARG;
  const std::uint64_t groups = length / 3 + (length % 3 != 0);
  if (groups > (SIZE_MAX - 1) / 4) return ZANZ_E_OUTOFMEMORY;
  const std::uint64_t size = groups * 4;
  auto* out = static_cast<char*>(std::malloc(size + 1));
  if (out == nullptr) return ZANZ_E_OUTOFMEMORY;
  std::uint64_t written = 0;
  for (std::uint64_t done = 0; done < length;) {
    const std::uint64_t n = length - done < kEncodeChunk ? length - done : kEncodeChunk;
    written += static_cast<std::uint64_t>(
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out + written), bytes + done, static_cast<int>(n)));
    done += n;
  }
  out[written] = '\0';
  text = out;
  return S_OK;
}

HRESULT QORSysConverter::ConvertFromBase64(const char* text, unsigned char*& bytes, std::uint64_t& length) {
  if (text == nullptr) return ZAN_E_INVALIDARG;
  return ConvertFromBase64(text, std::strlen(text), bytes, length);
}

HRESULT QORSysConverter::ConvertFromBase64(const char* text, std::uint64_t textLength, unsigned char*& bytes,
                                           std::uint64_t& length) {
  if (text == nullptr && textLength > 0) return ZAN_E_INVALIDARG;
  if (textLength % 4 != 0) return ZAN_E_INVALIDDATA;
  // Room for the bytes of the text without padding (at most two less), checked while decoding.
  const std::uint64_t most = textLength / 4 * 3;
  auto* out = static_cast<unsigned char*>(std::malloc(most == 0 ? 1 : most + 3));
  if (out == nullptr) return IsStrictBase64(text, textLength) ? ZANZ_E_OUTOFMEMORY : ZAN_E_INVALIDDATA;
  std::uint64_t padding = 0;
  if (!DecodeStrict(reinterpret_cast<const unsigned char*>(text), textLength, out, padding)) {
    std::free(out);
    return ZAN_E_INVALIDDATA;
  }
  const std::uint64_t size = most - padding;
  bytes = out;
  length = size;
  return S_OK;
}
