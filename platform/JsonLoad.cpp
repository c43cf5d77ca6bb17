#include "platform/JsonLoad.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "platform/JsonLoadSteps.h"

namespace kova::json {

namespace {

// The thread keeps its parsers between loads, sized for the last text it loaded (about twice its
// size stays in use after a large one); the padded copy of a text above kAlwaysKeptSize is given
// back after each load. A text much smaller than what the parsers were sized for gets fresh ones,
// so that memory taken for a large document is handed back once the thread loads ordinary ones
// again. Texts beyond kMaxKeptTextSize never use the kept parsers.
constexpr std::size_t kMaxKeptTextSize = std::size_t{64} << 20;
constexpr std::size_t kShrinkFactor = 4;
constexpr std::size_t kAlwaysKeptSize = std::size_t{1} << 20;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool MayPrecedeNumber(char c) noexcept {
  return c == ':' || c == '[' || c == ',' || c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool MayFollowNumber(char c) noexcept {
  return c == ',' || c == ']' || c == '}' || c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// True when "-0" stands at position at of text where a number token can stand (after a value
// separator or blank, before one or at the end).
bool IsNegativeZeroAt(std::string_view text, std::size_t at) noexcept {
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
  // blocks that are searched for "-0" while they are in cache.
  std::string_view Pad(std::string_view text) {
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
      while (!mayHoldNegativeZero && p < end) {
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

  // True when the workspace was sized for texts much larger than size.
  bool OversizedFor(std::size_t size) const noexcept {
    const std::size_t capacity = dom.capacity();
    return capacity > kAlwaysKeptSize && capacity / kShrinkFactor > size;
  }
};

bool IsAllBlank(std::string_view text) noexcept {
  for (const char c : text) {
    if (!IsBlank(c)) return false;
  }
  return true;
}

HRESULT Parse(Workspace& work, std::string_view text, std::shared_ptr<Document>& out) {
  if (text.size() > simdjson::SIMDJSON_MAXSIZE_BYTES) return E_FAIL;  // beyond what the parser handles
  const std::string_view padded = work.Pad(text);
  // The parser refuses nesting that reaches its depth limit.
  constexpr std::size_t kParserDepth = kMaxDepth + 1;
  if (work.dom.capacity() < padded.size() || work.dom.max_depth() != kParserDepth) {
    if (work.dom.allocate(padded.size(), kParserDepth) != simdjson::SUCCESS) return E_FAIL;
    // The parser's buffers, at sizes they are known to have at least.
    AdviseHugePages(work.dom.doc.tape.get(), padded.size() * sizeof(std::uint64_t));
    AdviseHugePages(work.dom.doc.string_buf.get(), padded.size() * 5 / 3);
    AdviseHugePages(work.dom.implementation->structural_indexes.get(), padded.size() * sizeof(std::uint32_t));
  }
  simdjson::dom::element top;
  const simdjson::error_code error = work.dom.parse(padded.data(), padded.size(), false).get(top);
  switch (error) {
    case simdjson::SUCCESS: {
      auto doc = std::make_shared<Document>(NodeKind::Object);
      if (BuildFromDom(work.dom.doc, padded, work.mayHoldNegativeZero, *doc) == DomBuild::Done) {
        out = std::move(doc);
        return S_OK;
      }
      break;  // a number the tape cannot give back as written
    }
    case simdjson::NUMBER_ERROR:
    case simdjson::NUMBER_OUT_OF_RANGE:
      break;  // a number beyond 64 bits or the double range, or a malformed number
    case simdjson::MEMALLOC:
    case simdjson::CAPACITY:
      return E_FAIL;
    default:
      return ZAN_E_INVALIDDATA;
  }
  simdjson::ondemand::parser* tokens = work.Tokens(padded.size());
  if (tokens == nullptr) return E_FAIL;
  auto doc = std::make_shared<Document>(NodeKind::Object);
  if (!BuildFromTokens(*tokens, padded, *doc)) return ZAN_E_INVALIDDATA;
  out = std::move(doc);
  return S_OK;
}

}  // namespace

HRESULT LoadDocument(std::string_view text, std::shared_ptr<Node>& root) {
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
  try {
    std::shared_ptr<Document> doc;
    if (IsAllBlank(text)) {
      doc = std::make_shared<Document>(NodeKind::Object);
    } else if (text.size() <= kMaxKeptTextSize) {
      thread_local std::unique_ptr<Workspace> kept;
      if (!kept || kept->OversizedFor(text.size())) {
        kept.reset();
        kept = std::make_unique<Workspace>();
      }
      const HRESULT status = Parse(*kept, text, doc);
      kept->ReleaseLargeCopy();
      if (ZANFailed(status)) return status;
    } else {
      Workspace own;
      const HRESULT status = Parse(own, text, doc);
      if (ZANFailed(status)) return status;
    }
    Node* top = &doc->root;
    root = std::shared_ptr<Node>(std::move(doc), top);
    return S_OK;
  } catch (const std::bad_alloc&) {
    return E_FAIL;
  }
}

}  // namespace kova::json
