// Writing JSON text (internal): one writer, in compact or indented form, for the value tree, for
// documents written as they are produced, and for texts printed to the log.
//
// Compact text has no blanks. Indented text puts each member and element on its own line, four
// spaces deeper than its container, with ": " after keys; empty containers stay "{}" and "[]".
// Both keep members in the order given, write strings as raw UTF-8 with only quote, backslash and
// control characters escaped (\b \t \n \f \r, else \u00XX in upper-case hexadecimal), and numbers
// as their token text.
#ifndef KOVA_PLATFORM_JSONWRITE_H_
#define KOVA_PLATFORM_JSONWRITE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/JsonNode.h"

namespace kova::json {

enum class Layout { kCompact, kIndented };

// Nesting beyond which indented text is given up for compact text, as its indentation alone would
// grow quadratically.
inline constexpr std::size_t kMaxIndentedDepth = 256;

// Text written as it is produced. The caller keeps the calls balanced (keys only inside objects,
// each followed by one value).
class TextWriter {
 public:
  explicit TextWriter(Layout layout, std::size_t expectedSize = 0);

  void StartObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void StartArray() { Open('['); }
  void EndArray() { Close(']'); }
  void Key(std::string_view name);
  void String(std::string_view text);
  void Bool(bool value);
  void Integer(std::int64_t value);
  void Null();
  // A number token, written as it is.
  void Number(std::string_view token);

  // How deep the writer is inside containers.
  std::size_t Depth() const noexcept { return counts_.size(); }

  // The text written; the writer is done with.
  std::string Take() { return std::move(out_); }

 private:
  void BeforeValue();
  void NewLine();
  void Open(char bracket);
  void Close(char bracket);

  std::string out_;
  std::vector<std::uint32_t> counts_;  // members or elements written in each open container
  bool indented_;
  bool afterKey_ = false;
};

// The text of a value of the tree (written compact when indented text would nest too deep).
std::string WriteValue(const Value& value, Layout layout, std::size_t expectedSize = 0);

// A guess of the size of the compact text of node, to reserve the output.
std::size_t ExpectedTextSize(const Node& node) noexcept;

// Indented text of a well-formed JSON text (one leading byte order mark skipped): its values as
// written, repeated keys included, numbers as their tokens. Text the parser does not take is
// given back as it is.
std::string PrettyText(std::string_view text);

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONWRITE_H_
