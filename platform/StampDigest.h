// The SHA-256 digest of a stamp text into a caller's buffer: what QORSysHash_Digest computes for
// selector 0, without the allocation of its result.
#ifndef KOVA_PLATFORM_STAMPDIGEST_H_
#define KOVA_PLATFORM_STAMPDIGEST_H_

#include <KOVAMappingServices/ZANStatus.h>

#include <cstddef>
#include <cstdint>

namespace kova {

// Room for any digest OpenSSL computes (EVP_MAX_MD_SIZE).
inline constexpr std::size_t kStampDigestCapacity = 64;

// Digest of the first length bytes of data (data may be null when length is 0). Statuses as
// QORSysHash_Digest's: ZAN_E_INVALIDARG for a negative length or a null data with a length,
// E_FAIL when the digest cannot be computed.
HRESULT StampDigest(const char* data, std::int32_t length, unsigned char (&digest)[kStampDigestCapacity],
                    std::int32_t& digestLength);

}  // namespace kova

#endif  // KOVA_PLATFORM_STAMPDIGEST_H_
