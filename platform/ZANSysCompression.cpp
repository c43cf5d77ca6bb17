#include <KOVAMappingServices/ZANSysCompression.h>

#include <libdeflate.h>
#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

namespace {

// zlib's default level, which zlib's compress uses.
constexpr int kCompressionLevel = 6;

constexpr std::uint64_t kLargestSize = std::numeric_limits<std::size_t>::max();

// libdeflate takes size_t lengths: a 64-bit length must fit before it is handed over.
constexpr bool FitsInSize(std::uint64_t length) noexcept {
  if constexpr (kLargestSize >= std::numeric_limits<std::uint64_t>::max()) {
    return true;
  } else {
    return length <= kLargestSize;
  }
}

// A capacity larger than the address space cannot be used in full anyway.
constexpr std::size_t UsableCapacity(std::uint64_t capacity) noexcept {
  return FitsInSize(capacity) ? static_cast<std::size_t>(capacity) : static_cast<std::size_t>(kLargestSize);
}

struct CompressorDeleter {
  void operator()(libdeflate_compressor* compressor) const noexcept { libdeflate_free_compressor(compressor); }
};

struct DecompressorDeleter {
  void operator()(libdeflate_decompressor* decompressor) const noexcept { libdeflate_free_decompressor(decompressor); }
};

// libdeflate's compressor and decompressor must not be used by two threads at once, and they are
// costly to set up: each thread makes its own at its first call and keeps it until it ends. A
// failed allocation is tried again at the next call.
libdeflate_compressor* ThreadCompressor() noexcept {
  thread_local std::unique_ptr<libdeflate_compressor, CompressorDeleter> compressor;
  if (!compressor) compressor.reset(libdeflate_alloc_compressor(kCompressionLevel));
  return compressor.get();
}

libdeflate_decompressor* ThreadDecompressor() noexcept {
  thread_local std::unique_ptr<libdeflate_decompressor, DecompressorDeleter> decompressor;
  if (!decompressor) decompressor.reset(libdeflate_alloc_decompressor());
  return decompressor.get();
}

bool ValidArguments(const unsigned char* source, std::uint64_t sourceLength, const unsigned char* destination,
                    std::uint64_t capacity) noexcept {
  if (source == nullptr && sourceLength != 0) return false;
  if (destination == nullptr && capacity != 0) return false;
  return FitsInSize(sourceLength);
}

}  // namespace

std::uint64_t ZANSysCompressBound(std::uint64_t sourceLength) {
  // Half the address space is far beyond any buffer that can exist; the bound's own arithmetic
  // stays clear of wrapping below it.
  if (!FitsInSize(sourceLength) || sourceLength > kLargestSize / 2) return std::numeric_limits<std::uint64_t>::max();
  // A null compressor gives a bound valid for every level, ours included.
  return libdeflate_zlib_compress_bound(nullptr, static_cast<std::size_t>(sourceLength));
}

HRESULT ZANSysCompress(const unsigned char* source, std::uint64_t sourceLength, unsigned char* destination,
                       std::uint64_t& destinationLength) {
  const std::uint64_t capacity = destinationLength;
  destinationLength = 0;
  if (!ValidArguments(source, sourceLength, destination, capacity)) return ZAN_E_INVALIDARG;
  libdeflate_compressor* compressor = ThreadCompressor();
  if (compressor == nullptr) return ZANZ_E_OUTOFMEMORY;
  // libdeflate is given real addresses even for empty buffers.
  const unsigned char emptySource = 0;
  unsigned char emptyDestination = 0;
  const std::size_t written = libdeflate_zlib_compress(
      compressor, source != nullptr ? source : &emptySource, static_cast<std::size_t>(sourceLength),
      destination != nullptr ? destination : &emptyDestination, UsableCapacity(capacity));
  // libdeflate reports a target too small for the whole stream as 0 bytes written.
  if (written == 0) return ZANZ_E_INSUFFICIENTBUFFER;
  destinationLength = written;
  return S_OK;
}

HRESULT ZANSysUncompress(const unsigned char* source, std::uint64_t sourceLength, unsigned char* destination,
                         std::uint64_t& destinationLength) {
  const std::uint64_t capacity = destinationLength;
  destinationLength = 0;
  if (!ValidArguments(source, sourceLength, destination, capacity)) return ZAN_E_INVALIDARG;
  libdeflate_decompressor* decompressor = ThreadDecompressor();
  if (decompressor == nullptr) return ZANZ_E_OUTOFMEMORY;
  const unsigned char emptySource = 0;
  unsigned char emptyDestination = 0;
  const unsigned char* const input = source != nullptr ? source : &emptySource;
  unsigned char* const output = destination != nullptr ? destination : &emptyDestination;
  std::size_t produced = 0;
  // The statuses are those of zlib's uncompress. libdeflate opens the stream first: it is about
  // two and a half times as fast as zlib and, like uncompress, accepts output shorter than the
  // capacity and ignores bytes after the end of the stream. When it refuses the stream, uncompress
  // runs on the same input and capacity and its result is returned, because the two name failures
  // differently: uncompress calls a stream cut short bad data unless the output has filled the
  // capacity, calls damage bad data when it is met before the capacity runs out, and with a capacity
  // of 0 opens a one-byte text (producing nothing) and calls any longer one bad data. Only failures
  // pay for the second pass, and it needs no buffer of its own: uncompress writes into the
  // destination, whose content is not to be used after a failure.
  //
  // libdeflate also opens a few malformed streams that uncompress refuses, each needing a checksum
  // computed for it on purpose: a dynamic block declaring more than 286 literal/length or 30
  // distance codes, the reserved length symbols 286-287 or distance symbols 30-31, a code-length
  // repeat running past the declared count, a one-symbol code read through its unused bit pattern
  // or used as the code-length code, a match in a block without distance codes. No compressor
  // writes them; telling them apart would cost a zlib decompression of every stream that opens.
  const libdeflate_result result = libdeflate_zlib_decompress(
      decompressor, input, static_cast<std::size_t>(sourceLength), output, UsableCapacity(capacity), &produced);
  if (result == LIBDEFLATE_SUCCESS) {
    destinationLength = produced;
    return S_OK;
  }
  static_assert(std::numeric_limits<uLong>::max() >= kLargestSize,
                "zlib's lengths hold every length that libdeflate takes");
  uLong length = static_cast<uLong>(UsableCapacity(capacity));
  switch (uncompress(output, &length, input, static_cast<uLong>(sourceLength))) {
    case Z_OK: destinationLength = length; return S_OK;
    case Z_MEM_ERROR: return ZANZ_E_OUTOFMEMORY;
    case Z_BUF_ERROR: return ZANZ_E_INSUFFICIENTBUFFER;
    case Z_DATA_ERROR:
    default: return ZANZ_E_BADDATA;
  }
}
