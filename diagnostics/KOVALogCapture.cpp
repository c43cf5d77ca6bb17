// Per-thread captures of the diagnostic lines.
//
// Each thread keeps a singly linked list of its live captures, innermost first, and the number of
// them that want every line, in one trivially constructed thread-local: no lock, no allocation,
// nothing shared between threads. Captures normally end in the reverse order of their start, so
// the list is popped at its head; one that ends out of order is unlinked where it stands.
#include <KOVAMappingServices/KOVALogCapture.h>

#include "diagnostics/ThreadCaptures.h"

namespace {

struct ThreadCaptures {
  KOVALogCapture* innermost = nullptr;
  int everything = 0;
};

constinit thread_local ThreadCaptures tCaptures{};

}  // namespace

// The delivery loop reads the captures' links and flags.
struct KOVALogCaptureAccess {
  static KOVALogCapture*& Outer(KOVALogCapture& capture) { return capture.outer_; }
  static void Deliver(std::string_view context, std::string_view message, bool reason) {
    for (KOVALogCapture* capture = tCaptures.innermost; capture != nullptr; capture = capture->outer_) {
      if (capture->delivering_) continue;
      if (reason || capture->wants_ == KOVALogCapture::Wants::kEverything) {
        capture->Receive(context, message, reason);
      }
    }
  }
};

namespace kova::diagnostics {

bool CapturesActive() noexcept { return tCaptures.innermost != nullptr; }

bool CaptureWantsEverything() noexcept { return tCaptures.everything > 0; }

void DeliverToCaptures(std::string_view context, std::string_view message, bool reason) {
  KOVALogCaptureAccess::Deliver(context, message, reason);
}

}  // namespace kova::diagnostics

KOVALogSink::~KOVALogSink() = default;

KOVALogCapture::KOVALogCapture(Wants wants) : wants_(wants) {
  outer_ = tCaptures.innermost;
  tCaptures.innermost = this;
  if (wants_ == Wants::kEverything) ++tCaptures.everything;
}

KOVALogCapture::KOVALogCapture(KOVALogSink& sink, Wants wants) : KOVALogCapture(wants) { sink_ = &sink; }

KOVALogCapture::~KOVALogCapture() {
  // Found on this thread's list only when destroyed on the thread that made it.
  for (KOVALogCapture** link = &tCaptures.innermost; *link != nullptr; link = &KOVALogCaptureAccess::Outer(**link)) {
    if (*link == this) {
      *link = outer_;
      if (wants_ == Wants::kEverything) --tCaptures.everything;
      return;
    }
  }
}

std::vector<std::string> KOVALogCapture::Reasons() const {
  std::vector<std::string> reasons;
  for (const KOVALogLine& line : lines_) {
    if (!line.reason) continue;
    if (line.context.empty()) {
      reasons.push_back(line.message);
    } else {
      reasons.push_back(line.context + " " + line.message);
    }
  }
  return reasons;
}

void KOVALogCapture::Receive(std::string_view context, std::string_view message, bool reason) {
  if (sink_ == nullptr) {
    lines_.push_back(KOVALogLine{std::string(context), std::string(message), reason});
    return;
  }
  // Lines that the sink's own calls into the library emit are not passed back to it.
  struct Running {
    bool& flag;
    explicit Running(bool& f) : flag(f) { flag = true; }
    ~Running() { flag = false; }
  } running(delivering_);
  sink_->Receive(context, message, reason);
}
