// The stamp of one mapping document object, read from "KOVASynchroStamp", "CEStamp" and "IsSetKSS".
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>

namespace {

// The bare digest of the CE stamp: GetKSSFromCES of the "CEStamp" text (empty when absent), its
// status ignored, without its "V0KSS:" prefix. Only needed when a stamp must be compared with it,
// so it is computed on demand: the result is the same as computing it up front.
ZANUnicodeString BareCEDigest(const ZANUnicodeString& ceStamp) {
  ZANUnicodeString derived;
  KOVASynchroStampServices::GetKSSFromCES(ceStamp, derived);
  return KOVAKSSVersioning::GetKSSFromKSSWithVersion(derived);
}

}  // namespace

std::int32_t KOVAKSSVersioning::GetStampParser(const ZANOmxJsonObject& object, ZANUnicodeString& stamp) {
  ZANUnicodeString ceStamp;
  ZANUnicodeString kss;
  // A field counts when it reads as a string and is not empty; a value of another type is absent.
  const bool hasCE = object.GetString("CEStamp", ceStamp) >= 0 && !ceStamp.IsEmpty();
  const bool hasKSS = object.GetString("KOVASynchroStamp", kss) >= 0 && !kss.IsEmpty();
  if (!hasCE && !hasKSS) return -1;
  if (!hasKSS) {
    stamp = GetKSSFromKSSWithVersion(BareCEDigest(ceStamp));
    return 0;
  }
  // "KOVASynchroStamp" wins over "CEStamp"; the CE stamp only serves the comparison below.
  stamp = GetKSSFromKSSWithVersion(kss);
  const std::int32_t version = GetKSSVersion(kss);
  if (version >= 0) return version;
  if (stamp == BareCEDigest(ceStamp)) return 0;
  bool isSet = false;
  object.GetBoolean("IsSetKSS", isSet);
  return isSet ? 2 : 1;
}

ZANUnicodeString KOVAKSSVersioning::GetStampV11(const ZANOmxJsonObject& object) {
  ZANUnicodeString stamp;
  const std::int32_t version = GetStampParser(object, stamp);
  return ComputeKSSWithVersion(stamp, version);
}
