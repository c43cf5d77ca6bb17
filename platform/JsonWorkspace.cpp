#include "platform/JsonWorkspace.h"

namespace kova::json {

namespace {

// Whether the thread's kept workspace is in use by a load further up the stack.
thread_local bool keptInUse = false;

std::unique_ptr<Workspace>& Kept() {
  thread_local std::unique_ptr<Workspace> kept;
  return kept;
}

}  // namespace

HRESULT Workspace::ParseDom(std::string_view text, bool findNegativeZero, simdjson::error_code& error) {
  if (text.size() > simdjson::SIMDJSON_MAXSIZE_BYTES) return E_FAIL;
  return ParsePaddedDom(Pad(text, findNegativeZero), error);
}

HRESULT Workspace::ParsePaddedDom(std::string_view padded, simdjson::error_code& error) {
  if (padded.size() > simdjson::SIMDJSON_MAXSIZE_BYTES) return E_FAIL;
  // The parser refuses nesting that reaches its depth limit.
  constexpr std::size_t kParserDepth = kMaxDepth + 1;
  if (dom.capacity() < padded.size() || dom.max_depth() != kParserDepth) {
    if (dom.allocate(padded.size(), kParserDepth) != simdjson::SUCCESS) return E_FAIL;
    // The parser's buffers, at sizes they are known to have at least. They are sized for the worst
    // case and only partly used: for a small text, whole huge pages would hold more memory than
    // the faults they save are worth.
    if (padded.size() >= kHugePagesFrom) {
      AdviseHugePages(dom.doc.tape.get(), padded.size() * sizeof(std::uint64_t));
      AdviseHugePages(dom.doc.string_buf.get(), padded.size() * 5 / 3);
      AdviseHugePages(dom.implementation->structural_indexes.get(), padded.size() * sizeof(std::uint32_t));
    }
  }
  simdjson::dom::element top;
  error = dom.parse(padded.data(), padded.size(), false).get(top);
  return S_OK;
}

WorkspaceLease::WorkspaceLease(std::size_t textSize) {
  if (textSize <= kMaxKeptTextSize && !keptInUse) {
    std::unique_ptr<Workspace>& kept = Kept();
    if (!kept || kept->OversizedFor(textSize)) {
      kept.reset();
      kept = std::make_unique<Workspace>();
    }
    work_ = kept.get();
    kept_ = true;
    keptInUse = true;
  } else {
    own_ = std::make_unique<Workspace>();
    work_ = own_.get();
  }
}

WorkspaceLease::~WorkspaceLease() {
  if (kept_) {
    work_->ReleaseLargeCopy();
    keptInUse = false;
  }
}

}  // namespace kova::json
