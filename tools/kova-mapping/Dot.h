// Graphviz (DOT) text helpers of the tool.
#ifndef KOVA_TOOLS_KOVA_MAPPING_DOT_H_
#define KOVA_TOOLS_KOVA_MAPPING_DOT_H_

#include <string>
#include <string_view>
#include <vector>

namespace kova::tool {

// A quoted DOT string that a label shows as the lines given, exactly: quotes and backslashes are
// escaped, ampersands written as the entity &amp; (Graphviz reads entities in labels), control
// characters (below U+0020, and U+007F) shown as \u00XX, and the lines joined by the label's line
// break (\n). Other characters, UTF-8 included, are kept as they are.
std::string DotLabel(const std::vector<std::string>& lines);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_DOT_H_
