// What changed between two mapping tables, as a Graphviz digraph.
//
// The graph holds the objects of both tables: every reference and instance of the new table, and
// those of the old table that the new one no longer has, each once. A reference is a box, an
// instance an ellipse; edges go from a reference to its instances (solid) and from an instance to
// the reference it instantiates (dashed), a reference that neither table has being a dashed box.
// The records of the diff colour them:
//
//   removed  red          the object, and its edges, from the old table
//   added    forestgreen  the object and its edges
//   moved    blue         the instance, its edge from its new reference, and a dashed edge from its
//                         old reference
//   changed  darkorange   the object; a changed RefId also gets a dashed edge to the old target
//
// Unchanged objects are grey. An object moved and changed is blue; its label names both. Labels
// are the kOVA id, the marks (root, local, absent) and the changes ("moved from PARENT",
// "changed: FIELD, FIELD").
#ifndef KOVA_TOOLS_KOVA_MAPPING_DIFF_GRAPH_H_
#define KOVA_TOOLS_KOVA_MAPPING_DIFF_GRAPH_H_

#include <KOVAMappingServices/KOVAMappingTable.h>

#include <functional>
#include <string_view>

#include "Diff.h"

namespace kova::tool {

// The graph of diff, the records of DiffTables(before, after), handed to write piece by piece.
void WriteDiffDot(const KOVAMappingTable& before, const KOVAMappingTable& after, const TableDiff& diff,
                  const std::function<void(std::string_view)>& write);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_DIFF_GRAPH_H_
