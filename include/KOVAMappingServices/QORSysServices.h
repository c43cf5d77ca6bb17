// Digest and base64 services of the platform.
//
// Buffers handed back are allocated with malloc; the caller releases them with free. A failing
// call returns a negative status and leaves its outputs untouched. The services keep no state
// shared between threads (the digest context is per thread): they may be called from several
// threads at once.
#ifndef KOVAMAPPINGSERVICES_QORSYSSERVICES_H_
#define KOVAMAPPINGSERVICES_QORSYSSERVICES_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>

#include <cstdint>

// Digest of length bytes at data with the algorithm selector (0 = SHA-256). On success *digest
// is a new buffer of *digestLength bytes. Any other selector, a negative length or a null pointer
// gives a negative status and leaves the outputs untouched.
KOVA_EXPORT HRESULT QORSysHash_Digest(int selector, const char* data, std::int32_t length, unsigned char** digest,
                                      std::int32_t* digestLength);

class KOVA_EXPORT QORSysConverter {
 public:
  // Base64 (RFC 4648 alphabet, "=" padding, no line breaks) of length bytes; text becomes a new
  // NUL-terminated buffer.
  static HRESULT ConvertToBase64(const unsigned char* bytes, std::uint64_t length, char*& text);
  // Decodes base64 text (same alphabet, padding required, no blanks). bytes becomes a new buffer of
  // length bytes. A character outside the alphabet, a length that is not a multiple of four or
  // misplaced padding gives ZAN_E_INVALIDDATA and leaves the outputs untouched.
  static HRESULT ConvertFromBase64(const char* text, unsigned char*& bytes, std::uint64_t& length);
  // The same for a text of textLength bytes, which need not be NUL-terminated.
  static HRESULT ConvertFromBase64(const char* text, std::uint64_t textLength, unsigned char*& bytes,
                                   std::uint64_t& length);
};

#endif  // KOVAMAPPINGSERVICES_QORSYSSERVICES_H_
