#include "Diff.h"

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <iterator>
#include <optional>
#include <unordered_map>

#include "Text.h"

namespace kova::tool {

namespace {

// The compared fields of one object, read once.
struct ObjectState {
  std::string kovaId;
  std::string plexoId;
  std::string refId;  // instances only
  std::string customData;
  std::string stamp;  // "V<stamp version>:<stamp>"
  bool isLocal = false;
  std::string parent;  // instances: the kOVA id of the reference they stand under
};

std::string VersionedStamp(const KOVAMappingPrivateObject& object) {
  std::string text = "V";
  text.append(std::to_string(object.GetKSSVersion())).append(":").append(object.GetKSStamp().View());
  return text;
}

ObjectState StateOf(const KOVAMappingPrivateObject& object) {
  ObjectState state;
  state.kovaId = object.GetKOVAID().ConvertToChar();
  state.plexoId = object.GetPlexoID().ConvertToChar();
  state.customData = object.GetCustomData().ConvertToChar();
  state.stamp = VersionedStamp(object);
  state.isLocal = object.GetIsLocal();
  return state;
}

struct TableState {
  std::vector<ObjectState> references;
  std::vector<ObjectState> instances;
};

TableState StateOf(const KOVAMappingTable& table) {
  TableState state;
  for (const KOVAMappingReference& reference : table.GetReferences()) {
    const auto privateReference = KOVAPrivateAccess::GetPrivate(reference);
    state.references.push_back(StateOf(*privateReference));
    for (const KOVAMappingInstance& instance : privateReference->GetInstances()) {
      const auto privateInstance = KOVAPrivateAccess::GetPrivate(instance);
      ObjectState instanceState = StateOf(*privateInstance);
      instanceState.refId = privateInstance->GetRefID().ConvertToChar();
      instanceState.parent = state.references.back().kovaId;
      state.instances.push_back(std::move(instanceState));
    }
  }
  return state;
}

// For each object of before, the position of its match in after: first among the objects of the
// same kOVA id under the same parent (references have none), then among the rest of that kOVA id,
// occurrence by occurrence in table order.
std::vector<std::optional<std::size_t>> Match(const std::vector<ObjectState>& before,
                                              const std::vector<ObjectState>& after) {
  std::vector<std::optional<std::size_t>> matches(before.size());
  std::vector<bool> taken(after.size(), false);
  const auto pair = [&](auto key) {
    std::unordered_map<std::string, std::deque<std::size_t>> waiting;
    for (std::size_t i = 0; i < after.size(); ++i) {
      if (!taken[i]) waiting[key(after[i])].push_back(i);
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
      if (matches[i]) continue;
      const auto found = waiting.find(key(before[i]));
      if (found == waiting.end() || found->second.empty()) continue;
      matches[i] = found->second.front();
      taken[found->second.front()] = true;
      found->second.pop_front();
    }
  };
  pair([](const ObjectState& state) { return state.kovaId + '\0' + state.parent; });
  pair([](const ObjectState& state) { return state.kovaId; });
  return matches;
}

void AddChange(std::vector<FieldChange>& fields, const char* field, const std::string& before,
               const std::string& after) {
  if (before != after) fields.push_back({field, before, after});
}

std::vector<FieldChange> Changes(const ObjectState& before, const ObjectState& after, bool isInstance) {
  std::vector<FieldChange> fields;
  AddChange(fields, "PlexoId", before.plexoId, after.plexoId);
  AddChange(fields, "IsLocal", before.isLocal ? "true" : "false", after.isLocal ? "true" : "false");
  if (isInstance) AddChange(fields, "RefId", before.refId, after.refId);
  AddChange(fields, "CustomData", before.customData, after.customData);
  AddChange(fields, "KOVASynchroStamp", before.stamp, after.stamp);
  return fields;
}

struct Groups {
  std::vector<DiffChange> removed;
  std::vector<DiffChange> added;
  std::vector<DiffChange> moved;
  std::vector<DiffChange> changed;
};

DiffChange Record(DiffChange::Kind kind, bool isInstance, const ObjectState& state) {
  DiffChange change;
  change.kind = kind;
  change.isInstance = isInstance;
  change.kovaId = state.kovaId;
  change.parent = state.parent;
  return change;
}

void Compare(const std::vector<ObjectState>& before, const std::vector<ObjectState>& after, bool isInstance,
             Groups& groups) {
  using Kind = DiffChange::Kind;
  const std::vector<std::optional<std::size_t>> matches = Match(before, after);
  std::vector<bool> matched(after.size(), false);
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (!matches[i]) {
      groups.removed.push_back(Record(Kind::kRemoved, isInstance, before[i]));
      continue;
    }
    const ObjectState& now = after[*matches[i]];
    matched[*matches[i]] = true;
    if (isInstance && before[i].parent != now.parent) {
      DiffChange move = Record(Kind::kMoved, isInstance, now);
      move.oldParent = before[i].parent;
      groups.moved.push_back(std::move(move));
    }
    std::vector<FieldChange> fields = Changes(before[i], now, isInstance);
    if (!fields.empty()) {
      DiffChange change = Record(Kind::kChanged, isInstance, now);
      change.fields = std::move(fields);
      groups.changed.push_back(std::move(change));
    }
  }
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (!matched[i]) groups.added.push_back(Record(Kind::kAdded, isInstance, after[i]));
  }
}

