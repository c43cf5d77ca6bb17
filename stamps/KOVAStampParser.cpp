// The stamp of one mapping document object, read from "KOVASynchroStamp", "CEStamp" and "IsSetKSS".
#include <KOVAMappingServices/KOVAKSSVersioning.h>

#include "stamps/StampParser.h"

std::int32_t KOVAKSSVersioning::GetStampParser(const ZANOmxJsonObject& object, ZANUnicodeString& stamp) {
  return kova::stamps::ParseStamp(
      [&object](const char* key, ZANUnicodeString& value) { return object.GetString(key, value); },
      [&object](const char* key, bool& value) { return object.GetBoolean(key, value); }, stamp);
}

ZANUnicodeString KOVAKSSVersioning::GetStampV11(const ZANOmxJsonObject& object) {
  ZANUnicodeString stamp;
  const std::int32_t version = GetStampParser(object, stamp);
  return ComputeKSSWithVersion(stamp, version);
}
