#include <KOVAMappingServices/KOVAKSSVersioning.h>

#include <string>

#include "stamps/StampPrefix.h"

// NOLINTBEGIN(performance-unnecessary-value-param): the exported signatures take these by value
ZANUnicodeString KOVAKSSVersioning::ComputeKSSWithVersion(ZANUnicodeString stamp, std::int32_t version) {
  ZANUnicodeString number;
  number.BuildFromNum(static_cast<int>(version), "%d");
  std::string text;
  text.reserve(2 + number.GetLengthInByte() + stamp.GetLengthInByte());
  text.push_back('V');
  text.append(number.View());
  text.push_back(':');
  text.append(stamp.View());
  return ZANUnicodeString::FromValidUTF8(std::move(text));
}

ZANUnicodeString KOVAKSSVersioning::AddFromCESPrefix(ZANUnicodeString stamp) {
  return ZANUnicodeString("V0KSS:") + stamp;
}

bool KOVAKSSVersioning::HasFromCESPrefix(ZANUnicodeString stamp) {
  return kova::stamps::HasCEDerivedPrefix(stamp.View());
}

std::int32_t KOVAKSSVersioning::GetKSSVersion(ZANUnicodeString stamp) {
  return kova::stamps::VersionOfStamp(stamp.View());
}
// NOLINTEND(performance-unnecessary-value-param)

ZANUnicodeString KOVAKSSVersioning::GetKSSFromKSSWithVersion(ZANUnicodeString stamp) {
  const std::string_view text = stamp.View();
  const std::string_view bare = kova::stamps::StampWithoutPrefix(text);
  if (bare.size() == text.size()) return stamp;
  return ZANUnicodeString::FromValidUTF8(std::string_view(bare));
}