void Append(std::vector<DiffChange>& changes, std::vector<DiffChange>& group) {
  changes.insert(changes.end(), std::make_move_iterator(group.begin()), std::make_move_iterator(group.end()));
}

std::string Line(const DiffChange& change) {
  using Kind = DiffChange::Kind;
  std::string line;
  switch (change.kind) {
    case Kind::kRemoved: line = "- "; break;
    case Kind::kAdded: line = "+ "; break;
    case Kind::kMoved: line = "> "; break;
    case Kind::kChanged: line = "~ "; break;
  }
  line += change.isInstance ? "instance " : "reference ";
  line += ShowValue(change.kovaId);
  if (change.kind == Kind::kMoved) return line + ": " + ShowValue(change.oldParent) + " -> " + ShowValue(change.parent);
  if (change.kind == Kind::kChanged) {
    line += ": ";
    for (std::size_t i = 0; i < change.fields.size(); ++i) {
      const FieldChange& field = change.fields[i];
      if (i > 0) line += ", ";
      line += field.field + " " + ShowValue(field.before) + " -> " + ShowValue(field.after);
    }
    return line;
  }
  if (change.isInstance) line += " (in " + ShowValue(change.parent) + ")";
  return line;
}

}  // namespace

const char* KindName(DiffChange::Kind kind) {
  switch (kind) {
    case DiffChange::Kind::kRemoved: return "removed";
    case DiffChange::Kind::kAdded: return "added";
    case DiffChange::Kind::kMoved: return "moved";
    case DiffChange::Kind::kChanged: return "changed";
  }
  return "changed";
}

std::vector<std::string> TableDiff::Lines() const {
  std::vector<std::string> lines;
  lines.reserve(changes.size());
  for (const DiffChange& change : changes) lines.push_back(Line(change));
  return lines;
}

std::string TableDiff::Summary() const {
  return "summary: " + std::to_string(added) + " added, " + std::to_string(removed) + " removed, " +
         std::to_string(moved) + " moved, " + std::to_string(changed) + " changed";
}

TableDiff DiffTables(const KOVAMappingTable& before, const KOVAMappingTable& after) {
  const TableState old = StateOf(before);
  const TableState now = StateOf(after);
  Groups references;
  Groups instances;
  Compare(old.references, now.references, false, references);
  Compare(old.instances, now.instances, true, instances);

  TableDiff diff;
  diff.removed = static_cast<int>(references.removed.size() + instances.removed.size());
  diff.added = static_cast<int>(references.added.size() + instances.added.size());
  diff.moved = static_cast<int>(instances.moved.size());
  diff.changed = static_cast<int>(references.changed.size() + instances.changed.size());
  Append(diff.changes, references.removed);
  Append(diff.changes, instances.removed);
  Append(diff.changes, references.added);
  Append(diff.changes, instances.added);
  Append(diff.changes, instances.moved);
  Append(diff.changes, references.changed);
  Append(diff.changes, instances.changed);
  return diff;
}

}  // namespace kova::tool
