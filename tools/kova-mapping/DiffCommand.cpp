// diff OLD NEW: what changed between two saves of a mapping document, as lines or as a graph.
#include <string_view>

#include "Commands.h"
#include "Diff.h"
#include "DiffGraph.h"
#include "Documents.h"
#include "Io.h"
#include "JsonLine.h"
#include "Status.h"

namespace kova::tool {

namespace {

// A change as its machine-readable record: a move's parents and a change's fields, each with its
// old and new values (IsLocal as booleans).
std::string ChangeRecord(const DiffChange& change) {
  JsonLine fields;
  if (change.kind == DiffChange::Kind::kMoved) {
    fields.Raw("parent", JsonLine().String("old", change.oldParent).String("new", change.parent).Text());
  }
  for (const FieldChange& field : change.fields) {
    JsonLine values;
    if (field.field == "IsLocal") {
      values.Bool("old", field.before == "true").Bool("new", field.after == "true");
    } else {
      values.String("old", field.before).String("new", field.after);
    }
    fields.Raw(field.field, values.Text());
  }
  JsonLine record;
  record.String("kind", KindName(change.kind))
      .String("object", change.isInstance ? "instance" : "reference")
      .String("kova_id", change.kovaId);
  if (change.isInstance) {
    record.String("parent", change.parent);
  } else {
    record.Null("parent");
  }
  return record.Raw("fields", fields.Text()).Text();
}

}  // namespace

int RunDiff(const DiffOptions& options) {
  const std::string oldText = ReadInput(options.oldFile);
  const std::string newText = ReadInput(options.newFile);
  Output out(options.output);
  DocumentRead before = ReadDocument(oldText);
  if (!before.Ok()) throw ToolError(options.oldFile + ": " + before.ErrorText());
  DocumentRead after = ReadDocument(newText);
  if (!after.Ok()) throw ToolError(options.newFile + ": " + after.ErrorText());

  const TableDiff diff = DiffTables(before.table, after.table);
  if (options.json) {
    for (const DiffChange& change : diff.changes) out.Write(ChangeRecord(change) + "\n");
    out.Write(JsonLine()
                  .Bool("summary", true)
                  .Number("added", diff.added)
                  .Number("removed", diff.removed)
                  .Number("moved", diff.moved)
                  .Number("changed", diff.changed)
                  .Text() +
              "\n");
  } else if (options.format == "dot") {
    WriteDiffDot(before.table, after.table, diff, [&out](std::string_view piece) { out.Write(piece); });
  } else {
    for (const std::string& line : diff.Lines()) out.Write(line + "\n");
    out.Write(diff.Summary() + "\n");
  }
  out.Commit();
  return diff.Equal() ? 0 : 1;
}

}  // namespace kova::tool
