#include <KOVAMappingServices/QORSysServices.h>

#include <openssl/evp.h>

#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

// OpenSSL's block coders take int lengths; larger inputs go through in chunks that keep the
// base64 grouping (3 bytes in, 4 characters out).
constexpr std::uint64_t kEncodeChunk = 3u * 256u * 1024u * 1024u;  // bytes
constexpr std::uint64_t kDecodeChunk = 4u * 256u * 1024u * 1024u;  // characters

bool InAlphabet(unsigned char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
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
    written += static_cast<std::uint64_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out + written),
                                                          bytes + done, static_cast<int>(n)));
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
  // Strict check first: OpenSSL's block decoder tolerates blanks and misplaced padding.
  std::uint64_t padding = 0;
  for (std::uint64_t i = 0; i < textLength; ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '=') {
      if (i + 2 < textLength) return ZAN_E_INVALIDDATA;  // only in the last two places
      ++padding;
    } else if (padding != 0 || !InAlphabet(c)) {
      return ZAN_E_INVALIDDATA;  // a character after padding, or outside the alphabet
    }
  }
  const std::uint64_t size = textLength / 4 * 3 - padding;
  auto* out = static_cast<unsigned char*>(std::malloc(size == 0 ? 1 : size + 3));
  if (out == nullptr) return ZANZ_E_OUTOFMEMORY;
  std::uint64_t written = 0;
  for (std::uint64_t done = 0; done < textLength;) {
    const std::uint64_t n = textLength - done < kDecodeChunk ? textLength - done : kDecodeChunk;
    const int got = EVP_DecodeBlock(out + written, reinterpret_cast<const unsigned char*>(text + done),
                                    static_cast<int>(n));
    if (got < 0) {
      std::free(out);
      return ZAN_E_INVALIDDATA;
    }
    written += static_cast<std::uint64_t>(got);
    done += n;
  }
  bytes = out;
  length = size;
  return S_OK;
}
