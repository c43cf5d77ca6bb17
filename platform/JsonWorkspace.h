// The parsers and padded text buffer that loading uses, kept per thread (internal to the
// platform's JSON loading).
#ifndef KOVA_PLATFORM_JSONWORKSPACE_H_
#define KOVA_PLATFORM_JSONWORKSPACE_H_

#include <simdjson.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

#include "platform/HugePages.h"
#include "platform/JsonArena.h"
#include "platform/JsonNode.h"

namespace kova::json {

// The thread keeps its parsers between loads, sized for the last text it loaded (about twice its
// size stays in use after a large one); the padded copy of a text above kAlwaysKeptSize is given
// back after each load. A text much smaller than what the parsers were sized for gets fresh ones,
// so that memory taken for a large document is handed back once the thread loads ordinary ones
// again. Texts beyond kMaxKeptTextSize never use the kept parsers.
inline constexpr std::size_t kMaxKeptTextSize = std::size_t{64} << 20;
inline constexpr std::size_t kShrinkFactor = 4;
inline constexpr std::size_t kAlwaysKeptSize = std::size_t{1} << 20;
// Texts from this size on have the parser's buffers advised for huge pages.
inline constexpr std::size_t kHugePagesFrom = std::size_t{8} << 20;

// text without one leading UTF-8 byte order mark, which loading skips.
inline std::string_view WithoutByteOrderMark(std::string_view text) noexcept {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
  return text;
}

inline bool MayPrecedeNumber(char c) noexcept {
  return c == ':' || c == '[' || c == ',' || c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

inline bool MayFollowNumber(char c) noexcept {
  return c == ',' || c == ']' || c == '}' || c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// True when "-0" stands at position at of text where a number token can stand (after a value
// separator or blank, before one or at the end).
inline bool IsNegativeZeroAt(std::string_view text, std::size_t at) noexcept {
  return at + 1 < text.size() && text[at + 1] == '0' && (at == 0 || MayPrecedeNumber(text[at - 1])) &&
         (at + 2 == text.size() || MayFollowNumber(text[at + 2]));
}

// Parsers and the padded copy of the text that simdjson reads.
struct Workspace {
  simdjson::dom::parser dom;
  std::unique_ptr<simdjson::ondemand::parser> tokens;
  std::unique_ptr<char[]> buffer;
  std::size_t bufferSize = 0;
  // Whether the text last padded may hold the number token -0 (see BuildFromDom).
  bool mayHoldNegativeZero = false;

  // text copied into the buffer, followed by SIMDJSON_PADDING zero bytes. The copy goes by
  // blocks that are searched for "-0" while they are in cache, unless findNegativeZero is false.
  std::string_view Pad(std::string_view text, bool findNegativeZero) {
    const std::size_t needed = text.size() + simdjson::SIMDJSON_PADDING;
    if (bufferSize < needed) {
      buffer.reset();
      buffer = std::make_unique_for_overwrite<char[]>(needed);
      bufferSize = needed;
      AdviseHugePages(buffer.get(), needed);
    }
    constexpr std::size_t kBlock = std::size_t{64} << 10;
    char* const to = buffer.get();
    mayHoldNegativeZero = false;
    for (std::size_t begin = 0; begin < text.size(); begin += kBlock) {
      const std::size_t n = std::min(kBlock, text.size() - begin);
      std::memcpy(to + begin, text.data() + begin, n);
      const char* p = to + begin;
      const char* const end = p + n;
      while (findNegativeZero && !mayHoldNegativeZero && p < end) {
        const void* hit = std::memchr(p, '-', static_cast<std::size_t>(end - p));
        if (hit == nullptr) break;
        const char* minus = static_cast<const char*>(hit);
        mayHoldNegativeZero = IsNegativeZeroAt(text, static_cast<std::size_t>(minus - to));
        p = minus + 1;
      }
    }
    std::memset(to + text.size(), 0, simdjson::SIMDJSON_PADDING);
    return {to, text.size()};
  }

  // The On-Demand parser, ready for size bytes. Its depth limit only applies to builds with
  // simdjson's development checks, and is kept above what the walk, which enforces kMaxDepth
  // itself in every build, lets it reach (the document itself counts as one level).
  simdjson::ondemand::parser* Tokens(std::size_t size) {
    constexpr std::size_t kParserDepth = kMaxDepth + 2;
    if (!tokens) tokens = std::make_unique<simdjson::ondemand::parser>();
    if (tokens->capacity() < size || tokens->max_depth() != kParserDepth) {
      if (tokens->allocate(size, kParserDepth) != simdjson::SUCCESS) return nullptr;
    }
    return tokens.get();
  }

  // The copy of a large text is only needed during its parse: give its memory back.
  void ReleaseLargeCopy() noexcept {
    if (bufferSize > kAlwaysKeptSize) {
      buffer.reset();
      bufferSize = 0;
    }
  }

  // Pads text and parses it with the DOM parser, sized for it first when needed. E_FAIL when the
  // text is beyond what the parser handles or its buffers cannot be had; otherwise S_OK and the
  // parser's error code in error (SUCCESS when the tape in dom.doc holds the document).
  // findNegativeZero sets mayHoldNegativeZero (else it is false).
  HRESULT ParseDom(std::string_view text, bool findNegativeZero, simdjson::error_code& error);
  // As ParseDom without the copy, for a text followed by SIMDJSON_PADDING readable bytes; the
  // text must stay where it is while the tape is read.
  HRESULT ParsePaddedDom(std::string_view padded, simdjson::error_code& error);

  // True when the workspace was sized for texts much larger than size.
  bool OversizedFor(std::size_t size) const noexcept {
    const std::size_t capacity = dom.capacity();
    return capacity > kAlwaysKeptSize && capacity / kShrinkFactor > size;
  }
};

// The workspace of one load: the thread's kept workspace when the text is small enough and the
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
