// The diagnostic lines: whether they are emitted, and the host's per-thread callback.
//
// An installed callback is a KOVALogCapture with a sink that calls it, kept in a thread-local
// slot: the capture belongs to the thread that installs it, as captures must, and is destroyed
// with the slot when the thread ends.
#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Boundary.h"

using kova::capi::Failure;
using kova::capi::RefusedArgument;
using kova::capi::Run;

namespace {

// Callbacks running on this thread: while one runs, its capture must stay alive.
thread_local int tCallbacksRunning = 0;

class CallbackSink final : public KOVALogSink {
 public:
  CallbackSink(kova_log_callback callback, void* user) : callback_(callback), user_(user) {}

  void Receive(std::string_view context, std::string_view message, bool /*reason*/) override {
    // The host reads NUL-terminated texts; the views are not.
    const std::string contextText(context);
    const std::string messageText(message);
    struct Running {
      Running() { ++tCallbacksRunning; }
      ~Running() { --tCallbacksRunning; }
    } running;
    callback_(contextText.c_str(), messageText.c_str(), user_);
  }

 private:
  kova_log_callback callback_;
  void* user_;
};

struct InstalledCallback {
  InstalledCallback(kova_log_callback callback, void* user) : sink(callback, user) {}
  CallbackSink sink;
  // Made once the previous callback's capture is gone; destroyed before the sink.
  std::optional<KOVALogCapture> capture;
};

thread_local std::unique_ptr<InstalledCallback> tInstalled;

}  // namespace

extern "C" {

int kova_log_is_active(void) {
  try {
    return KOVALogger::IsActive() ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

int32_t kova_log_set_callback(kova_log_callback callback, void* user, int wants) {
  return Run("kova_log_set_callback", [&](Failure& failure) -> int32_t {
    KOVALogCapture::Wants kind = KOVALogCapture::Wants::kReasons;
    if (wants == KOVA_LOG_EVERYTHING) {
      kind = KOVALogCapture::Wants::kEverything;
    } else if (wants != KOVA_LOG_REASONS) {
      throw RefusedArgument("wants is " + std::to_string(wants) + ", not KOVA_LOG_REASONS or KOVA_LOG_EVERYTHING");
    }
    if (tCallbacksRunning > 0) {
      // The running callback's capture cannot be destroyed under it.
      failure.Explain("cannot be called from inside a log callback; nothing was changed");
      return KOVA_E_FAIL;
    }
    // The new slot is allocated first, so running out of memory keeps the installed callback.
    std::unique_ptr<InstalledCallback> fresh;
    if (callback != nullptr) fresh = std::make_unique<InstalledCallback>(callback, user);
    tInstalled.reset();
    if (fresh != nullptr) {
      fresh->capture.emplace(fresh->sink, kind);
      tInstalled = std::move(fresh);
    }
    return KOVA_S_OK;
  });
}

}  // extern "C"
