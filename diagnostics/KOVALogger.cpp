#include <KOVAMappingServices/KOVALogger.h>

#include <KOVAMappingServices/ZANEnvironment.h>

#include <iostream>
#include <string>
#include <string_view>

#include "diagnostics/LogLines.h"
#include "diagnostics/ThreadCaptures.h"

namespace {

bool SwitchSet() {
  // Read once, at the first call, under the thread-safe initialisation of a local static.
  static const bool set = ZANGetEnv("ActivateKOVALogger").has_value();
  return set;
}

void WriteLine(std::string_view context, std::string_view message) {
  std::string line;
  line.reserve(12 + context.size() + 2 + message.size() + 1);
  line.append("[PrdKOVALog]");
  if (!context.empty()) {
    line.push_back('[');
    line.append(context);
    line.push_back(']');
  }
  line.append(message);
  line.push_back('\n');
  std::cout.write(line.data(), static_cast<std::streamsize>(line.size()));
  std::cout.flush();
}

// A line a host logs itself is a reason when its context is empty or names a missing key.
kova::diagnostics::LineKind KindOfContext(std::string_view context) {
  return context.empty() || context == "UNVALUATED MANDATORY FIELD" ? kova::diagnostics::LineKind::kReason
                                                                    : kova::diagnostics::LineKind::kDetail;
}

}  // namespace

namespace kova::diagnostics {

bool BulkyLinesWanted() { return SwitchSet() || CaptureWantsEverything(); }

void Emit(LineKind kind, const ZANUnicodeString& message, const ZANUnicodeString& context) {
  if (SwitchSet()) WriteLine(context.View(), message.View());
  if (CapturesActive()) DeliverToCaptures(context.View(), message.View(), kind == LineKind::kReason);
}

}  // namespace kova::diagnostics

bool KOVALogger::IsActive() { return SwitchSet() || kova::diagnostics::CapturesActive(); }

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported signature takes them by value
void KOVALogger::log(ZANUnicodeString message, ZANUnicodeString context) {
  // Prints whenever it is called, as it always has, unless a capture of this thread takes the
  // line and the environment switch is not set.
  const bool capturing = kova::diagnostics::CapturesActive();
  if (!capturing || SwitchSet()) WriteLine(context.View(), message.View());
  if (capturing) {
    kova::diagnostics::DeliverToCaptures(context.View(), message.View(),
                                         KindOfContext(context.View()) == kova::diagnostics::LineKind::kReason);
  }
}
