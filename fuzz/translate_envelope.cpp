// TranslateToMappingTable on enveloped documents: the input is packed into a genuine envelope
// (CompressMTWithPrefix) and read back, so the fuzzer explores the documents held by envelopes;
// the first byte may replace the declared size, to test envelopes that lie about it.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/KOVAMappingTable.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "fuzz/FuzzSupport.h"
#include "serialisation/EnvelopePrefix.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  kova::fuzz::Reader reader(data, size);
  const std::uint8_t mode = reader.Byte();
  const std::string document = reader.Rest();

  ZANUnicodeString envelope;
  if (KOVAMappingParser::CompressMTWithPrefix(ZANUnicodeString(document), envelope) != S_OK) return 0;
  std::string text = envelope.ConvertToChar();
  kova::fuzz::Check(text.rfind("V12:", 0) == 0, "the envelope does not start with V12:");
  // Sizes that lie: declared smaller than the text, or zero, or a few bytes off. Far larger sizes
  // are left to the hostile-input tests, which bound the memory they use.
  const std::size_t sizeEnd = text.find(':', 4);
  const std::string declared = text.substr(4, sizeEnd - 4);
  std::string replacement = declared;
  if (mode % 4 == 1) replacement = std::to_string(mode / 4);
  if (mode % 4 == 2) replacement = std::to_string(document.size() + mode / 4);
  text = text.substr(0, 4) + replacement + text.substr(sizeEnd);

  const ZANBaseUnknown owner(std::make_shared<ZANComponent>());
  KOVAMappingTable table;
  HRESULT status = E_FAIL;
  try {
    status = KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(text), owner, table);
  } catch (const std::out_of_range&) {
    return 0;
  } catch (const std::invalid_argument&) {
    return 0;
  }

  // With the size it was written with, the envelope reads exactly as the plain document does
  // (when the document itself holds no envelope prefix, which would be opened a second time, and is
  // not empty: a declared size of 0 means no envelope).
  if (replacement == declared && !document.empty() && !kova::FindEnvelopePrefix(ZANUnicodeString(document).View())) {
    KOVAMappingTable plain;
    const HRESULT plainStatus = KOVAMappingParser::TranslateToMappingTable(ZANUnicodeString(document), owner, plain);
    kova::fuzz::Check(status == plainStatus, "an envelope does not read as its document");
    kova::fuzz::Check(kova::fuzz::DescribeContent(table) == kova::fuzz::DescribeContent(plain),
                      "an envelope does not give the table of its document");
  }
  return 0;
}
