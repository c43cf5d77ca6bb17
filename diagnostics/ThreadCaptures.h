// The captures alive on the calling thread (internal to the library; KOVALogCapture.cpp).
#ifndef KOVA_DIAGNOSTICS_THREADCAPTURES_H_
#define KOVA_DIAGNOSTICS_THREADCAPTURES_H_

#include <string_view>

namespace kova::diagnostics {

// Whether at least one capture is alive on this thread.
bool CapturesActive() noexcept;
// Whether a capture alive on this thread wants every line.
bool CaptureWantsEverything() noexcept;
// Passes a line to the captures of this thread that want it, innermost first, skipping a capture
// whose sink is running (a line emitted by a call that sink made).
void DeliverToCaptures(std::string_view context, std::string_view message, bool reason);

}  // namespace kova::diagnostics

#endif  // KOVA_DIAGNOSTICS_THREADCAPTURES_H_
