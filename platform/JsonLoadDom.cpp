// Building the value tree from simdjson's DOM tape.
#include <charconv>
#include <cstring>
#include <vector>

#include "platform/JsonLoadSteps.h"

namespace kova::json {

namespace {

using simdjson::dom::element;
using simdjson::dom::element_type;

// DOM objects and arrays report this size when they hold this many children or more.
constexpr std::size_t kSaturatedSize = 0xFFFFFF;

// True when text may hold the integer token "-0" outside strings: a '-' followed by '0' and by
// something that cannot continue a number. The tape stores it as the integer 0, which would
// lose its sign when written back. Occurrences inside strings only cost a slower load.
bool MayHoldNegativeZero(std::string_view text) noexcept {
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end) {
    const void* hit = std::memchr(p, '-', static_cast<std::size_t>(end - p));
    if (hit == nullptr) return false;
    const char* minus = static_cast<const char*>(hit);
    if (minus + 1 < end && minus[1] == '0') {
      if (minus + 2 == end) return true;
      const char next = minus[2];
      const bool continues = (next >= '0' && next <= '9') || next == '.' || next == 'e' || next == 'E';
      if (!continues) return true;
    }
    p = minus + 1;
  }
  return false;
}

class DomBuilder {
 public:
  explicit DomBuilder(Document& doc) : doc_(doc) { pending_.reserve(64); }

  // Stores e into slot; containers are queued to be filled later. False for a number whose
  // text the tape does not keep.
  bool Store(const element& e, Value* slot) {
    switch (e.type()) {
      case element_type::OBJECT:
        *slot = Queue(e, NodeKind::Object);
        return true;
      case element_type::ARRAY:
        *slot = Queue(e, NodeKind::Array);
        return true;
      case element_type::INT64: {
        const std::int64_t i = e.get_int64().value_unsafe();
        sawZero_ |= i == 0;
        *slot = Value::MakeInteger(i);
        return true;
      }
      case element_type::UINT64: {
        // Above the int64 range; JSON integer tokens have no leading zeros or plus sign, so the
        // decimal form of the value is the token.
        char buffer[24];
        const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, e.get_uint64().value_unsafe());
        (void)ec;
        const std::string_view text(buffer, static_cast<std::size_t>(end - buffer));
        *slot = Value::MakeText(Kind::Number, doc_.arena.CopyText(text), static_cast<std::uint32_t>(text.size()));
        return true;
      }
      case element_type::DOUBLE:
        return false;
      case element_type::STRING: {
        const std::string_view s = e.get_string().value_unsafe();
        *slot = Value::MakeText(Kind::String, doc_.arena.CopyText(s), static_cast<std::uint32_t>(s.size()));
        return true;
      }
      case element_type::BOOL:
        *slot = Value::MakeBoolean(e.get_bool().value_unsafe());
        return true;
      case element_type::NULL_VALUE:
        *slot = Value::MakeNull();
        return true;
    }
    return false;
  }

  void QueueRoot(const element& e, Node* root) { pending_.push_back({e, root}); }

  // Fills the queued containers, children before later siblings' children. False as Store.
  bool Drain() {
    while (!pending_.empty()) {
      const Pending job = pending_.back();
      pending_.pop_back();
      if (!Fill(job)) return false;
    }
    return true;
  }

  bool SawZero() const noexcept { return sawZero_; }

 private:
  struct Pending {
    element from;
    Node* to;
  };

  Value Queue(const element& e, NodeKind kind) {
    Node* node = doc_.NewNode(kind);
    pending_.push_back({e, node});
    return Value::MakeNode(node, kind == NodeKind::Object ? Kind::Object : Kind::Array);
  }

  bool Fill(const Pending& job) {
    Node& node = *job.to;
    if (node.kind == NodeKind::Object) {
      const simdjson::dom::object object = job.from.get_object().value_unsafe();
      std::size_t count = object.size();
      if (count >= kSaturatedSize) {
        count = 0;
        for (auto it = object.begin(); it != object.end(); ++it) ++count;
      }
      node.Reserve(static_cast<std::uint32_t>(count));
      for (auto it = object.begin(), end = object.end(); it != end; ++it) {
        // A repeated key gets the slot of its first appearance: the last value wins.
        Value* slot = node.Upsert(it.key(), true);
        if (!Store(it.value(), slot)) return false;
      }
      return true;
    }
    const simdjson::dom::array array = job.from.get_array().value_unsafe();
    std::size_t count = array.size();
    if (count >= kSaturatedSize) {
      count = 0;
      for (auto it = array.begin(); it != array.end(); ++it) ++count;
    }
    node.Reserve(static_cast<std::uint32_t>(count));
    for (const element child : array) {
      if (!Store(child, node.Append())) return false;
    }
    return true;
  }

  Document& doc_;
  std::vector<Pending> pending_;
  bool sawZero_ = false;
};

}  // namespace

DomBuild BuildFromDom(const element& top, std::string_view text, Document& doc) {
  doc.arena.SizeHint(text.size());
  DomBuilder builder(doc);
  switch (top.type()) {
    case element_type::OBJECT:
      doc.root.kind = NodeKind::Object;
      builder.QueueRoot(top, &doc.root);
      break;
    case element_type::ARRAY:
      doc.root.kind = NodeKind::Array;
      builder.QueueRoot(top, &doc.root);
      break;
    default:
      doc.root.kind = NodeKind::Scalar;
      doc.root.elements = doc.arena.AllocateArray<Value>(1);
      doc.root.size = 1;
      doc.root.capacity = 1;
      if (!builder.Store(top, &doc.root.elements[0])) return DomBuild::NeedsTokenText;
      break;
  }
  if (!builder.Drain()) return DomBuild::NeedsTokenText;
  if (builder.SawZero() && MayHoldNegativeZero(text)) return DomBuild::NeedsTokenText;
  return DomBuild::Done;
}

}  // namespace kova::json
