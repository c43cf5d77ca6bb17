#include "Dot.h"

#include <cstddef>

namespace kova::tool {

std::string DotLabel(const std::vector<std::string>& lines) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out = "\"";
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) out += "\\n";
    for (const char c : lines[i]) {
      const auto byte = static_cast<unsigned char>(c);
      if (c == '"' || c == '\\') {
        out.push_back('\\');
        out.push_back(c);
      } else if (c == '&') {
        // Graphviz reads character entities (&amp; &#65;) in labels.
        out.append("&amp;");
      } else if (byte < 0x20 || byte == 0x7F) {
        // A backslash shown as such is written twice in a label.
        out.append("\\\\u00");
        out.push_back(kHex[byte >> 4]);
        out.push_back(kHex[byte & 0xF]);
      } else {
        out.push_back(c);
      }
    }
  }
  out.push_back('"');
  return out;
}

}  // namespace kova::tool
