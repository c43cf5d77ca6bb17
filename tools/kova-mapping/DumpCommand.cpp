// dump FILE: the table as the library dumps it, then the custom data of the objects that have some.
#include <KOVAMappingServices/KOVALogger.h>
#include <KOVAMappingServices/KOVAMappingObject.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <vector>

#include "Commands.h"
#include "DocumentCheck.h"
#include "Documents.h"
#include "Io.h"
#include "JsonLine.h"
#include "Text.h"

namespace kova::tool {

namespace {

// The fields every object's record has.
JsonLine& ObjectFields(JsonLine& record, const KOVAMappingPrivateObject& object) {
  return record.String("kova_id", object.GetKOVAID().View())
      .String("plexo_id", object.GetPlexoID().View())
      .String("stamp", object.GetKSStamp().View())
      .Number("stamp_version", object.GetKSSVersion())
      .String("custom_data", object.GetCustomData().View())
      .Bool("is_local", object.GetIsLocal());
}

// The table as one JSON object: version, root and the references with their instances.
std::string TableJson(KOVAMappingTable& table) {
  std::vector<std::string> references;
  const KOVAMappingTable& listed = table;
  for (const KOVAMappingReference& reference : listed.GetReferences()) {
    std::vector<std::string> instances;
    for (const KOVAMappingInstance& instance : reference.GetInstances()) {
      const auto object = KOVAPrivateAccess::GetPrivate(instance);
      JsonLine record;
      ObjectFields(record, *object).String("ref_id", object->GetRefID().View());
      instances.push_back(record.Text());
    }
    JsonLine record;
    ObjectFields(record, *KOVAPrivateAccess::GetPrivate(reference)).Raw("instances", JsonArray(instances));
    references.push_back(record.Text());
  }
  return JsonLine()
      .Number("version", RecordedVersion(table))
      .OptionalString("root", RootId(table))
      .Raw("references", JsonArray(references))
      .Text();
}

}  // namespace

int RunDump(const DumpOptions& options) {
  const std::string text = ReadInput(options.file);
  Output out(options.output);
  DocumentRead read = ReadDocument(text);
  if (options.json) {
    // One record: the check's fields, and the table (what was read, also after a failure).
    const DocumentSummary summary = Summarize(read, DocumentCheckOptions{});
    out.Write(SummaryRecord(options.file, summary, false, false).Raw("table", TableJson(read.table)).Text() + "\n");
    out.Commit();
    return read.Ok() ? 0 : 1;
  }
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
