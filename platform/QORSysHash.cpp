#include <KOVAMappingServices/QORSysServices.h>

#include <openssl/evp.h>

#include <cstdlib>
#include <memory>

#include "platform/StampDigest.h"

static_assert(kova::kStampDigestCapacity >= EVP_MAX_MD_SIZE, "room for any digest");

namespace {

// The SHA-256 implementation is fetched once for the whole process (fetching costs more than
// digesting a stamp text).
const EVP_MD* Sha256() {
  static const EVP_MD* const md = EVP_MD_fetch(nullptr, "SHA256", nullptr);
  return md;
}

struct ContextDeleter {
  void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
};

// One digest context per thread, set up again for each digest: a context must not be used by two
// threads at once, and allocating one for each stamp costs about as much as digesting its text.
EVP_MD_CTX* ThreadContext() noexcept {
  thread_local std::unique_ptr<EVP_MD_CTX, ContextDeleter> context;
  if (!context) context.reset(EVP_MD_CTX_new());
  return context.get();
}

}  // namespace

namespace kova {

HRESULT StampDigest(const char* data, std::int32_t length, unsigned char (&digest)[kStampDigestCapacity],
                    std::int32_t& digestLength) {
  if (length < 0 || (data == nullptr && length > 0)) return ZAN_E_INVALIDARG;
  const EVP_MD* md = Sha256();
  if (md == nullptr) return E_FAIL;
  EVP_MD_CTX* context = ThreadContext();
  if (context == nullptr) return E_FAIL;
  static const char kEmpty = '\0';
  unsigned int size = 0;
  if (EVP_DigestInit_ex2(context, md, nullptr) != 1 ||
      EVP_DigestUpdate(context, data == nullptr ? &kEmpty : data, static_cast<size_t>(length)) != 1 ||
      EVP_DigestFinal_ex(context, digest, &size) != 1) {
    return E_FAIL;
  }
  digestLength = static_cast<std::int32_t>(size);
  return S_OK;
}

}  // namespace kova

HRESULT QORSysHash_Digest(int selector, const char* data, std::int32_t length, unsigned char** digest,
                          std::int32_t* digestLength) {
  if (selector != 0 || length < 0 || digest == nullptr || digestLength == nullptr || (data == nullptr && length > 0)) {
    return ZAN_E_INVALIDARG;
  }
  unsigned char value[kova::kStampDigestCapacity];
  std::int32_t size = 0;
  const HRESULT status = kova::StampDigest(data, length, value, size);
  if (ZANFailed(status)) return status;
  auto* out = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(size)));
  if (out == nullptr) return ZANZ_E_OUTOFMEMORY;
  for (std::int32_t i = 0; i < size; ++i) out[i] = value[i];
  *digest = out;
  *digestLength = size;
  return S_OK;
}
