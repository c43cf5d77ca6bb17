#include "Diff.h"

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateInstance.h>
#include <KOVAMappingServices/KOVAMappingPrivateReference.h>
#include <KOVAMappingServices/KOVAMappingReference.h>
#include <KOVAMappingServices/KOVAPrivateAccess.h>

#include <cstddef>
#include <cstdint>
#include <deque>
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

TableState StateOf(KOVAMappingTable& table) {
  TableState state;
  for (KOVAMappingReference& reference : table.GetReferences()) {
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

void AddChange(std::string& changes, const char* field, const std::string& before, const std::string& after) {
  if (before == after) return;
  if (!changes.empty()) changes.append(", ");
  changes.append(field).append(" ").append(ShowValue(before)).append(" -> ").append(ShowValue(after));
}

std::string Changes(const ObjectState& before, const ObjectState& after, bool isInstance) {
  std::string changes;
  AddChange(changes, "PlexoId", before.plexoId, after.plexoId);
  if (before.isLocal != after.isLocal) {
    AddChange(changes, "IsLocal", before.isLocal ? "true" : "false", after.isLocal ? "true" : "false");
  }
  if (isInstance) AddChange(changes, "RefId", before.refId, after.refId);
  AddChange(changes, "CustomData", before.customData, after.customData);
  AddChange(changes, "KOVASynchroStamp", before.stamp, after.stamp);
  return changes;
}

struct Groups {
  std::vector<std::string> removed;
  std::vector<std::string> added;
  std::vector<std::string> moved;
  std::vector<std::string> changed;
};

void Compare(const std::vector<ObjectState>& before, const std::vector<ObjectState>& after, bool isInstance,
             Groups& groups) {
  const char* kind = isInstance ? "instance " : "reference ";
  const auto label = [&](const ObjectState& state) {
    std::string text = kind + ShowValue(state.kovaId);
    if (isInstance) text += " (in " + ShowValue(state.parent) + ")";
    return text;
  };
  const std::vector<std::optional<std::size_t>> matches = Match(before, after);
  std::vector<bool> matched(after.size(), false);
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (!matches[i]) {
      groups.removed.push_back("- " + label(before[i]));
      continue;
    }
    const ObjectState& now = after[*matches[i]];
    matched[*matches[i]] = true;
    if (isInstance && before[i].parent != now.parent) {
      groups.moved.push_back("> " + std::string(kind) + ShowValue(now.kovaId) + ": " + ShowValue(before[i].parent) +
                             " -> " + ShowValue(now.parent));
    }
    const std::string changes = Changes(before[i], now, isInstance);
    if (!changes.empty()) groups.changed.push_back("~ " + std::string(kind) + ShowValue(now.kovaId) + ": " + changes);
  }
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (!matched[i]) groups.added.push_back("+ " + label(after[i]));
  }
}

void Append(std::vector<std::string>& lines, const std::vector<std::string>& group) {
  lines.insert(lines.end(), group.begin(), group.end());
}

}  // namespace

std::string TableDiff::Summary() const {
  return "summary: " + std::to_string(added) + " added, " + std::to_string(removed) + " removed, " +
         std::to_string(moved) + " moved, " + std::to_string(changed) + " changed";
}

TableDiff DiffTables(KOVAMappingTable& before, KOVAMappingTable& after) {
  const TableState old = StateOf(before);
  const TableState now = StateOf(after);
  Groups references;
  Groups instances;
  Compare(old.references, now.references, false, references);
  Compare(old.instances, now.instances, true, instances);

  TableDiff diff;
  Append(diff.lines, references.removed);
  Append(diff.lines, instances.removed);
  Append(diff.lines, references.added);
  Append(diff.lines, instances.added);
  Append(diff.lines, instances.moved);
  Append(diff.lines, references.changed);
  Append(diff.lines, instances.changed);
  diff.removed = static_cast<int>(references.removed.size() + instances.removed.size());
  diff.added = static_cast<int>(references.added.size() + instances.added.size());
  diff.moved = static_cast<int>(instances.moved.size());
  diff.changed = static_cast<int>(references.changed.size() + instances.changed.size());
  return diff;
}

}  // namespace kova::tool
