// The library's diagnostic lines, taken off standard output around library calls.
//
// The library prints its lines ("[PrdKOVALog]", "[context]" when there is one, the message) on
// std::cout, and only when "ActivateKOVALogger" was in the environment at its first
// KOVALogger::IsActive call. The tool puts the variable in its own environment before any library
// call (EnableLibraryLog), so that the reader's failure messages and the stamp text always reach
// it, and installs a LibraryLogCapture around each library call: std::cout's buffer is swapped for
// one that collects the lines. std::cout is one object of the C++ runtime shared with the library,
// so the swap applies to the library's lines too. When the user had set the variable, the lines
// are also passed on to the real standard output as they come, so they still see them.
//
// Each line reaches std::cout in one write (KOVALogger::log writes the whole line, then flushes),
// so a write that starts with the tag starts a line and a message keeps its own newlines whole.
#ifndef KOVA_TOOLS_KOVA_MAPPING_LIBRARYLOG_H_
#define KOVA_TOOLS_KOVA_MAPPING_LIBRARYLOG_H_

#include <memory>
#include <optional>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace kova::tool {

// Puts "ActivateKOVALogger" in the process environment unless the user set it; remembers which.
// Must run before the first library call.
void EnableLibraryLog();
// Whether the user set "ActivateKOVALogger" themselves (their lines are then shown).
bool LibraryLogShown();

struct LogEntry {
  std::string context;  // empty for lines without a context
  std::string message;  // without the final newline
};

// Collects the library's lines while it lives (or until Stop). Lines that only repeat bulky text
// are not kept: the input document and the table dump of the reader, the document of the writer,
// and the text that follows "COMPRESSED STRING:" or "DECOMPRESSED STRING:".
class LibraryLogCapture {
 public:
  // echo: pass every line on to the real standard output too (by default when the user asked for
  // the lines).
  LibraryLogCapture();
  explicit LibraryLogCapture(bool echo);
  ~LibraryLogCapture();
  LibraryLogCapture(const LibraryLogCapture&) = delete;
  LibraryLogCapture& operator=(const LibraryLogCapture&) = delete;

  // Gives std::cout its own buffer back. Idempotent.
  void Stop();

  // The lines kept, in order (Stop first).
  const std::vector<LogEntry>& Entries();

  // The failure messages of the reader and the envelope, in order: lines without context other
  // than the envelope's progress lines, and "UNVALUATED MANDATORY FIELD <key>" for each missing
  // mandatory key.
  std::vector<std::string> FailureMessages();

  // The message of the last line kept with this context.
  std::optional<std::string> LastMessage(std::string_view context);

 private:
  class Buffer;
  std::unique_ptr<Buffer> buffer_;
  std::streambuf* saved_ = nullptr;
  bool stopped_ = false;
};

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_LIBRARYLOG_H_
