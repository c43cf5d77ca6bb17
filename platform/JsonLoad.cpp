#include "platform/JsonLoad.h"

#include <cstring>
#include <memory>
#include <new>

#include "platform/JsonLoadSteps.h"

namespace kova::json {

namespace {

// Texts up to this size are parsed with parsers and buffers kept by the thread between loads;
// larger ones get their own, freed at the end of the load, so that a thread does not hold the
// memory of its largest document forever.
constexpr std::size_t kReusableTextSize = std::size_t{1} << 20;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Parsers and the padded copy of the text that simdjson reads.
struct Workspace {
  simdjson::dom::parser dom;
  std::unique_ptr<simdjson::ondemand::parser> tokens;
  std::unique_ptr<char[]> buffer;
  std::size_t bufferSize = 0;

  // text copied into the buffer, followed by SIMDJSON_PADDING zero bytes.
  std::string_view Pad(std::string_view text) {
    const std::size_t needed = text.size() + simdjson::SIMDJSON_PADDING;
    if (bufferSize < needed) {
      buffer.reset();
      buffer = std::make_unique_for_overwrite<char[]>(needed);
      bufferSize = needed;
    }
    std::memcpy(buffer.get(), text.data(), text.size());
    std::memset(buffer.get() + text.size(), 0, simdjson::SIMDJSON_PADDING);
    return {buffer.get(), text.size()};
  }

  // The On-Demand parser, ready for size bytes. Its depth limit only applies to builds with
  // simdjson's development checks; the walk enforces kMaxDepth itself in every build.
  simdjson::ondemand::parser* Tokens(std::size_t size) {
    if (!tokens) tokens = std::make_unique<simdjson::ondemand::parser>();
    if (tokens->capacity() < size || tokens->max_depth() != kMaxDepth) {
      if (tokens->allocate(size, kMaxDepth) != simdjson::SUCCESS) return nullptr;
    }
    return tokens.get();
  }
};

bool IsAllBlank(std::string_view text) noexcept {
  for (const char c : text) {
    if (!IsBlank(c)) return false;
  }
  return true;
}

HRESULT Parse(Workspace& work, std::string_view text, std::shared_ptr<Document>& out) {
  const std::string_view padded = work.Pad(text);
  if (work.dom.capacity() < padded.size() || work.dom.max_depth() != kMaxDepth) {
    if (work.dom.allocate(padded.size(), kMaxDepth) != simdjson::SUCCESS) return E_FAIL;
  }
  simdjson::dom::element top;
  const simdjson::error_code error = work.dom.parse(padded.data(), padded.size(), false).get(top);
  switch (error) {
    case simdjson::SUCCESS: {
      auto doc = std::make_shared<Document>(NodeKind::Object);
      if (BuildFromDom(top, padded, *doc) == DomBuild::Done) {
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
    } else if (text.size() <= kReusableTextSize) {
      thread_local Workspace reusable;
      const HRESULT status = Parse(reusable, text, doc);
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
