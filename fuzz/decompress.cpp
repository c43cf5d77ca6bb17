// TryDecompressMT on arbitrary text. Declared sizes up to 2147483647 are allocated as they are
// (the run's malloc limit is set above that), so a lying prefix costs address space only. The
// status of an envelope that is opened must be the one zlib's uncompress gives for its payload and
// declared size, and an envelope that opens must hold the text uncompress produces. The payload is
// also opened by the decompression service into exactly as many bytes as uncompress produced from
// it, and one fewer, where a stream cut short or damaged near its end is named by where it stops.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/QORSysServices.h>
#include <KOVAMappingServices/ZANSysCompression.h>

#include <zlib.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include "fuzz/FuzzSupport.h"
#include "serialisation/EnvelopePrefix.h"
#include "tests/support/ZlibReference.h"

namespace {

using kova::test::StatusOfZlib;

struct FreeDeleter {
  void operator()(unsigned char* bytes) const noexcept { std::free(bytes); }
};

// The service against uncompress for stream into capacity bytes: the same status, and on success the
// same bytes.
void CheckServiceAgainstZlib(const unsigned char* stream, std::uint64_t streamLength, std::uint64_t capacity) {
  const auto expected = std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(capacity) + 1);
  const auto produced = std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(capacity) + 1);
  uLongf expectedLength = static_cast<uLongf>(capacity);
  const int result = uncompress(expected.get(), &expectedLength, stream, static_cast<uLong>(streamLength));
  std::uint64_t length = capacity;
  const HRESULT status = ZANSysUncompress(stream, streamLength, produced.get(), length);
  kova::fuzz::Check(status == StatusOfZlib(result), "the service's status is not the one of zlib's uncompress");
  if (result == Z_OK) {
    kova::fuzz::Check(length == expectedLength && std::memcmp(produced.get(), expected.get(), length) == 0,
                      "the service does not produce what zlib's uncompress produces");
  } else {
    kova::fuzz::Check(length == 0, "a failed decompression reports a length");
  }
}

// Checks status and text against zlib's uncompress of the payload at the declared size.
void CheckAgainstZlib(const ZANUnicodeString& input, const kova::EnvelopePrefixMatch& prefix, HRESULT status,
                      const ZANUnicodeString& text) {
  // The declared size is read as the envelope reads it: from position 4 of the prefix (this did not
  // throw, since TryDecompressMT did not).
  const std::string prefixText(input.View().substr(prefix.position, prefix.length));
  const auto declared = static_cast<std::uint64_t>(std::stoi(prefixText.substr(4, prefixText.size() - 5)));
  if (declared == 0) {
    kova::fuzz::Check(status == E_FAIL, "an envelope declaring 0 bytes was opened");
    return;
  }
  // The payload: the text without as many characters as the prefix is long.
  const int removed = static_cast<int>(prefix.length);
  const ZANUnicodeString payload = input.SubString(removed, input.GetLengthInChar() - removed);
  unsigned char* decoded = nullptr;
  std::uint64_t decodedLength = 0;
  const HRESULT conversion = QORSysConverter::ConvertFromBase64(payload.CastToCharPtr(), decoded, decodedLength);
  const std::unique_ptr<unsigned char, FreeDeleter> stream(decoded);
  if (ZANFailed(conversion)) {
    kova::fuzz::Check(status == conversion, "a payload that is not base64 did not give the converter's status");
    return;
  }
  const auto target = std::make_unique_for_overwrite<unsigned char[]>(static_cast<std::size_t>(declared));
  uLongf length = static_cast<uLongf>(declared);
  const int result = uncompress(target.get(), &length, stream.get(), static_cast<uLong>(decodedLength));
  kova::fuzz::Check(status == StatusOfZlib(result), "the decompression status is not the one of zlib's uncompress");
  if (result == Z_OK) {
    kova::fuzz::Check(text == ZANUnicodeString(reinterpret_cast<const char*>(target.get()), length),
                      "an opened envelope does not hold the text zlib's uncompress produces");
  }
  // uncompress reports what it produced before it stopped, success or not. Texts beyond 64 MB are
  // left out: two more buffers of their size would pass the run's memory limit.
  if (length > (64u << 20)) return;
  if (length < declared) CheckServiceAgainstZlib(stream.get(), decodedLength, length);
  if (length > 0) CheckServiceAgainstZlib(stream.get(), decodedLength, length - 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ZANUnicodeString input(reinterpret_cast<const char*>(data), size);
  ZANUnicodeString text = input;
  HRESULT status = S_OK;
  try {
    status = KOVAMappingParser::TryDecompressMT(text);
  } catch (const std::out_of_range&) {
    kova::fuzz::Check(text == input, "a size out of range changed the text");
    return 0;
  } catch (const std::invalid_argument&) {
    kova::fuzz::Check(text == input, "a size without digits changed the text");
    return 0;
  }
  const auto prefix = kova::FindEnvelopePrefix(input.View());
  if (!prefix) {
    kova::fuzz::Check(status == E_FAIL && text == input, "a text without an envelope was changed or accepted");
    return 0;
  }
  if (status < 0) {
    // Whatever the failure, the first characters of the text are gone, as many as the prefix is long
    // (characters, not bytes: the prefix may come after non-ASCII text).
    const int removed = static_cast<int>(prefix->length);
    kova::fuzz::Check(text == input.SubString(removed, input.GetLengthInChar() - removed),
                      "a failed envelope did not leave the text after its prefix");
  }
  CheckAgainstZlib(input, *prefix, status, text);
  return 0;
}
