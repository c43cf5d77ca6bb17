// Captures what the process writes to its standard output (file descriptor 1) between Start and
// Stop, so tests can compare the library's log lines whole.
#ifndef KOVA_TESTS_SUPPORT_STDOUTCAPTURE_H_
#define KOVA_TESTS_SUPPORT_STDOUTCAPTURE_H_

#include <string>
#include <vector>

namespace kova::test {

class StdoutCapture {
 public:
  StdoutCapture();  // starts capturing
  ~StdoutCapture();
  StdoutCapture(const StdoutCapture&) = delete;
  StdoutCapture& operator=(const StdoutCapture&) = delete;

  // Stops capturing (idempotent) and returns everything written meanwhile.
  std::string Stop();

 private:
  int savedFd_ = -1;
  int fileFd_ = -1;
  std::string text_;
  bool stopped_ = false;
};

// Splits text at "\n"; a final newline does not produce an empty last line.
std::vector<std::string> SplitLines(const std::string& text);

}  // namespace kova::test

#endif  // KOVA_TESTS_SUPPORT_STDOUTCAPTURE_H_
