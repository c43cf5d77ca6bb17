#include "Boundary.h"

#include <cstdio>
#include <initializer_list>
#include <new>
#include <stdexcept>

namespace kova::capi {

namespace {

thread_local std::string tLastMessages;
// The Run calls under way on this thread.
thread_local int tCallDepth = 0;

// Replaces the messages by text; when memory runs out, by a short line that needs no allocation
// (it fits the string's own inline storage).
void SetLastMessages(std::string_view text) noexcept {
  try {
    tLastMessages.assign(text);
  } catch (...) {
    tLastMessages.clear();
    tLastMessages.assign("out of memory\n");
  }
}

// "<function>: " followed by the pieces and a newline.
void PublishLine(const char* function, std::initializer_list<std::string_view> pieces) noexcept {
  try {
    std::string line(function);
    line += ": ";
    for (const std::string_view piece : pieces) line += piece;
    line += '\n';
    SetLastMessages(line);
  } catch (...) {
    SetLastMessages("out of memory\n");
  }
}

}  // namespace

CallReasons::CallReasons() : depth_(tCallDepth), capture_(*this, KOVALogCapture::Wants::kReasons) {}

CallReasons::~CallReasons() = default;

void CallReasons::Receive(std::string_view context, std::string_view message, bool reason) {
  if (!reason || tCallDepth != depth_) return;
  std::string text;
  if (!context.empty()) {
    text.reserve(context.size() + 1 + message.size());
    text += context;
    text += ' ';
  }
  text += message;
  reasons_.push_back(std::move(text));
}

void Failure::Reasons(const std::vector<std::string>& reasons) {
  for (const std::string& reason : reasons) {
    lines_ += reason;
    lines_ += '\n';
  }
}

const char* LastMessages() noexcept { return tLastMessages.c_str(); }

void ClearLastMessages() noexcept { tLastMessages.clear(); }

namespace detail {

void EnterCall() noexcept { ++tCallDepth; }

void LeaveCall() noexcept { --tCallDepth; }

void PublishFailure(const char* function, std::int32_t status, const Failure& failure) noexcept {
  if (!failure.lines().empty()) {
    SetLastMessages(failure.lines());
    return;
  }
  const char* what = failure.explanation().empty() ? "failed" : failure.explanation().c_str();
  char hex[16];
  std::snprintf(hex, sizeof hex, "0x%08X", static_cast<unsigned>(status));
  PublishLine(function, {what, " (", hex, ")"});
}

std::int32_t PublishCurrentException(const char* function) noexcept {
  try {
    throw;
  } catch (const RefusedArgument& refused) {
    PublishLine(function, {refused.what()});
    return KOVA_E_INVALIDARG;
  } catch (const std::bad_alloc& exhausted) {
    PublishLine(function, {"out of memory (", exhausted.what(), ")"});
    return KOVA_E_OUTOFMEMORY;
  } catch (const std::out_of_range& error) {
    PublishLine(function, {"the size field of an envelope is beyond 2147483647 (", error.what(), ")"});
    return KOVA_E_BOUNDS;
  } catch (const std::invalid_argument& error) {
    PublishLine(function, {"the size field of an envelope has no digits where it is read (", error.what(), ")"});
    return KOVA_E_UNEXPECTED;
  } catch (const std::exception& error) {
    PublishLine(function, {error.what()});
    return KOVA_E_UNEXPECTED;
  } catch (...) {
    PublishLine(function, {"unknown error"});
    return KOVA_E_UNEXPECTED;
  }
}

}  // namespace detail

}  // namespace kova::capi
