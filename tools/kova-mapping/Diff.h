// What changed between two mapping tables.
//
// References are matched with references and instances with instances (of any reference) by
// their kOVA id. When a kOVA id occurs more than once, objects under the same reference are
// matched first, then the rest occurrence by occurrence, in table order. Lines come in this order: removed, added,
// moved, changed; references before instances in each group:
//
//   - reference ID                    - instance ID (in PARENT)
//   + reference ID                    + instance ID (in PARENT)
//                                     > instance ID: OLD-PARENT -> NEW-PARENT
//   ~ reference ID: FIELD OLD -> NEW[, FIELD OLD -> NEW]...
//   ~ instance ID: FIELD OLD -> NEW[, ...]
//
// PARENT is the kOVA id of the reference the instance stands under. The fields compared are
// PlexoId, IsLocal and CustomData, RefId for instances, and KOVASynchroStamp, shown as
// "V<stamp version>:<stamp>" so that a change of either shows. Ids and values are shown as they
// are, or as JSON string literals when they are empty or hold blanks, quotes, backslashes or
// control characters. The order of references and instances is not compared, nor the documents'
// versions.
#ifndef KOVA_TOOLS_KOVA_MAPPING_DIFF_H_
#define KOVA_TOOLS_KOVA_MAPPING_DIFF_H_

#include <KOVAMappingServices/KOVAMappingTable.h>

#include <string>
#include <vector>

namespace kova::tool {

struct TableDiff {
  std::vector<std::string> lines;
  // Objects (references and instances) in each group; an instance that moved and changed counts
  // in both.
  int added = 0;
  int removed = 0;
  int moved = 0;
  int changed = 0;

  bool Equal() const { return lines.empty(); }
  // "summary: A added, R removed, M moved, C changed"
  std::string Summary() const;
};

TableDiff DiffTables(KOVAMappingTable& before, KOVAMappingTable& after);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_DIFF_H_
