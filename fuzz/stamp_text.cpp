// The stamp-text functions of KOVAKSSVersioning, and GetKSSFromCES, on arbitrary text and
// versions, with the relations between them checked.
#include <KOVAMappingServices/KOVAKSSVersioning.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>

#include <string>

#include "fuzz/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kova::fuzz::Reader reader(data, size);
  const std::int32_t version = reader.Int32();
  const ZANUnicodeString stamp(reader.Rest());

  const std::int32_t read = KOVAKSSVersioning::GetKSSVersion(stamp);
  kova::fuzz::Check(read >= -1 && read <= 9, "GetKSSVersion out of -1..9");
  const ZANUnicodeString bare = KOVAKSSVersioning::GetKSSFromKSSWithVersion(stamp);
  if (read == -1) kova::fuzz::Check(bare == stamp, "a text without a prefix was changed");
  const bool fromCE = KOVAKSSVersioning::HasFromCESPrefix(stamp);
  if (fromCE) kova::fuzz::Check(read == 0, "a CE-derived text does not carry version 0");

  const ZANUnicodeString prefixed = KOVAKSSVersioning::AddFromCESPrefix(stamp);
  kova::fuzz::Check(KOVAKSSVersioning::HasFromCESPrefix(prefixed), "AddFromCESPrefix gives no CE prefix");
  kova::fuzz::Check(KOVAKSSVersioning::GetKSSVersion(prefixed) == 0, "a CE-derived text is not version 0");

  const ZANUnicodeString versioned = KOVAKSSVersioning::ComputeKSSWithVersion(stamp, version);
  kova::fuzz::Check(versioned.ConvertToChar() == "V" + std::to_string(version) + ":" + stamp.ConvertToChar(),
                    "ComputeKSSWithVersion text");
  if (version >= 0 && version <= 9) {
    kova::fuzz::Check(KOVAKSSVersioning::GetKSSVersion(versioned) == version, "one-digit version not read back");
    kova::fuzz::Check(KOVAKSSVersioning::GetKSSFromKSSWithVersion(versioned) == stamp, "stamp not read back");
  }

  ZANUnicodeString derived = "untouched";
  const HRESULT status = KOVASynchroStampServices::GetKSSFromCES(stamp, derived);
  if (status == S_OK) {
    kova::fuzz::Check(KOVAKSSVersioning::HasFromCESPrefix(derived), "GetKSSFromCES gives no CE prefix");
    kova::fuzz::Check(derived.GetLengthInByte() == 6 + 44, "GetKSSFromCES is not a prefixed SHA-256 digest");
  } else {
    kova::fuzz::Check(derived == ZANUnicodeString("untouched"), "a failed GetKSSFromCES changed its output");
  }
  return 0;
}
