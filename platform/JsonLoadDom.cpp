// Building the value tree from the tape of a simdjson DOM parse.
#include <charconv>
#include <cstring>
#include <vector>

#include "platform/JsonLoadSteps.h"

namespace kova::json {

namespace {

// The walk reads the tape as simdjson 3 lays it out; the unit tests cover every kind of entry.
static_assert(simdjson::SIMDJSON_VERSION_MAJOR == 3, "tape layout of simdjson 3");

// DOM objects and arrays report this size when they hold this many children or more.
constexpr std::size_t kSaturatedSize = 0xFFFFFF;

// Walks the tape of a parse: one pass, in document order, with an explicit stack of the open
// containers. Tape entries are 64-bit words: a type character in the top byte and a payload
// below it (see simdjson's tape documentation).
class TapeBuilder {
 public:
  TapeBuilder(const simdjson::dom::document& parsed, Document& doc)
      : tape_(parsed.tape.get()), strings_(parsed.string_buf.get()), doc_(doc), keys_(doc.arena) {
    open_.reserve(64);
  }

  // Stores the value at tape index i into slot and returns the index after it, or 0 for a
  // number whose text the tape does not keep. A container is opened: its node is pushed and
  // the returned index is that of its first child.
  std::size_t Store(std::size_t i, Value* slot) {
    const std::uint64_t word = tape_[i];
    switch (static_cast<char>(word >> 56)) {
      case '"': {
        const std::string_view s = StringAt(word);
        *slot = Value::MakeText(Kind::String, CopyString(s), static_cast<std::uint32_t>(s.size()));
        return i + 1;
      }
      case 'l': {
        const auto value = static_cast<std::int64_t>(tape_[i + 1]);
        sawZero_ |= value == 0;
        *slot = Value::MakeInteger(value);
        return i + 2;
      }
      case 'u': {
        // Above the int64 range; JSON integer tokens have no leading zeros or plus sign, so the
        // decimal form of the value is the token.
        char buffer[24];
        const auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, tape_[i + 1]);
        (void)ec;
        const std::string_view text(buffer, static_cast<std::size_t>(end - buffer));
        *slot = Value::MakeText(Kind::Number, doc_.arena.CopyText(text), static_cast<std::uint32_t>(text.size()));
        return i + 2;
      }
      case 'd':
        return 0;
      case 't':
        *slot = Value::MakeBoolean(true);
        return i + 1;
      case 'f':
        *slot = Value::MakeBoolean(false);
        return i + 1;
      case 'n':
        *slot = Value::MakeNull();
        return i + 1;
      case '{': {
        Node* node = doc_.NewNode(NodeKind::Object);
        *slot = Value::MakeNode(node, Kind::Object);
        Open(node, word);
        return i + 1;
      }
      case '[': {
        Node* node = doc_.NewNode(NodeKind::Array);
        *slot = Value::MakeNode(node, Kind::Array);
        Open(node, word);
        return i + 1;
      }
      default:
        break;
    }
    return 0;
  }

  void Open(Node* node, std::uint64_t word) {
    // Child count, saturated at kSaturatedSize; beyond it the node grows as children come.
    node->Reserve(static_cast<std::uint32_t>((word >> 32) & kSaturatedSize));
    const std::size_t depth = open_.size();
    if (lastObjects_.size() <= depth) lastObjects_.resize(depth + 1, nullptr);
    open_.push_back({node, node->IsObject() ? lastObjects_[depth] : nullptr, 0});
  }

  // Fills the open containers from tape index i on; returns the index after the last one closed,
  // or 0 as Store.
  std::size_t Walk(std::size_t i) {
    while (!open_.empty()) {
      Frame& frame = open_.back();
      Node* node = frame.node;
      const char type = static_cast<char>(tape_[i] >> 56);
      if (type == '}' || type == ']') {
        if (type == '}') lastObjects_[open_.size() - 1] = node;
        open_.pop_back();
        ++i;
        continue;
      }
      Value* slot = nullptr;
      if (node->kind == NodeKind::Object) {
        // A repeated key gets the slot of its first appearance: the last value wins.
        const std::string_view key = StringAt(tape_[i]);
        slot = node->UpsertInterned(key, KeyOf(frame, key));
        ++i;
      } else {
        slot = node->Append();
      }
      i = Store(i, slot);
      if (i == 0) return 0;
    }
    return i;
  }

  bool SawZero() const noexcept { return sawZero_; }

 private:
  struct Frame {
    Node* node;
    // The last object closed at the same depth: objects of a document tend to repeat the keys of
    // the one before them, in the same order.
    const Node* model;
    std::uint32_t keys;  // keys read so far (objects)
  };

  // The stored form of the next key of the object of frame: the model's key at that place when
  // it is the same, else the interned key.
  const char* KeyOf(Frame& frame, std::string_view key) {
    const std::uint32_t at = frame.keys++;
    if (frame.model != nullptr && at < frame.model->size) {
      const Member& guess = frame.model->members[at];
      if (guess.keyLength == key.size() && SameBytes(guess.key, key.data(), key.size())) return guess.key;
    }
    return keys_.Intern(key);
  }

  // A copy of a string of the tape in the arena. The string buffer of the parse is padded, so
  // short strings are copied by whole 32-byte blocks.
  const char* CopyString(std::string_view s) {
    const std::size_t n = s.size();
    if (n > kBlockCopyLimit) return doc_.arena.CopyText(s);
    doc_.arena.Reserve(n + kBlock);
    char* to = doc_.arena.FreeBegin();
    for (std::size_t k = 0; k < n; k += kBlock) std::memcpy(to + k, s.data() + k, kBlock);
    doc_.arena.Commit(n);
    return to;
  }

  static constexpr std::size_t kBlock = 32;
  static constexpr std::size_t kBlockCopyLimit = 256;

  // The string of a string entry: a 32-bit length, then the bytes, in the string buffer.
  std::string_view StringAt(std::uint64_t word) const noexcept {
    const std::uint8_t* at = strings_ + (word & simdjson::internal::JSON_VALUE_MASK);
    std::uint32_t length;
    std::memcpy(&length, at, sizeof length);
    return {reinterpret_cast<const char*>(at + sizeof length), length};
  }

  const std::uint64_t* tape_;
  const std::uint8_t* strings_;
  Document& doc_;
  KeyTable keys_;
  std::vector<Frame> open_;
  std::vector<const Node*> lastObjects_;
  bool sawZero_ = false;
};

}  // namespace

DomBuild BuildFromDom(const simdjson::dom::document& parsed, std::string_view text, bool mayHoldNegativeZero,
                      Document& doc) {
  doc.arena.SizeHint(text.size());
  TapeBuilder builder(parsed, doc);
  // Entry 0 is the root marker; the value follows.
  const std::uint64_t first = parsed.tape[1];
  const char type = static_cast<char>(first >> 56);
  std::size_t next = 0;
  if (type == '{' || type == '[') {
    doc.root.kind = type == '{' ? NodeKind::Object : NodeKind::Array;
    builder.Open(&doc.root, first);
    next = builder.Walk(2);
  } else {
    doc.root.kind = NodeKind::Scalar;
    doc.root.elements = doc.arena.AllocateArray<Value>(1);
    doc.root.size = 1;
    doc.root.capacity = 1;
    next = builder.Store(1, &doc.root.elements[0]);
  }
  if (next == 0) return DomBuild::NeedsTokenText;
  // The tape keeps the token -0 as the integer 0; when the text may hold one, read it again.
  if (builder.SawZero() && mayHoldNegativeZero) return DomBuild::NeedsTokenText;
  return DomBuild::Done;
}

}  // namespace kova::json
