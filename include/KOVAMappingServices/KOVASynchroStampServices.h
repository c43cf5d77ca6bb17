// KOVASynchroStampServices: synchro stamps derived from CE stamps (and, with the knowledge
// engine, computed from attribute values).
#ifndef KOVAMAPPINGSERVICES_KOVASYNCHROSTAMPSERVICES_H_
#define KOVAMAPPINGSERVICES_KOVASYNCHROSTAMPSERVICES_H_

#include <KOVAMappingServices/KOVAExport.h>
#include <KOVAMappingServices/ZANStatus.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

class KOVA_EXPORT KOVASynchroStampServices {
 public:
  KOVASynchroStampServices() = default;
  ~KOVASynchroStampServices() = default;
  KOVASynchroStampServices(const KOVASynchroStampServices&) = default;
  KOVASynchroStampServices& operator=(const KOVASynchroStampServices&) = default;

  // out = "V0KSS:" + base64 of the SHA-256 digest of "cestamp" + ceStamp. The digest covers as
  // many leading UTF-8 bytes as the text has characters. A failing digest or base64 status is
  // returned as it is, out untouched.
  static HRESULT GetKSSFromCES(ZANUnicodeString ceStamp, ZANUnicodeString& out);

 private:
  static HRESULT GetKSSFromCESParseOnly(ZANUnicodeString ceStamp, ZANUnicodeString& out);
};

#endif  // KOVAMAPPINGSERVICES_KOVASYNCHROSTAMPSERVICES_H_
