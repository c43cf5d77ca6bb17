#include "StampComputation.h"

#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVASynchroStampServices.h>
#include <KOVAMappingServices/ZANKnwBuilder.h>

#include <cstdlib>
#include <memory>

#include "Status.h"

namespace kova::tool {

namespace {

// The context of the stamp service's lines; its last line is the stamp text.
constexpr std::string_view kStampContext = "KOVASynchroStampServices";

// The platform type of the object that carries the attributes when names are given: a reference
// type, for which stamps are computed (instance types are refused by the stamp service).
constexpr const char* kObjectType = "GRDReference";

}  // namespace

bool StampComputationEnabled() { return std::getenv("DONOTUSE_ENABLEKSSGEN") != nullptr; }

std::string StampComputation::ErrorText() const {
  return "error " + FormatStatus(status) + ": " +
         (status == E_FAIL ? std::string("refused by the stamp service") : StatusMeaning(status));
}

StampComputation ComputeStamp(const AttributeMap& attributes, const std::list<ZANUnicodeString>* names, bool wantText) {
  StampComputation result;
  // The stamp service shows its stamp text in a line of its own, the last it emits before
  // digesting it; without the text no line is built.
  std::unique_ptr<KOVALogCapture> capture;
  if (wantText) capture = std::make_unique<KOVALogCapture>(KOVALogCapture::Wants::kEverything);
  if (names != nullptr) {
    const ZANBaseUnknown_var object = ZANKnwBuilder::MakeObject(ZANKnwBuilder::FindType(kObjectType), attributes);
    result.status = KOVASynchroStampServices::ComputeKOVASynchroStamp(object, *names, result.stamp);
  } else {
    result.status = KOVASynchroStampServices::ComputeKOVASynchroStamp(attributes, result.stamp);
  }
  if (capture) {
    for (const KOVALogLine& line : capture->Lines()) {
      if (line.context == kStampContext) result.text = line.message;
    }
  }
  return result;
}

}  // namespace kova::tool
