// dump FILE: the table as the library dumps it, then the custom data of the objects that have some.
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingObject.h>

#include <vector>

#include "Commands.h"
#include "Documents.h"
#include "Io.h"
#include "Text.h"

namespace kova::tool {

int RunDump(const DumpOptions& options) {
  const std::string text = ReadInput(options.file);
  Output out(options.output);
  DocumentRead read = ReadDocument(text);
  out.Write(KOVALogger::ToString(read.table).View());
  // References each followed by their instances, in table order.
  for (const KOVAMappingObject& object : read.table.GetContent()) {
    const ZANUnicodeString customData = object.GetCustomData();
    if (customData == ZANUnicodeString("null")) continue;
    out.Write("custom " + OneLine(object.GetKOVAID().View()) + ": " + OneLine(customData.View()) + "\n");
  }
  out.Commit();
  if (read.Ok()) return 0;
  PrintError(options.file + ": " + read.ErrorText());
  return 1;
}

}  // namespace kova::tool
