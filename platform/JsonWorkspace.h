// The parsers and padded text buffer that parsing uses, kept per thread (internal to the
// platform's JSON parsing).
#ifndef KOVA_PLATFORM_JSONWORKSPACE_H_
#define KOVA_PLATFORM_JSONWORKSPACE_H_

#include <simdjson.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace kova::json {

// Deepest nesting of arrays and objects that parsing accepts.
inline constexpr std::size_t kMaxDepth = 10000;

// The thread keeps its parsers between parses, sized for the last text it parsed; the padded copy
// of a text above kAlwaysKeptSize is given back after each parse. A text much smaller than what
// the parsers were sized for gets fresh ones, so that memory taken for a large document is handed
// back once the thread parses ordinary ones again. Texts beyond kMaxKeptTextSize never use the
// kept parsers.
inline constexpr std::size_t kMaxKeptTextSize = std::size_t{64} << 20;
inline constexpr std::size_t kShrinkFactor = 4;
inline constexpr std::size_t kAlwaysKeptSize = std::size_t{1} << 20;

// text without one leading UTF-8 byte order mark, which parsing skips.
inline std::string_view WithoutByteOrderMark(std::string_view text) noexcept {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
  return text;
}

// JSON blanks: space, tab, line feed, carriage return.
inline bool IsBlank(char c) noexcept { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

inline std::string_view TrimBlanks(std::string_view s) noexcept {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

// Appends padding zero bytes to text. When its buffer lacks the room, the text moves to one of
// exactly the size needed (growing in place could take up to twice that) and the old one goes.
void AppendPadding(std::string& text, std::size_t padding);

// Parsers and the padded copy of a text that simdjson reads.
struct Workspace {
  simdjson::dom::parser dom;                           // texts read once, where they lie
  std::unique_ptr<simdjson::ondemand::parser> tokens;  // texts loaded into a value tree
  std::unique_ptr<char[]> buffer;
  std::size_t bufferSize = 0;

  // text copied into the buffer, followed by SIMDJSON_PADDING zero bytes.
  std::string_view Pad(std::string_view text);

  // The On-Demand parser, ready for size bytes. Its depth limit only applies to builds with
  // simdjson's development checks, and is kept above what the tree's walk, which enforces
  // kMaxDepth itself in every build, lets it reach (the document itself counts as one level).
  simdjson::ondemand::parser* Tokens(std::size_t size);

  // Parses padded (a text followed by SIMDJSON_PADDING readable bytes, which must stay where it is
  // during the call) with the DOM parser, sized for it first when needed, into top. The parser's
  // error code: SUCCESS, or MEMALLOC when its buffers cannot be had.
  simdjson::error_code ParseDom(std::string_view padded, simdjson::dom::element& top);

  // The copy of a large text is only needed during its parse: give its memory back.
  void ReleaseLargeCopy() noexcept;

  // True when the workspace was sized for texts much larger than size.
  bool OversizedFor(std::size_t size) const noexcept;
};

// The workspace of one parse: the thread's kept workspace when the text is small enough and the
// kept one is not already in use further up the same thread's stack, else a workspace of its own.
// The kept workspace is replaced by a fresh one when it was sized for much larger texts.
class WorkspaceLease {
 public:
  explicit WorkspaceLease(std::size_t textSize);
  ~WorkspaceLease();
  WorkspaceLease(const WorkspaceLease&) = delete;
  WorkspaceLease& operator=(const WorkspaceLease&) = delete;

  Workspace& operator*() const noexcept { return *work_; }
  Workspace* operator->() const noexcept { return work_; }

 private:
  Workspace* work_ = nullptr;
  std::unique_ptr<Workspace> own_;
  bool kept_ = false;
};

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONWORKSPACE_H_
