#include <KOVAMappingServices/KOVASynchroStampServices.h>

#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/QORSysServices.h>

#include <cstdlib>
#include <utility>

HRESULT KOVASynchroStampServices::GetKSSFromCES(ZANUnicodeString ceStamp, ZANUnicodeString& out) {
  return GetKSSFromCESParseOnly(std::move(ceStamp), out);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes it by value
HRESULT KOVASynchroStampServices::GetKSSFromCESParseOnly(ZANUnicodeString ceStamp, ZANUnicodeString& out) {
  const ZANUnicodeString text = ZANUnicodeString("cestamp") + ceStamp;
  // The digest covers as many leading bytes as the text has characters: stamps already stored by
  // hosts were made that way.
  unsigned char* digest = nullptr;
  std::int32_t digestLength = 0;
  HRESULT status = QORSysHash_Digest(0, text.CastToCharPtr(), text.GetLengthInChar(), &digest, &digestLength);
  if (status < 0) return status;
  char* base64 = nullptr;
  status = QORSysConverter::ConvertToBase64(digest, static_cast<std::uint64_t>(digestLength), base64);
  std::free(digest);
  if (status < 0) return status;
  out = KOVAKSSVersioning::AddFromCESPrefix(ZANUnicodeString::FromValidUTF8(base64));
  std::free(base64);
  return S_OK;
}
