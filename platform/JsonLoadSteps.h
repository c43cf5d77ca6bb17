// The two ways JsonLoad.cpp builds a tree from a parse (internal to the loader).
//
// The fast way walks simdjson's DOM tape. The tape keeps integers as 64-bit values and reals as
// doubles, so it cannot give back the text of a real number, of an integer beyond 64 bits or of
// "-0"; for such documents the loader walks the text again with simdjson's On-Demand API, which
// hands out the raw text of each number token.
#ifndef KOVA_PLATFORM_JSONLOADSTEPS_H_
#define KOVA_PLATFORM_JSONLOADSTEPS_H_

#include <simdjson.h>

#include <string_view>

#include "platform/JsonNode.h"

namespace kova::json {

enum class DomBuild {
  Done,
  NeedsTokenText,  // a number whose text the tape does not keep; use BuildFromTokens
};

// Fills doc (whose root is still an empty object) from a successful DOM parse of text (the text
// without byte order mark). Does not recurse.
DomBuild BuildFromDom(const simdjson::dom::element& top, std::string_view text, Document& doc);

// Fills doc (whose root is still an empty object) by walking padded (text followed by at least
// SIMDJSON_PADDING readable bytes) with the On-Demand parser. Returns false when the text is
// not well-formed JSON or nests deeper than kMaxDepth. Does not recurse.
bool BuildFromTokens(simdjson::ondemand::parser& parser, std::string_view padded, Document& doc);

// JSON blanks: space, tab, line feed, carriage return.
inline bool IsBlank(char c) noexcept { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

inline std::string_view TrimBlanks(std::string_view s) noexcept {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

}  // namespace kova::json

#endif  // KOVA_PLATFORM_JSONLOADSTEPS_H_
