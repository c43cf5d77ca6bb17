// The compressed envelope: "V<version>:<size>:" and the base64 of the zlib stream.
#include <KOVAMappingServices/KOVAMappingParser.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <utility>

#include "Boundary.h"
#include "Text.h"

using kova::capi::CallReasons;
using kova::capi::Failure;
using kova::capi::Required;
using kova::capi::Run;
using kova::capi::TextIn;
using kova::capi::TextOut;

extern "C" {

int32_t kova_envelope_pack(const char* text, size_t length, char** out, size_t* out_length) {
  return Run("kova_envelope_pack", [&](Failure& failure) -> int32_t {
    Required(out, "out");
    const ZANUnicodeString plain = TextIn(text, length, "text");
    CallReasons reasons;
    ZANUnicodeString envelope;
    const HRESULT status = KOVAMappingParser::CompressMTWithPrefix(plain, envelope);
    if (ZANFailed(status)) {
      failure.Reasons(reasons.Reasons());
      failure.Explain("the text could not be compressed");
      return status;
    }
    TextOut(envelope.View(), out, out_length);
    return status;
  });
}

int32_t kova_envelope_unpack(const char* text, size_t length, char** out, size_t* out_length) {
  return Run("kova_envelope_unpack", [&](Failure& failure) -> int32_t {
    Required(out, "out");
    ZANUnicodeString opened = TextIn(text, length, "text");
    CallReasons reasons;
    const HRESULT status = KOVAMappingParser::TryDecompressMT(opened);
    if (ZANFailed(status)) {
      failure.Reasons(reasons.Reasons());
      failure.Explain(status == KOVA_E_FAIL ? "the text holds no envelope prefix \"V<n>:<size>:\""
                                            : "the envelope does not open");
      return status;
    }
    TextOut(opened.View(), out, out_length);
    return status;
  });
}

}  // extern "C"
