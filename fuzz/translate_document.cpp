// TranslateToMappingTable on arbitrary text: any status, never a crash. The only exceptions that
// may come out are the decimal conversion failures of an envelope's size field. The status, table
// and version are those of the plain reader (tests/support/PlainReader), which reads through the
// JSON object model's getters. A table read with success writes out and reads back to the same
// content, unless its stamps are of the kinds that do not survive the trip (see
// ReadsBackUnchanged).
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingPrivateTable.h>
#include <KOVAMappingServices/KOVAMappingTable.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "fuzz/FuzzSupport.h"
#include "serialisation/EnvelopePrefix.h"
#include "tests/support/PlainReader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ZANBaseUnknown owner(std::make_shared<ZANComponent>());
  KOVAMappingTable table;
  HRESULT status = E_FAIL;
  try {
    status = KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(reinterpret_cast<const char*>(data), size),
                                                        owner, table);
  } catch (const std::out_of_range&) {
    return 0;
  } catch (const std::invalid_argument&) {
    return 0;
  }
  {
    KOVAMappingTable plain;
    const HRESULT expected =
        kova::test::plain::Read(ZANUnicodeString(reinterpret_cast<const char*>(data), size), owner, plain);
    kova::fuzz::Check(status == expected, "the status differs from the plain reader's");
    kova::fuzz::Check(
        KOVAPrivateAccess::GetPrivate(table)->GetVersion() == KOVAPrivateAccess::GetPrivate(plain)->GetVersion(),
        "the version differs from the plain reader's");
    kova::fuzz::Check(kova::fuzz::DescribeContent(table) == kova::fuzz::DescribeContent(plain),
                      "the table differs from the plain reader's");
  }
  if (status == S_OK && kova::fuzz::ReadsBackUnchanged(table)) {
    const ZANUnicodeString written = KOVAMappingParser::TranslateToString(table);
    // A written stamp such as V1: followed by digits and ":" makes the written text look like an
    // envelope to the reader, which then opens (or refuses) it: such texts do not read back.
    if (kova::FindEnvelopePrefix(written.View())) return 0;
    KOVAMappingTable again;
    kova::fuzz::Check(KOVAMappingParser::TranslateToMappingTable(written, owner, again) == S_OK,
                      "a table read from a document does not read back after writing");
    kova::fuzz::Check(kova::fuzz::DescribeContent(table) == kova::fuzz::DescribeContent(again),
                      "a table read back after writing differs");
  }
  return 0;
}
