// One JSON object written on one line, for the tool's machine-readable output (--json: one object
// per line, NDJSON). Members come in the order they are added; texts are escaped as the library's
// writer escapes them.
#ifndef KOVA_TOOLS_KOVA_MAPPING_JSONLINE_H_
#define KOVA_TOOLS_KOVA_MAPPING_JSONLINE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kova::tool {

class JsonLine {
 public:
  JsonLine& String(std::string_view key, std::string_view text);
  // The text, or null.
  JsonLine& OptionalString(std::string_view key, const std::optional<std::string>& text);
  JsonLine& Number(std::string_view key, std::int64_t number);
  JsonLine& Real(std::string_view key, double number);
  JsonLine& Bool(std::string_view key, bool value);
  JsonLine& Null(std::string_view key);
  JsonLine& Strings(std::string_view key, const std::vector<std::string>& texts);
  // A value that is JSON text already (an object or an array made by another JsonLine).
  JsonLine& Raw(std::string_view key, std::string_view json);

  // "{...}", without a line end.
  std::string Text() const { return text_ + "}"; }

 private:
  void Key(std::string_view key);

  std::string text_ = "{";
};

// A JSON array of the texts already made ("[a,b]").
std::string JsonArray(const std::vector<std::string>& jsonValues);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_JSONLINE_H_
