#include "platform/JsonWrite.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <rapidjson/prettywriter.h>
#include <rapidjson/writer.h>

#include "platform/JsonNumber.h"

namespace kova::json {

// Output stream of the RapidJSON writers that fills a std::string directly.
class StringOutput {
 public:
  using Ch = char;

  explicit StringOutput(std::size_t expected) { text_.reserve(expected); }

  void Reserve(std::size_t count) {
    if (text_.size() + count > text_.capacity()) text_.reserve(std::max(text_.capacity() * 2, text_.size() + count));
  }
  void PutUnsafe(char c) { text_.push_back(c); }
  void Put(char c) { text_.push_back(c); }
  // Appends bytes for which room was reserved.
  void AppendUnsafe(const char* bytes, std::size_t count) { text_.append(bytes, count); }
  void Flush() {}

  std::string Take() {
    if (text_.capacity() > 2 * text_.size() + 64) text_.shrink_to_fit();
    return std::move(text_);
  }

 private:
  std::string text_;
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

// The writers copy strings a character at a time, escaping as they go. Copy the runs that need no
// escape (anything but quote, backslash and control characters) at once; the writer escapes the
// character that ends a run, and has reserved room for the whole string beforehand.
template <>
inline bool Writer<kova::json::StringOutput>::ScanWriteUnescapedString(StringStream& is, size_t length) {
  const char* const begin = is.src_;
  const char* const end = is.head_ + length;
  const char* p = begin;
#if defined(__SSE2__)
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i backslash = _mm_set1_epi8('\\');
  const __m128i below = _mm_set1_epi8(0x1F);
  for (; end - p >= 16; p += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    // A byte is a control character when subtracting 0x1F with unsigned saturation gives 0.
    const __m128i control = _mm_cmpeq_epi8(_mm_subs_epu8(bytes, below), _mm_setzero_si128());
    const __m128i special =
        _mm_or_si128(control, _mm_or_si128(_mm_cmpeq_epi8(bytes, quote), _mm_cmpeq_epi8(bytes, backslash)));
    const int mask = _mm_movemask_epi8(special);
    if (mask != 0) {
      p += __builtin_ctz(static_cast<unsigned>(mask));
      break;
    }
  }
#endif
  while (p < end) {
    const auto c = static_cast<unsigned char>(*p);
    if (c < 0x20 || c == '"' || c == '\\') break;
    ++p;
  }
  os_->AppendUnsafe(begin, static_cast<std::size_t>(p - begin));
  is.src_ = p;
  return p < end;
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

std::string WriteCompact(const Value& value, std::size_t expectedSize) {
  StringOutput out(expectedSize);
  rapidjson::Writer<StringOutput> writer(out);
  Emit(writer, value, static_cast<std::size_t>(-1));
  return out.Take();
}

std::string WritePretty(const Value& value, std::size_t expectedSize) {
  StringOutput out(expectedSize);
  rapidjson::PrettyWriter<StringOutput> writer(out);
  writer.SetIndent(' ', 4);
  if (!Emit(writer, value, kMaxPrettyDepth)) return WriteCompact(value, expectedSize);
  return out.Take();
}

std::size_t ExpectedTextSize(const Node& node) noexcept {
  // A whole document takes about as many bytes as text as three fifths of its arena.
  return &node == &node.doc->root ? node.doc->arena.Footprint() / 5 * 3 : 0;
}

struct CompactWriter::State {
  explicit State(std::size_t expected) : out(expected), writer(out) {}
  StringOutput out;
  rapidjson::Writer<StringOutput> writer;
};

CompactWriter::CompactWriter(std::size_t expectedSize) : state_(std::make_unique<State>(expectedSize)) {}
CompactWriter::~CompactWriter() = default;

void CompactWriter::StartObject() { state_->writer.StartObject(); }
void CompactWriter::EndObject() { state_->writer.EndObject(); }
void CompactWriter::StartArray() { state_->writer.StartArray(); }
void CompactWriter::EndArray() { state_->writer.EndArray(); }
void CompactWriter::Key(std::string_view name) {
  state_->writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}
void CompactWriter::String(std::string_view text) {
  state_->writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}
void CompactWriter::Bool(bool value) { state_->writer.Bool(value); }
void CompactWriter::Integer(std::int64_t value) {
  char buffer[24];
  state_->writer.RawValue(buffer, FormatInteger(value, buffer), rapidjson::kNumberType);
}

std::string CompactWriter::Take() { return state_->out.Take(); }

}  // namespace kova::json
