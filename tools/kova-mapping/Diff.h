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

// One field of a changed object: its document key and its old and new values as text ("true" and
// "false" for IsLocal, "V<stamp version>:<stamp>" for KOVASynchroStamp).
struct FieldChange {
  std::string field;
  std::string before;
  std::string after;
};

// One record of a diff. For an instance, parent is the kOVA id of the reference it stands under:
// in the old table when removed, in the new one otherwise; a move also has the old parent.
struct DiffChange {
  enum class Kind { kRemoved, kAdded, kMoved, kChanged };
  Kind kind = Kind::kChanged;
  bool isInstance = false;
  std::string kovaId;
  std::string parent;
  std::string oldParent;            // kMoved only
  std::vector<FieldChange> fields;  // kChanged only, in the order PlexoId, IsLocal, RefId, CustomData, KOVASynchroStamp
};

// "removed", "added", "moved" or "changed".
const char* KindName(DiffChange::Kind kind);

struct TableDiff {
  // The records in the order of the lines above.
  std::vector<DiffChange> changes;
  // Objects (references and instances) in each group; an instance that moved and changed counts
  // in both.
  int added = 0;
  int removed = 0;
  int moved = 0;
  int changed = 0;

  bool Equal() const { return changes.empty(); }
  // The lines of the records, as shown above.
  std::vector<std::string> Lines() const;
  // "summary: A added, R removed, M moved, C changed"
  std::string Summary() const;
};

TableDiff DiffTables(const KOVAMappingTable& before, const KOVAMappingTable& after);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_DIFF_H_
