// Writing a value tree as JSON text (internal).
#ifndef KOVA_PLATFORM_JSONWRITE_H_
#define KOVA_PLATFORM_JSONWRITE_H_

#include <cstddef>
#include <string>

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

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONWRITE_H_
