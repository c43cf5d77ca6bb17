#include "platform/JsonWrite.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <rapidjson/encodedstream.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include "platform/JsonNumber.h"
#include "platform/JsonWorkspace.h"

namespace kova::json {

namespace {

constexpr std::size_t kIndent = 4;

bool NeedsEscape(unsigned char c) noexcept { return c < 0x20 || c == '"' || c == '\\'; }

// The length of the run at the start of text that needs no escape.
std::size_t PlainRun(std::string_view text) noexcept {
  const char* const begin = text.data();
  const char* const end = begin + text.size();
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
    if (mask != 0) return static_cast<std::size_t>(p - begin) + static_cast<unsigned>(__builtin_ctz(mask));
  }
#endif
  while (p < end && !NeedsEscape(static_cast<unsigned char>(*p))) ++p;
  return static_cast<std::size_t>(p - begin);
}

void AppendEscaped(std::string& out, std::string_view text) {
  out += '"';
  while (!text.empty()) {
    const std::size_t run = PlainRun(text);
    out.append(text.data(), run);
    if (run == text.size()) break;
    const auto c = static_cast<unsigned char>(text[run]);
    text.remove_prefix(run + 1);
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\b': out += "\\b"; break;
      case '\t': out += "\\t"; break;
      case '\n': out += "\\n"; break;
      case '\f': out += "\\f"; break;
      case '\r': out += "\\r"; break;
      default: {
        constexpr char kHex[] = "0123456789ABCDEF";
        const char escape[6] = {'\\', 'u', '0', '0', kHex[c >> 4], kHex[c & 0xF]};
        out.append(escape, sizeof escape);
      }
    }
  }
  out += '"';
}

// Sends value to the writer, containers through an explicit stack. Returns false, leaving the
// output unfinished, when the nesting goes beyond maxDepth.
bool Emit(TextWriter& writer, const Value& value, std::size_t maxDepth) {
  struct Frame {
    const Node* node;
    std::uint32_t next;
  };
  std::vector<Frame> stack;
  auto emit = [&](const Value& v) {
    switch (v.kind) {
      case Kind::Null: writer.Null(); break;
      case Kind::False: writer.Bool(false); break;
      case Kind::True: writer.Bool(true); break;
      case Kind::Integer: writer.Integer(v.integer); break;
      case Kind::Number: writer.Number(v.Text()); break;
      case Kind::String: writer.String(v.Text()); break;
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
        writer.EndObject();
      } else {
        writer.EndArray();
      }
      stack.pop_back();
      continue;
    }
    const std::uint32_t i = frame.next++;
    if (node.kind == NodeKind::Object) {
      const Member& m = node.members[i];
      writer.Key(m.Key());
      emit(m.value);
    } else {
      emit(node.elements[i]);
    }
  }
  return true;
}

// Passes the events of RapidJSON's parser (a SAX parser, so no tree is built) to the writer,
// numbers as their tokens; stops, returning false to the parser, beyond maxDepth.
class Relay : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Relay> {
 public:
  Relay(TextWriter& writer, std::size_t maxDepth) : writer_(writer), maxDepth_(maxDepth) {}

  bool Default() { return false; }  // every event the parser sends has its own handler below
  bool Null() {
    writer_.Null();
    return true;
  }
  bool Bool(bool b) {
    writer_.Bool(b);
    return true;
  }
  bool RawNumber(const char* token, rapidjson::SizeType length, bool) {
    writer_.Number({token, length});
    return true;
  }
  bool String(const char* text, rapidjson::SizeType length, bool) {
    writer_.String({text, length});
    return true;
  }
  bool Key(const char* text, rapidjson::SizeType length, bool) {
    writer_.Key({text, length});
    return true;
  }
  bool StartObject() {
    writer_.StartObject();
    return writer_.Depth() <= maxDepth_;
  }
  bool EndObject(rapidjson::SizeType) {
    writer_.EndObject();
    return true;
  }
  bool StartArray() {
    writer_.StartArray();
    return writer_.Depth() <= maxDepth_;
  }
  bool EndArray(rapidjson::SizeType) {
    writer_.EndArray();
    return true;
  }

 private:
  TextWriter& writer_;
  std::size_t maxDepth_;
};

// The text of text rewritten in layout; false when the parser refuses it or it nests beyond
// maxDepth.
bool Rewrite(std::string_view text, Layout layout, std::size_t maxDepth, std::string& out) {
  TextWriter writer(layout, text.size() * 2);
  rapidjson::MemoryStream bytes(text.data(), text.size());
  rapidjson::EncodedInputStream<rapidjson::UTF8<>, rapidjson::MemoryStream> input(bytes);
  Relay relay(writer, maxDepth);
  rapidjson::Reader reader;
  constexpr unsigned kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
  if (reader.Parse<kFlags>(input, relay).IsError()) return false;
  out = writer.Take();
  return true;
}

}  // namespace

TextWriter::TextWriter(Layout layout, std::size_t expectedSize) : indented_(layout == Layout::kIndented) {
  out_.reserve(expectedSize);
}

void TextWriter::NewLine() {
  out_ += '\n';
  out_.append(kIndent * counts_.size(), ' ');
}

void TextWriter::BeforeValue() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (counts_.empty()) return;
  if (counts_.back()++ != 0) out_ += ',';
  if (indented_) NewLine();
}

void TextWriter::Open(char bracket) {
  BeforeValue();
  out_ += bracket;
  counts_.push_back(0);
}

void TextWriter::Close(char bracket) {
  const std::uint32_t count = counts_.back();
  counts_.pop_back();
  if (indented_ && count != 0) NewLine();
  out_ += bracket;
}

void TextWriter::Key(std::string_view name) {
  BeforeValue();
  AppendEscaped(out_, name);
  out_ += indented_ ? ": " : ":";
  afterKey_ = true;
}

void TextWriter::String(std::string_view text) {
  BeforeValue();
  AppendEscaped(out_, text);
}

void TextWriter::Bool(bool value) {
  BeforeValue();
  out_ += value ? "true" : "false";
}

void TextWriter::Integer(std::int64_t value) {
  BeforeValue();
  char digits[24];
  out_.append(digits, FormatInteger(value, digits));
}

void TextWriter::Null() {
  BeforeValue();
  out_ += "null";
}

void TextWriter::Number(std::string_view token) {
  BeforeValue();
  out_ += token;
}

std::string WriteValue(const Value& value, Layout layout, std::size_t expectedSize) {
  if (layout == Layout::kIndented) {
    TextWriter writer(Layout::kIndented, expectedSize * 2);
    if (Emit(writer, value, kMaxIndentedDepth)) return writer.Take();
  }
  TextWriter writer(Layout::kCompact, expectedSize);
  Emit(writer, value, static_cast<std::size_t>(-1));
  return writer.Take();
}

std::size_t ExpectedTextSize(const Node& node) noexcept {
  // A whole document takes about as many bytes as text as three fifths of its arena.
  return &node == &node.doc->root ? node.doc->arena.Footprint() / 5 * 3 : 0;
}

std::string PrettyText(std::string_view text) {
  text = WithoutByteOrderMark(text);
  std::string out;
  if (Rewrite(text, Layout::kIndented, kMaxIndentedDepth, out)) return out;
  if (Rewrite(text, Layout::kCompact, static_cast<std::size_t>(-1), out)) return out;
  return std::string(text);
}

}  // namespace kova::json
