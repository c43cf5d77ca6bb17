// The stamp of one mapping document object, from its "KOVASynchroStamp", "CEStamp" and "IsSetKSS"
// fields, whatever holds the object: KOVAKSSVersioning::GetStampParser reads them through a
// ZANOmxJsonObject, the document reader straight from the parsed document.
#ifndef KOVA_STAMPS_STAMPPARSER_H_
#define KOVA_STAMPS_STAMPPARSER_H_

#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANUnicodeString.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "stamps/StampPrefix.h"

namespace kova::stamps {

// The bare digest of the CE stamp: GetKSSFromCES of the "CEStamp" text (empty when absent), its
// status ignored, without its "V0KSS:" prefix. Only needed when a stamp must be compared with it,
// so it is computed on demand: the result is the same as computing it up front.
inline ZANUnicodeString BareCEDigest(const ZANUnicodeString& ceStamp) {
  ZANUnicodeString derived;
  KOVASynchroStampServices::GetKSSFromCES(ceStamp, derived);
  return KOVAKSSVersioning::GetKSSFromKSSWithVersion(derived);
}

// readString(key, value) and readBoolean(key, value) behave as ZANOmxJsonObject's GetString and
// GetBoolean on the object (keys are "CEStamp", "KOVASynchroStamp" and "IsSetKSS").
template <typename ReadString, typename ReadBoolean>
std::int32_t ParseStamp(ReadString&& readString, ReadBoolean&& readBoolean, ZANUnicodeString& stamp) {
  ZANUnicodeString ceStamp;
  ZANUnicodeString kss;
  // A field counts when it reads as a string and is not empty; a value of another type is absent.
  const bool hasCE = readString("CEStamp", ceStamp) >= 0 && !ceStamp.IsEmpty();
  const bool hasKSS = readString("KOVASynchroStamp", kss) >= 0 && !kss.IsEmpty();
  if (!hasCE && !hasKSS) return -1;
  if (!hasKSS) {
    stamp = KOVAKSSVersioning::GetKSSFromKSSWithVersion(BareCEDigest(ceStamp));
    return 0;
  }
  // "KOVASynchroStamp" wins over "CEStamp"; the CE stamp only serves the comparison below.
  const std::int32_t version = VersionOfStamp(kss.View());
  const std::string_view bare = StampWithoutPrefix(kss.View());
  if (bare.size() == kss.GetLengthInByte()) {
    stamp = std::move(kss);
  } else {
    stamp = ZANUnicodeString::FromValidUTF8(std::string_view(bare));
  }
  if (version >= 0) return version;
  if (stamp == BareCEDigest(ceStamp)) return 0;
  bool isSet = false;
  readBoolean("IsSetKSS", isSet);
  return isSet ? 2 : 1;
}

}  // namespace kova::stamps

#endif  // KOVA_STAMPS_STAMPPARSER_H_
