// Compression service of the platform, shaped like zlib's compressBound, compress and uncompress:
// a zlib stream at the default level (6). What it writes opens with zlib's uncompress, and it
// opens any complete zlib stream, whatever level, window size or strategy made it.
//
// Each thread keeps its own compression state: the calls may be made from several threads at once.
#ifndef KOVAMAPPINGSERVICES_ZANSYSCOMPRESSION_H_
#define KOVAMAPPINGSERVICES_ZANSYSCOMPRESSION_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>

#include <cstdint>

// Upper bound of the compressed size of sourceLength bytes. A length too large for any buffer of
// this machine gives the largest 64-bit number, which no allocation can satisfy.
KOVA_EXPORT std::uint64_t ZANSysCompressBound(std::uint64_t sourceLength);

// Compresses source into destination; destinationLength holds the capacity on entry and the
// compressed length on return. ZANZ_E_INSUFFICIENTBUFFER when the capacity is too small,
// ZANZ_E_OUTOFMEMORY when the compression state cannot be allocated, ZAN_E_INVALIDARG for a null
// pointer with a non-zero length or a source length beyond the machine's addressable size. On any
// failure destinationLength is 0 and destination holds nothing usable.
KOVA_EXPORT HRESULT ZANSysCompress(const unsigned char* source, std::uint64_t sourceLength, unsigned char* destination,
                                   std::uint64_t& destinationLength);

// Decompresses a zlib stream into destination of capacity destinationLength; on return
// destinationLength is the length produced, which may be less than the capacity. Bytes after the
// end of the stream are ignored. Failures are named as zlib's uncompress names them into a buffer
// of that capacity: ZANZ_E_INSUFFICIENTBUFFER (Z_BUF_ERROR) when the output fills the capacity
// before the stream ends, ZANZ_E_BADDATA (Z_DATA_ERROR) for damaged data or input that ends early
// while there is still room, ZANZ_E_OUTOFMEMORY (Z_MEM_ERROR) when memory runs out;
// ZAN_E_INVALIDARG for a null pointer with a non-zero length or a source length beyond the
// machine's addressable size. On any failure destinationLength is 0 and what destination holds is
// not to be used.
KOVA_EXPORT HRESULT ZANSysUncompress(const unsigned char* source, std::uint64_t sourceLength,
                                     unsigned char* destination, std::uint64_t& destinationLength);

#endif  // KOVAMAPPINGSERVICES_ZANSYSCOMPRESSION_H_
