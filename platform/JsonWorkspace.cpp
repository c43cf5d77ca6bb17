#include "platform/JsonWorkspace.h"

#include <algorithm>
#include <cstring>

#include "platform/HugePages.h"

namespace kova::json {

namespace {

// Texts from this size on have their padded copy advised for huge pages.
constexpr std::size_t kHugePagesFrom = std::size_t{8} << 20;

// Whether the thread's kept workspace is in use by a parse further up the stack.
thread_local bool keptInUse = false;

std::unique_ptr<Workspace>& Kept() {
  thread_local std::unique_ptr<Workspace> kept;
  return kept;
}

}  // namespace

void AppendPadding(std::string& text, std::size_t padding) {
  if (text.capacity() - text.size() < padding) {
    std::string room;
    room.reserve(text.size() + padding);
    room.append(text);
    text = std::move(room);
  }
  text.append(padding, '\0');
}

std::string_view Workspace::Pad(std::string_view text) {
  const std::size_t needed = text.size() + simdjson::SIMDJSON_PADDING;
  if (bufferSize < needed) {
    buffer.reset();
    buffer = std::make_unique_for_overwrite<char[]>(needed);
    bufferSize = needed;
    if (needed >= kHugePagesFrom) AdviseHugePages(buffer.get(), needed);
  }
  std::memcpy(buffer.get(), text.data(), text.size());
  std::memset(buffer.get() + text.size(), 0, simdjson::SIMDJSON_PADDING);
  return {buffer.get(), text.size()};
}

simdjson::ondemand::parser* Workspace::Tokens(std::size_t size) {
  constexpr std::size_t kParserDepth = kMaxDepth + 2;
  if (!tokens) tokens = std::make_unique<simdjson::ondemand::parser>();
  if (tokens->capacity() < size || tokens->max_depth() != kParserDepth) {
    if (tokens->allocate(size, kParserDepth) != simdjson::SUCCESS) return nullptr;
  }
  return tokens.get();
}

simdjson::error_code Workspace::ParseDom(std::string_view padded, simdjson::dom::element& top) {
  // The parser refuses nesting that reaches its depth limit.
  constexpr std::size_t kParserDepth = kMaxDepth + 1;
  if (dom.capacity() < padded.size() || dom.max_depth() != kParserDepth) {
    if (const simdjson::error_code error = dom.allocate(padded.size(), kParserDepth); error != simdjson::SUCCESS) {
      return error;
    }
  }
  return dom.parse(padded.data(), padded.size(), false).get(top);
}

void Workspace::ReleaseLargeCopy() noexcept {
  if (bufferSize > kAlwaysKeptSize) {
    buffer.reset();
    bufferSize = 0;
  }
}

bool Workspace::OversizedFor(std::size_t size) const noexcept {
  const std::size_t capacity = std::max(dom.capacity(), tokens ? tokens->capacity() : std::size_t{0});
  return capacity > kAlwaysKeptSize && capacity / kShrinkFactor > size;
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
