#include "Io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <optional>

#include "Status.h"
#include "Text.h"

namespace kova::tool {

namespace {

constexpr std::size_t kWriteChunk = 1 << 20;

bool standardInputTaken = false;

std::string Reason(int error) {
  switch (error) {
    case ENOENT: return "not found";
    case EACCES:
    case EPERM: return "permission denied";
    case EISDIR: return "is a directory";
    default: return std::strerror(error);
  }
}

std::string ReadAll(int fd, const std::string& name) {
  std::string text;
  struct stat info {};
  if (fstat(fd, &info) == 0) {
    if (S_ISDIR(info.st_mode)) throw ToolError(name + ": is a directory", E_FAIL, EISDIR);
    if (S_ISREG(info.st_mode) && info.st_size > 0) text.reserve(static_cast<std::size_t>(info.st_size));
  }
  char buffer[65536];
  for (;;) {
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      const int error = errno;
      throw ToolError(name + ": cannot read (" + Reason(error) + ")", E_FAIL, error);
    }
    text.append(buffer, static_cast<std::size_t>(n));
  }
  return text;
}

void WriteAll(int fd, std::string_view text, const std::string& name) {
  while (!text.empty()) {
    const ssize_t n = write(fd, text.data(), text.size());
    if (n < 0) {
      if (errno == EINTR) continue;
      const int error = errno;
      throw ToolError(name + ": cannot write (" + std::string(std::strerror(error)) + ")", E_FAIL, error);
    }
    text.remove_prefix(static_cast<std::size_t>(n));
  }
}

mode_t NewFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

void PrintError(std::string_view message) {
  std::cout.flush();
  std::fflush(stdout);
  std::cerr << "kova-mapping: " << OneLine(message) << '\n';
  std::cerr.flush();
}

std::string ReadInput(const std::string& path) {
  std::string text;
  if (path == "-") {
    if (standardInputTaken) throw ToolError("-: standard input can be read only once");
    standardInputTaken = true;
    text = ReadAll(0, "-");
  } else {
    int fd = -1;
    do {
      fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
      const int error = errno;
      throw ToolError(path + ": " +
                          (error == ENOENT || error == EACCES || error == EPERM || error == EISDIR
                               ? Reason(error)
                               : "cannot read (" + Reason(error) + ")"),
                      E_FAIL, error);
    }
    try {
      text = ReadAll(fd, path);
    } catch (...) {
      close(fd);
      throw;
    }
    close(fd);
  }
  if (const std::optional<std::size_t> offset = FindInvalidUtf8(text)) {
    throw ToolError(path + ": not UTF-8 (invalid byte at offset " + std::to_string(*offset) + ")", ZAN_E_INVALIDDATA);
  }
  return text;
}

Output::Output(const std::string& path) : name_(path.empty() || path == "-" ? "standard output" : path) {
  if (path.empty() || path == "-") return;
  // Where the text finally goes: a symbolic link to a regular file is followed, so the link stays.
  std::string target = path;
  struct stat info {};
  bool direct = false;
  if (lstat(path.c_str(), &info) == 0) {
    if (S_ISLNK(info.st_mode)) {
      char resolved[PATH_MAX];
      struct stat pointed {};
      if (realpath(path.c_str(), resolved) != nullptr && stat(resolved, &pointed) == 0 && S_ISREG(pointed.st_mode)) {
        target = resolved;
      } else {
        direct = true;
      }
    } else if (!S_ISREG(info.st_mode)) {
      direct = true;
    }
  }
  if (direct) {
    fd_ = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd_ < 0) {
      const int error = errno;
      throw ToolError(path + ": cannot write (" + std::string(std::strerror(error)) + ")", E_FAIL, error);
    }
    ownsFd_ = true;
    return;
  }
  std::string pattern = target + ".kova-mapping-XXXXXX";
  fd_ = mkstemp(pattern.data());
  if (fd_ < 0) {
    const int error = errno;
    throw ToolError(path + ": cannot write (" + std::string(std::strerror(error)) + ")", E_FAIL, error);
  }
  ownsFd_ = true;
  temporary_ = pattern;
  target_ = target;
  fchmod(fd_, NewFileMode());
}

Output::~Output() {
  if (ownsFd_) close(fd_);
  if (!committed_ && !temporary_.empty()) unlink(temporary_.c_str());
}

void Output::Write(std::string_view text) {
  buffer_.append(text);
  if (buffer_.size() >= kWriteChunk) Drain();
}

void Output::Drain() {
  if (buffer_.empty()) return;
  if (fd_ == 1) {
    // Library lines shown on standard output go through the C++ and C streams: empty them first.
    std::cout.flush();
    std::fflush(stdout);
  }
  WriteAll(fd_, buffer_, name_);
  buffer_.clear();
}

void Output::Flush() {
  if (fd_ == 1) Drain();
}

void Output::Commit() {
  Drain();
  if (!temporary_.empty()) {
    const int fd = fd_;
    ownsFd_ = false;
    if (close(fd) != 0) {
      const int error = errno;
      throw ToolError(name_ + ": cannot write (" + std::string(std::strerror(error)) + ")", E_FAIL, error);
    }
    if (rename(temporary_.c_str(), target_.c_str()) != 0) {
      const int error = errno;
      throw ToolError(name_ + ": cannot write (" + std::string(std::strerror(error)) + ")", E_FAIL, error);
    }
  }
  committed_ = true;
}

}  // namespace kova::tool
