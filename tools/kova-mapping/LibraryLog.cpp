#include "LibraryLog.h"

#include <cstdlib>
#include <iostream>

namespace kova::tool {

namespace {

constexpr std::string_view kTag = "[PrdKOVALog]";
constexpr std::string_view kVariable = "ActivateKOVALogger";

// Contexts whose messages are whole documents or dumps.
constexpr std::string_view kBulkyContexts[] = {
    "Input Mapping Table JSON String",
    "MappingTable at the end of parsing",
    "JSON generated from MappingTable",
};
// Envelope lines after which the next line is the whole text (the envelope or the document).
constexpr std::string_view kTextFollows[] = {"COMPRESSED STRING:", "DECOMPRESSED STRING:"};
// Envelope size lines show the rest of their label from a position given by the size.
constexpr std::string_view kSizeLabels[] = {"UNCOMPRESSED SIZE IS: ", "COMPRESSED SIZE IS: "};
constexpr std::string_view kMandatoryContext = "UNVALUATED MANDATORY FIELD";

bool shown = false;

template <std::size_t N>
bool IsOneOf(std::string_view text, const std::string_view (&list)[N]) {
  for (const std::string_view item : list) {
    if (text == item) return true;
  }
  return false;
}

bool IsProgressLine(std::string_view message) {
  if (message.empty() || IsOneOf(message, kTextFollows)) return true;
  for (const std::string_view label : kSizeLabels) {
    if (label.ends_with(message)) return true;
  }
  return false;
}

}  // namespace

void EnableLibraryLog() {
  shown = std::getenv(kVariable.data()) != nullptr;
  if (!shown) setenv(kVariable.data(), "1", 1);
}

bool LibraryLogShown() { return shown; }

class LibraryLogCapture::Buffer : public std::streambuf {
 public:
  explicit Buffer(std::streambuf* echo) : echo_(echo) {}

  void Close() {
    if (!open_) return;
    open_ = false;
    if (skip_) return;
    if (current_.message.ends_with('\n')) current_.message.pop_back();
    skipNext_ = current_.context.empty() && IsOneOf(current_.message, kTextFollows);
    entries_.push_back(std::move(current_));
    current_ = {};
  }

  std::vector<LogEntry>& Entries() { return entries_; }

 protected:
  std::streamsize xsputn(const char* s, std::streamsize n) override {
    if (n <= 0) return 0;
    Feed(std::string_view(s, static_cast<std::size_t>(n)));
    return n;
  }

  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char ch = traits_type::to_char_type(c);
    Feed(std::string_view(&ch, 1));
    return c;
  }

  int sync() override { return echo_ != nullptr ? echo_->pubsync() : 0; }

 private:
  void Feed(std::string_view chunk) {
    if (echo_ != nullptr) echo_->sputn(chunk.data(), static_cast<std::streamsize>(chunk.size()));
    if (chunk.starts_with(kTag)) {
      Close();
      Open(chunk.substr(kTag.size()));
    } else if (open_ && !skip_) {
      current_.message.append(chunk);
    }
  }

  void Open(std::string_view rest) {
    open_ = true;
    current_ = {};
    if (rest.starts_with('[')) {
      const std::size_t close = rest.find(']');
      const std::size_t newline = rest.find('\n');
      if (close != std::string_view::npos && close < newline) {
        current_.context.assign(rest.substr(1, close - 1));
        rest.remove_prefix(close + 1);
      }
    }
    skip_ = skipNext_ || IsOneOf(current_.context, kBulkyContexts);
    skipNext_ = false;
    if (!skip_) current_.message.assign(rest);
  }

  std::streambuf* echo_;
  std::vector<LogEntry> entries_;
  LogEntry current_;
  bool open_ = false;
  bool skip_ = false;
  bool skipNext_ = false;
};

LibraryLogCapture::LibraryLogCapture() : LibraryLogCapture(LibraryLogShown()) {}

LibraryLogCapture::LibraryLogCapture(bool echo) {
  std::cout.flush();
  saved_ = std::cout.rdbuf();
  buffer_ = std::make_unique<Buffer>(echo ? saved_ : nullptr);
  std::cout.rdbuf(buffer_.get());
}

LibraryLogCapture::~LibraryLogCapture() { Stop(); }

void LibraryLogCapture::Stop() {
  if (stopped_) return;
  stopped_ = true;
  std::cout.flush();
  std::cout.rdbuf(saved_);
  // A failed write would have left the stream unusable for the tool's own output.
  std::cout.clear();
  buffer_->Close();
}

const std::vector<LogEntry>& LibraryLogCapture::Entries() {
  Stop();
  return buffer_->Entries();
}

std::vector<std::string> LibraryLogCapture::FailureMessages() {
  std::vector<std::string> messages;
  for (const LogEntry& entry : Entries()) {
    if (entry.context.empty()) {
      if (!IsProgressLine(entry.message)) messages.push_back(entry.message);
    } else if (entry.context == kMandatoryContext) {
      messages.push_back(std::string(kMandatoryContext) + " " + entry.message);
    }
  }
  return messages;
}

std::optional<std::string> LibraryLogCapture::LastMessage(std::string_view context) {
  const std::vector<LogEntry>& entries = Entries();
  for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
    if (it->context == context) return it->message;
  }
  return std::nullopt;
}

}  // namespace kova::tool
