// tree FILE: the product structure of a document, as text or as a Graphviz graph.
#include <string_view>
#include <vector>

#include "Commands.h"
#include "Documents.h"
#include "Io.h"
#include "Status.h"
#include "Tree.h"

namespace kova::tool {

int RunTree(const TreeOptions& options) {
  const std::string text = ReadInput(options.file);
  Output out(options.output);
  const DocumentRead read = ReadDocument(text);
  if (!read.Ok()) throw ToolError(options.file + ": " + read.ErrorText());

  const std::vector<TreeNode> nodes = ProductTree(read.table, options.maxDepth);
  const auto write = [&out](std::string_view piece) { out.Write(piece); };
  if (options.format == "dot") {
    WriteTreeDot(nodes, write);
  } else {
    WriteTreeText(nodes, options.ascii, write);
  }
  out.Commit();
  return 0;
}

}  // namespace kova::tool
