// diff OLD NEW: what changed between two saves of a mapping document.
#include "Commands.h"
#include "Diff.h"
#include "Documents.h"
#include "Io.h"
#include "Status.h"

namespace kova::tool {

int RunDiff(const DiffOptions& options) {
  const std::string oldText = ReadInput(options.oldFile);
  const std::string newText = ReadInput(options.newFile);
  Output out(options.output);
  DocumentRead before = ReadDocument(oldText);
  if (!before.Ok()) throw ToolError(options.oldFile + ": " + before.ErrorText());
  DocumentRead after = ReadDocument(newText);
  if (!after.Ok()) throw ToolError(options.newFile + ": " + after.ErrorText());

  const TableDiff diff = DiffTables(before.table, after.table);
  for (const std::string& line : diff.Lines()) out.Write(line + "\n");
  out.Write(diff.Summary() + "\n");
  out.Commit();
  return diff.Equal() ? 0 : 1;
}

}  // namespace kova::tool
