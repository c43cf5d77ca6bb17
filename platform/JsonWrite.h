// Writing a value tree as JSON text (internal).
#ifndef KOVA_PLATFORM_JSONWRITE_H_
#define KOVA_PLATFORM_JSONWRITE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/JsonNode.h"

namespace kova::json {

// Compact text: members in insertion order, raw UTF-8, only quote, backslash and control
// characters escaped; numbers as their token text.
std::string WriteCompact(const Value& value, std::size_t expectedSize = 0);

// Text indented by four spaces per level, for logs. Trees nested deeper than a few hundred
// levels are written compact instead, as their indentation alone would grow quadratically.
std::string WritePretty(const Value& value, std::size_t expectedSize = 0);

// A guess of the size of the compact text of node, to reserve the output.
std::size_t ExpectedTextSize(const Node& node) noexcept;

// Compact text written as it is produced, without a value tree: the same writer and escapes as
// WriteCompact, so a tree of the same members and elements gives the same text. The caller keeps
// the calls balanced (keys only inside objects, each followed by one value).
class CompactWriter {
 public:
  explicit CompactWriter(std::size_t expectedSize = 0);
  ~CompactWriter();
  CompactWriter(const CompactWriter&) = delete;
  CompactWriter& operator=(const CompactWriter&) = delete;

  void StartObject();
  void EndObject();
  void StartArray();
  void EndArray();
  void Key(std::string_view name);
  void String(std::string_view text);
  void Bool(bool value);
  void Integer(std::int64_t value);

  // The text written; the writer is done with.
  std::string Take();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONWRITE_H_
