// check FILE...: whether each document reads, and what it holds.
#include <string>

#include "Commands.h"
#include "DocumentCheck.h"
#include "Io.h"
#include "Status.h"
#include "Text.h"

namespace kova::tool {

int RunCheck(const CheckOptions& options) {
  Output out(options.output);
  bool allRead = true;
  for (const std::string& file : options.files) {
    const DocumentSummary summary = CheckFile(file, DocumentCheckOptions{});
    allRead = allRead && summary.ok;
    if (options.json) {
      out.Write(SummaryRecord(file, summary, false, false).Text() + "\n");
    } else if (summary.inputError) {
      out.Flush();
      PrintError(SummaryText(summary));
      continue;
    } else {
      out.Write(OneLine(file) + ": " + SummaryText(summary) + "\n");
    }
    out.Flush();
  }
  out.Commit();
  return allRead ? 0 : 1;
}

}  // namespace kova::tool
