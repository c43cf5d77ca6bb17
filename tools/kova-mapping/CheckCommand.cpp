// check FILE...: whether each document reads, and what it holds.
#include <string>

#include "Commands.h"
#include "Documents.h"
#include "Io.h"
#include "Status.h"
#include "Text.h"

namespace kova::tool {

int RunCheck(const CheckOptions& options) {
  Output out(options.output);
  bool allRead = true;
  for (const std::string& file : options.files) {
    std::string text;
    try {
      text = ReadInput(file);
    } catch (const ToolError& error) {
      out.Flush();
      PrintError(error.what());
      allRead = false;
      continue;
    }
    DocumentRead read = ReadDocument(text);
    std::string line = OneLine(file) + ": ";
    if (read.Ok()) {
      const std::optional<std::string> root = RootId(read.table);
      line += "ok, version " + std::to_string(RecordedVersion(read.table)) + ", " +
              std::to_string(read.table.GetReferences().size()) + " references, " +
              std::to_string(read.table.GetInstances().size()) + " instances, " +
              (root ? "root " + OneLine(*root) : std::string("no root"));
    } else {
      line += read.ErrorText();
      allRead = false;
    }
    out.Write(line + "\n");
    out.Flush();
  }
  out.Commit();
  return allRead ? 0 : 1;
}

}  // namespace kova::tool
