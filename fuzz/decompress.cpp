// TryDecompressMT on arbitrary text. Declared sizes up to 2147483647 are allocated as they are
// (the run's malloc limit is set above that), so a lying prefix costs address space only.
#include <KOVAMappingServices/KOVAMappingParser.h>

#include <stdexcept>
#include <string>

#include "fuzz/FuzzSupport.h"
#include "serialisation/EnvelopePrefix.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ZANUnicodeString input(reinterpret_cast<const char*>(data), size);
  ZANUnicodeString text = input;
  HRESULT status = S_OK;
  try {
    status = KOVAMappingParser::TryDecompressMT(text);
  } catch (const std::out_of_range&) {
    kova::fuzz::Check(text == input, "a size out of range changed the text");
    return 0;
  } catch (const std::invalid_argument&) {
    kova::fuzz::Check(text == input, "a size without digits changed the text");
    return 0;
  }
  const auto prefix = kova::FindEnvelopePrefix(input.View());
  if (!prefix) {
    kova::fuzz::Check(status == E_FAIL && text == input, "a text without an envelope was changed or accepted");
  } else if (status < 0) {
    // Whatever the failure, the first characters of the text are gone, as many as the prefix is long
    // (characters, not bytes: the prefix may come after non-ASCII text).
    const int removed = static_cast<int>(prefix->length);
    kova::fuzz::Check(text == input.SubString(removed, input.GetLengthInChar() - removed),
                      "a failed envelope did not leave the text after its prefix");
  }
  return 0;
}
