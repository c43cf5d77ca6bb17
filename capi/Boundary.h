// The boundary between the C functions and the C++ library: the per-thread last messages and the
// guard every status-returning function runs its work in.
//
// Run(function, body) clears this thread's last messages, runs body and turns what comes out into
// a status and messages:
//  - a non-negative status: the messages stay empty (also when a nested call made from a log
//    callback left some behind);
//  - a negative status: the failure's lines (the library's reasons gathered by the body), or else
//    one line "<function>: <what failed> (0x<status>)";
//  - RefusedArgument: KOVA_E_INVALIDARG and "<function>: <what was refused>";
//  - std::bad_alloc: KOVA_E_OUTOFMEMORY;
//  - std::out_of_range: KOVA_E_BOUNDS. The library raises it only for the size field of an
//    envelope beyond 2147483647;
//  - std::invalid_argument: KOVA_E_UNEXPECTED. The library raises it only for an envelope size
//    field with no digits where it is read ("V9:1:"); the line says so, its text alone ("stoi")
//    would not;
//  - any other exception: KOVA_E_UNEXPECTED and its text.
// Nothing thrown inside ever leaves a C function.
#ifndef KOVA_CAPI_BOUNDARY_H_
#define KOVA_CAPI_BOUNDARY_H_

#include <KOVAMappingServices/KOVALogCapture.h>
#include <KOVAMappingServices/kova_mapping.h>

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kova::capi {

// An argument the function cannot work with; the call returns KOVA_E_INVALIDARG and changes
// nothing. The text names the argument: "table is NULL".
class RefusedArgument : public std::exception {
 public:
  explicit RefusedArgument(std::string text) : text_(std::move(text)) {}
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

// The argument itself, or RefusedArgument("<name> is NULL").
template <class T>
T& Required(T* pointer, const char* name) {
  if (pointer == nullptr) throw RefusedArgument(std::string(name) + " is NULL");
  return *pointer;
}

// What a failing call says about itself, filled by the body and published by Run.
class Failure {
 public:
  // The library's diagnostic reasons, one line each.
  void Reasons(const std::vector<std::string>& reasons);
  // What failed, for the line Run writes when the library gave no reason.
  void Explain(std::string_view what) { explanation_.assign(what); }

  const std::string& lines() const { return lines_; }
  const std::string& explanation() const { return explanation_; }

 private:
  std::string lines_;
  std::string explanation_;
};

// The failure reasons the library emits during one call, without those of the calls a log
// callback makes from inside it (a plain KOVALogCapture would take both). Lives in the body of a
// Run, around the library call.
class CallReasons final : public KOVALogSink {
 public:
  CallReasons();
  ~CallReasons() override;
  CallReasons(const CallReasons&) = delete;
  CallReasons& operator=(const CallReasons&) = delete;

  void Receive(std::string_view context, std::string_view message, bool reason) override;
  // One text per reason: the message, after its context and a space when it has one
  // ("UNVALUATED MANDATORY FIELD IsLocal").
  const std::vector<std::string>& Reasons() const { return reasons_; }

 private:
  int depth_;
  std::vector<std::string> reasons_;
  KOVALogCapture capture_;  // last: it stops delivering before the rest goes
};

// This thread's last messages (never NULL).
const char* LastMessages() noexcept;
void ClearLastMessages() noexcept;

namespace detail {
// Runs nested on this thread: a call made from a log callback runs inside another.
void EnterCall() noexcept;
void LeaveCall() noexcept;
// Sets the last messages of a call that returned a negative status.
void PublishFailure(const char* function, std::int32_t status, const Failure& failure) noexcept;
// Classifies the exception being handled, sets the last messages and returns the status.
std::int32_t PublishCurrentException(const char* function) noexcept;
}  // namespace detail

// A new T made from args, or nullptr when that throws (memory exhausted): the constructors of the
// C API's handles, which return NULL rather than a status.
template <class T, class... Args>
T* NewOrNull(Args&&... args) noexcept {
  try {
    return new T(std::forward<Args>(args)...);
  } catch (...) {
    return nullptr;
  }
}

// Runs body(Failure&) -> int32_t as the work of the C function named function.
template <class Body>
std::int32_t Run(const char* function, Body&& body) noexcept {
  ClearLastMessages();
  struct Depth {
    Depth() noexcept { detail::EnterCall(); }
    ~Depth() { detail::LeaveCall(); }
  } depth;
  try {
    Failure failure;
    const std::int32_t status = std::forward<Body>(body)(failure);
    if (status < 0) {
      detail::PublishFailure(function, status, failure);
    } else {
      ClearLastMessages();
    }
    return status;
  } catch (...) {
    return detail::PublishCurrentException(function);
  }
}

}  // namespace kova::capi

#endif  // KOVA_CAPI_BOUNDARY_H_
