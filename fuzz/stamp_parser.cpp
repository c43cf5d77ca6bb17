// GetStampParser and GetStampV11 on arbitrary JSON objects: the input is loaded as a document and
// every object found in it (the root, the members of its arrays and objects) is given to them.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/ZANOmxJson.h>

#include <string>
#include <vector>

#include "fuzz/FuzzSupport.h"

namespace {

void Parse(const ZANOmxJsonObject& object) {
  ZANUnicodeString stamp = "untouched";
  const std::int32_t version = KOVAKSSVersioning::GetStampParser(object, stamp);
  kova::fuzz::Check(version >= -1 && version <= 9, "GetStampParser version out of -1..9");
  if (version == -1) kova::fuzz::Check(stamp == ZANUnicodeString("untouched"), "no stamp, yet stamp changed");
  const ZANUnicodeString v11 = KOVAKSSVersioning::GetStampV11(object);
  const ZANUnicodeString expected =
      KOVAKSSVersioning::ComputeKSSWithVersion(version == -1 ? ZANUnicodeString() : stamp, version);
  kova::fuzz::Check(v11 == expected, "GetStampV11 differs from the versioned GetStampParser result");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ZANOmxJsonObject root;
  if (ZANFailed(root.LoadFromString(reinterpret_cast<const char*>(data), size))) return 0;
  Parse(root);
  // One level down: members that are objects, and the objects of members that are arrays.
  std::vector<ZANUnicodeString> keys;
  root.GetKeys(keys);
  for (const ZANUnicodeString& key : keys) {
    ZANOmxJsonObject member;
    if (ZANSucceeded(root.GetJsonObject(ZANOmxKeyString(key), member))) Parse(member);
    ZANOmxJsonArray array;
    if (ZANSucceeded(root.GetJsonArray(ZANOmxKeyString(key), array))) {
      const int length = array.Length();
      for (int i = 1; i <= length && i <= 64; ++i) {
        ZANOmxJsonObject element;
        if (ZANSucceeded(array.GetJsonObject(i, element))) Parse(element);
      }
    }
  }
  return 0;
}
