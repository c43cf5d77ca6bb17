#include "JsonLine.h"

#include <cmath>
#include <cstdio>

#include "Text.h"

namespace kova::tool {

void JsonLine::Key(std::string_view key) {
  if (text_.size() > 1) text_ += ',';
  text_ += JsonQuoted(key);
  text_ += ':';
}

JsonLine& JsonLine::String(std::string_view key, std::string_view text) {
  Key(key);
  text_ += JsonQuoted(text);
  return *this;
}

JsonLine& JsonLine::OptionalString(std::string_view key, const std::optional<std::string>& text) {
  return text ? String(key, std::string_view(*text)) : Null(key);
}

JsonLine& JsonLine::Number(std::string_view key, std::int64_t number) {
  Key(key);
  text_ += std::to_string(number);
  return *this;
}

JsonLine& JsonLine::Real(std::string_view key, double number) {
  if (!std::isfinite(number)) return Null(key);
  Key(key);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.6g", number);
  text_ += buffer;
  return *this;
}

JsonLine& JsonLine::Bool(std::string_view key, bool value) {
  Key(key);
  text_ += value ? "true" : "false";
  return *this;
}

JsonLine& JsonLine::Null(std::string_view key) {
  Key(key);
  text_ += "null";
  return *this;
}

JsonLine& JsonLine::Strings(std::string_view key, const std::vector<std::string>& texts) {
  std::vector<std::string> quoted;
  quoted.reserve(texts.size());
  for (const std::string& text : texts) quoted.push_back(JsonQuoted(text));
  return Raw(key, JsonArray(quoted));
}

JsonLine& JsonLine::Raw(std::string_view key, std::string_view json) {
  Key(key);
  text_ += json;
  return *this;
}

std::string JsonArray(const std::vector<std::string>& jsonValues) {
  std::string text = "[";
  for (std::size_t i = 0; i < jsonValues.size(); ++i) {
    if (i > 0) text += ',';
    text += jsonValues[i];
  }
  return text + "]";
}

}  // namespace kova::tool
