#include "platform/JsonWrite.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include <rapidjson/prettywriter.h>
#include <rapidjson/writer.h>

#include "platform/JsonNumber.h"

namespace kova::json {

// Output stream of the RapidJSON writers that fills a std::string directly.
class StringOutput {
 public:
  using Ch = char;

  void Reserve(std::size_t count) {
    if (used_ + count > text_.size()) text_.resize(std::max(text_.size() * 2, used_ + count));
  }
  void PutUnsafe(char c) { text_[used_++] = c; }
  void Put(char c) {
    Reserve(1);
    PutUnsafe(c);
  }
  void Flush() {}

  std::string Take() {
    text_.resize(used_);
    if (text_.capacity() > 2 * used_ + 64) text_.shrink_to_fit();
    return std::move(text_);
  }

 private:
  std::string text_;
  std::size_t used_ = 0;
};

}  // namespace kova::json

// The writers reserve room before writing a run of characters; let them write straight into the
// string.
namespace rapidjson {
template <>
inline void PutReserve(kova::json::StringOutput& stream, size_t count) {
  stream.Reserve(count);
}
template <>
inline void PutUnsafe(kova::json::StringOutput& stream, char c) {
  stream.PutUnsafe(c);
}
}  // namespace rapidjson

namespace kova::json {

namespace {

// Nesting beyond which the indented form is given up for the compact one.
constexpr std::size_t kMaxPrettyDepth = 256;

// Sends value to the writer, containers through an explicit stack. Returns false, leaving the
// output unfinished, when the nesting goes beyond maxDepth.
template <typename Writer>
bool Emit(Writer& writer, const Value& value, std::size_t maxDepth) {
  struct Frame {
    const Node* node;
    std::uint32_t next;
  };
  std::vector<Frame> stack;
  auto emit = [&](const Value& v) {
    switch (v.kind) {
      case Kind::Null:
        writer.Null();
        break;
      case Kind::False:
        writer.Bool(false);
        break;
      case Kind::True:
        writer.Bool(true);
        break;
      case Kind::Integer: {
        char buffer[24];
        writer.RawValue(buffer, FormatInteger(v.integer, buffer), rapidjson::kNumberType);
        break;
      }
      case Kind::Number:
        writer.RawValue(v.text, v.length, rapidjson::kNumberType);
        break;
      case Kind::String:
        writer.String(v.text, v.length);
        break;
      case Kind::Array:
        writer.StartArray();
        stack.push_back({v.node, 0});
        break;
      case Kind::Object:
        writer.StartObject();
        stack.push_back({v.node, 0});
        break;
    }
  };
  emit(value);
  while (!stack.empty()) {
    if (stack.size() > maxDepth) return false;
    Frame& frame = stack.back();
    const Node& node = *frame.node;
    if (frame.next == node.size) {
      if (node.kind == NodeKind::Object) {
        writer.EndObject(node.size);
      } else {
        writer.EndArray(node.size);
      }
      stack.pop_back();
      continue;
    }
    const std::uint32_t i = frame.next++;
    if (node.kind == NodeKind::Object) {
      const Member& m = node.members[i];
      writer.Key(m.key, m.keyLength);
      emit(m.value);
    } else {
      emit(node.elements[i]);
    }
  }
  return true;
}

}  // namespace

std::string WriteCompact(const Value& value) {
  StringOutput out;
  rapidjson::Writer<StringOutput> writer(out);
  Emit(writer, value, static_cast<std::size_t>(-1));
  return out.Take();
}

std::string WritePretty(const Value& value) {
  StringOutput out;
  rapidjson::PrettyWriter<StringOutput> writer(out);
  writer.SetIndent(' ', 4);
  if (!Emit(writer, value, kMaxPrettyDepth)) return WriteCompact(value);
  return out.Take();
}

}  // namespace kova::json
