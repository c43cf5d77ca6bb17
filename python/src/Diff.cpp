// diff: the records of kova-mapping diff, as tuples the Python side turns into Change objects.
#include <KOVAMappingServices/KOVAMappingTable.h>

#include "Binding.h"
#include "Diff.h"

namespace kova::python {

void BindDiff(py::module_& module) {
  module.def(
      "_diff",
      [](const KOVAMappingTable& before, const KOVAMappingTable& after) {
        const tool::TableDiff diff = tool::DiffTables(before, after);
        py::list records;
        for (const tool::DiffChange& change : diff.changes) {
          py::list fields;
          for (const tool::FieldChange& field : change.fields) {
            fields.append(py::make_tuple(py::str(field.field), py::str(field.before), py::str(field.after)));
          }
          const bool moved = change.kind == tool::DiffChange::Kind::kMoved;
          records.append(py::make_tuple(
              tool::KindName(change.kind), change.isInstance ? "instance" : "reference", py::str(change.kovaId),
              change.isInstance ? py::object(py::str(change.parent)) : py::object(py::none()),
              moved ? py::object(py::str(change.oldParent)) : py::object(py::none()), fields));
        }
        return records;
      },
      py::arg("old"), py::arg("new"));
}

}  // namespace kova::python
