// Compression service of the platform, shaped like zlib's compressBound, compress and uncompress:
// a zlib stream at the default level (6).
#ifndef KOVAMAPPINGSERVICES_ZANSYSCOMPRESSION_H_
#define KOVAMAPPINGSERVICES_ZANSYSCOMPRESSION_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>

#include <cstdint>

// Upper bound of the compressed size of sourceLength bytes.
KOVA_EXPORT std::uint64_t ZANSysCompressBound(std::uint64_t sourceLength);
// Compresses source into destination; destinationLength holds the capacity on entry and the
// compressed length on return. ZANZ_E_INSUFFICIENTBUFFER when the capacity is too small.
KOVA_EXPORT HRESULT ZANSysCompress(const unsigned char* source, std::uint64_t sourceLength,
                                   unsigned char* destination, std::uint64_t& destinationLength);
// Decompresses a zlib stream into destination of capacity destinationLength; on return
// destinationLength is the length produced. ZANZ_E_INSUFFICIENTBUFFER when the capacity is too
// small, ZANZ_E_BADDATA for input that is not a complete zlib stream, ZANZ_E_OUTOFMEMORY when
// memory runs out.
KOVA_EXPORT HRESULT ZANSysUncompress(const unsigned char* source, std::uint64_t sourceLength,
                                     unsigned char* destination, std::uint64_t& destinationLength);

#endif  // KOVAMAPPINGSERVICES_ZANSYSCOMPRESSION_H_
