// zlib itself as the reference that the compression service's answers are compared with (tests and
// fuzz targets; they link zlib).
#ifndef KOVA_TESTS_SUPPORT_ZLIBREFERENCE_H_
#define KOVA_TESTS_SUPPORT_ZLIBREFERENCE_H_

#include <KOVAMappingServices/ZANStatus.h>

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kova::test {

// The bytes of a text, as zlib and the compression service take them.
inline const Bytef* AsBytes(std::string_view bytes) { return reinterpret_cast<const Bytef*>(bytes.data()); }

// What zlib's uncompress gives for stream into capacity bytes.
struct ZlibOutcome {
  int result;
  std::string bytes;  // the text produced, on success only
};

inline ZlibOutcome ZlibUncompress(std::string_view stream, std::size_t capacity) {
  std::vector<Bytef> target(std::max<std::size_t>(capacity, 1));
  uLongf length = static_cast<uLongf>(capacity);
  const int result = uncompress(target.data(), &length, AsBytes(stream), static_cast<uLong>(stream.size()));
  ZlibOutcome outcome{result, {}};
  if (result == Z_OK) outcome.bytes.assign(reinterpret_cast<const char*>(target.data()), length);
  return outcome;
}

// data compressed by zlib's compress2 at level; empty when zlib fails.
inline std::string ZlibCompress(std::string_view data, int level) {
  uLongf length = compressBound(static_cast<uLong>(data.size()));
  std::string out(length, '\0');
  if (compress2(reinterpret_cast<Bytef*>(out.data()), &length, AsBytes(data), static_cast<uLong>(data.size()), level) !=
      Z_OK) {
    return {};
  }
  out.resize(length);
  return out;
}

// The status that stands for each result of zlib's uncompress (E_FAIL for a result uncompress does
// not give, which no answer of the service matches).
inline HRESULT StatusOfZlib(int result) {
  switch (result) {
    case Z_OK: return S_OK;
    case Z_MEM_ERROR: return ZANZ_E_OUTOFMEMORY;
    case Z_BUF_ERROR: return ZANZ_E_INSUFFICIENTBUFFER;
    case Z_DATA_ERROR: return ZANZ_E_BADDATA;
    default: return E_FAIL;
  }
}

}  // namespace kova::test

#endif  // KOVA_TESTS_SUPPORT_ZLIBREFERENCE_H_
