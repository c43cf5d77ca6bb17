#include <KOVAMappingServices/KOVAKSSVersioning.h>

#include <string>

#include "stamps/StampPrefix.h"

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
  const std::string_view text = stamp.View();
  if (kova::stamps::HasVersionPrefix(text)) {
    // Only the digit right after "V" is read; the three characters that GetKSSFromKSSWithVersion
    // drops match this single-digit reading.
    return text[1] - '0';
  }
  if (kova::stamps::HasCEDerivedPrefix(text)) return 0;
  return -1;
}

ZANUnicodeString KOVAKSSVersioning::GetKSSFromKSSWithVersion(ZANUnicodeString stamp) {
  const std::string_view text = stamp.View();
  // The prefixes are ASCII, so what follows them is still valid UTF-8.
  if (kova::stamps::HasVersionPrefix(text)) return ZANUnicodeString::FromValidUTF8(std::string(text.substr(3)));
  if (kova::stamps::HasCEDerivedPrefix(text)) return ZANUnicodeString::FromValidUTF8(std::string(text.substr(6)));
  return stamp;
}
