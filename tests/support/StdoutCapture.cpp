#include "tests/support/StdoutCapture.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <stdexcept>

namespace kova::test {

StdoutCapture::StdoutCapture() {
  std::cout.flush();
  std::fflush(stdout);
  char path[] = "/tmp/kova-stdout-XXXXXX";
  fileFd_ = mkstemp(path);
  if (fileFd_ < 0) throw std::runtime_error("cannot create capture file");
  unlink(path);
  savedFd_ = dup(1);
  dup2(fileFd_, 1);
}

StdoutCapture::~StdoutCapture() { Stop(); }

std::string StdoutCapture::Stop() {
  if (stopped_) return text_;
  stopped_ = true;
  std::cout.flush();
  std::fflush(stdout);
  dup2(savedFd_, 1);
  close(savedFd_);
  lseek(fileFd_, 0, SEEK_SET);
  char buffer[65536];
  for (;;) {
    const ssize_t n = read(fileFd_, buffer, sizeof buffer);
    if (n <= 0) break;
    text_.append(buffer, static_cast<std::size_t>(n));
  }
  close(fileFd_);
  return text_;
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find('\n', start);
    if (end == std::string::npos) {
      lines.push_back(text.substr(start));
      break;
    }
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

}  // namespace kova::test
