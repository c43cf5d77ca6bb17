#include <KOVAMappingServices/QORSysServices.h>

#include <openssl/evp.h>

#include <cstdlib>

namespace {

// The SHA-256 implementation is fetched once for the whole process (fetching costs more than
// digesting a stamp text).
const EVP_MD* Sha256() {
  static const EVP_MD* const md = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  return md;
}

}  // namespace

HRESULT QORSysHash_Digest(int selector, const char* data, std::int32_t length, unsigned char** digest,
                          std::int32_t* digestLength) {
  if (selector != 0 || length < 0 || digest == nullptr || digestLength == nullptr ||
      (data == nullptr && length > 0)) {
    return ZAN_E_INVALIDARG;
  }
  const EVP_MD* md = Sha256();
  if (md == nullptr) return E_FAIL;
  unsigned char value[EVP_MAX_MD_SIZE];
  unsigned int size = 0;
  static const char kEmpty = '\0';
  if (EVP_Digest(data == nullptr ? &kEmpty : data, static_cast<size_t>(length), value, &size, md, nullptr) != 1) {
    return E_FAIL;
  }
  auto* out = static_cast<unsigned char*>(std::malloc(size));
  if (out == nullptr) return ZANZ_E_OUTOFMEMORY;
  for (unsigned int i = 0; i < size; ++i) out[i] = value[i];
  *digest = out;
  *digestLength = static_cast<std::int32_t>(size);
  return S_OK;
}
