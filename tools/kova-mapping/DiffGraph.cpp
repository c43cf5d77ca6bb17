#include "DiffGraph.h"

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingReference.h>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Dot.h"
#include "Text.h"

namespace kova::tool {

namespace {

using Kind = DiffChange::Kind;

// The key of an object in the graph: references by kOVA id, instances by kOVA id and the kOVA id of
// the reference they stand under (the way the diff names them).
std::string ReferenceKey(const std::string& kovaId) { return "R" + kovaId; }
std::string InstanceKey(const std::string& parent, const std::string& kovaId) {
  return "I" + std::to_string(parent.size()) + ":" + parent + kovaId;
}

const char* KindColour(Kind kind) {
  switch (kind) {
    case Kind::kRemoved: return "red";
    case Kind::kAdded: return "forestgreen";
    case Kind::kMoved: return "blue";
    case Kind::kChanged: return "darkorange";
  }
  return "black";
}

struct Node {
  std::string name;
  bool isInstance = false;
  std::string kovaId;
  bool local = false;
  bool root = false;
  bool absent = false;
  std::vector<const DiffChange*> changes;  // in the order of the records
};

struct Edge {
  std::size_t from;
  std::string to;  // a node's key, resolved once every object is in
  std::string attributes;
};

class Graph {
 public:
  explicit Graph(const TableDiff& diff) {
    for (const DiffChange& change : diff.changes) {
      if (change.kind == Kind::kRemoved) {
        removed_.emplace(Key(change.isInstance, change.parent, change.kovaId), &change);
      } else {
        changes_[Key(change.isInstance, change.parent, change.kovaId)].push_back(&change);
      }
      if (change.kind == Kind::kMoved) {
        movedFrom_.emplace(InstanceKey(change.oldParent, change.kovaId), InstanceKey(change.parent, change.kovaId));
      }
    }
  }

  // Every object of the new table, with its edges.
  void AddNew(const KOVAMappingTable& table) {
    bool rootSeen = false;
    for (const KOVAMappingReference& reference : table.GetReferences()) {
      const std::string id = reference.GetKOVAID().ConvertToChar();
      const bool root = !rootSeen && !reference.GetIsLocal();
      rootSeen = rootSeen || root;
      const std::size_t parent =
          Add(ReferenceKey(id), false, id, reference.GetIsLocal(), root, ChangesOf(ReferenceKey(id)));
      for (const KOVAMappingInstance& instance : reference.GetInstances()) {
        const std::string instanceId = instance.GetKOVAID().ConvertToChar();
        const std::string key = InstanceKey(id, instanceId);
        const std::size_t node = Add(key, true, instanceId, instance.GetIsLocal(), false, ChangesOf(key));
        AddEdges(parent, node, key, instance.GetRefID().ConvertToChar());
        for (const DiffChange* change : nodes_[node].changes) {
          for (const FieldChange& field : change->fields) {
            if (field.field != "RefId") continue;
            edges_.push_back({node, ReferenceKey(field.before), "style=dashed, color=darkorange"});
          }
        }
      }
    }
  }

  // The objects of the old table that the new one no longer has, and the old places of the moved
  // instances.
  void AddOld(const KOVAMappingTable& table) {
    bool rootSeen = false;
    for (const KOVAMappingReference& reference : table.GetReferences()) {
      const std::string id = reference.GetKOVAID().ConvertToChar();
      const bool root = !rootSeen && !reference.GetIsLocal();
      rootSeen = rootSeen || root;
      const std::string referenceKey = ReferenceKey(id);
      std::size_t parent = 0;
      if (const auto found = index_.find(referenceKey); found != index_.end()) {
        parent = found->second;
      } else {
        parent = Add(referenceKey, false, id, reference.GetIsLocal(), root, RemovedOf(referenceKey));
      }
      for (const KOVAMappingInstance& instance : reference.GetInstances()) {
        const std::string instanceId = instance.GetKOVAID().ConvertToChar();
        const std::string key = InstanceKey(id, instanceId);
        if (const auto moved = movedFrom_.find(key); moved != movedFrom_.end()) {
          // The edge leads from the old place to the instance where it is now.
          edges_.push_back({parent, moved->second, "style=dashed, color=blue"});
          continue;
        }
        if (index_.count(key) > 0) continue;
        const std::size_t node = Add(key, true, instanceId, instance.GetIsLocal(), false, RemovedOf(key));
        AddEdges(parent, node, key, instance.GetRefID().ConvertToChar());
      }
    }
  }

  void Write(const std::function<void(std::string_view)>& write) {
    // Targets that neither table has become absent references.
    for (const Edge& edge : edges_) {
      if (index_.count(edge.to) == 0) {
        const std::size_t node = Add(edge.to, false, edge.to.substr(1), false, false, {});
        nodes_[node].absent = true;
      }
    }
    write(
        "digraph diff {\n"
        "  node [fontname=\"Helvetica\", fontsize=10];\n"
        "  edge [color=\"gray40\"];\n");
    for (const Node& node : nodes_) write("  " + node.name + " [" + Attributes(node) + "];\n");
    for (const Edge& edge : edges_) {
      std::string line = "  " + nodes_[edge.from].name + " -> " + nodes_[index_.at(edge.to)].name;
      if (!edge.attributes.empty()) line += " [" + edge.attributes + "]";
      write(line + ";\n");
    }
    write("}\n");
  }

 private:
  static std::string Key(bool isInstance, const std::string& parent, const std::string& kovaId) {
    return isInstance ? InstanceKey(parent, kovaId) : ReferenceKey(kovaId);
  }

  std::vector<const DiffChange*> ChangesOf(const std::string& key) const {
    const auto found = changes_.find(key);
    return found == changes_.end() ? std::vector<const DiffChange*>{} : found->second;
  }

  std::vector<const DiffChange*> RemovedOf(const std::string& key) const {
    const auto found = removed_.find(key);
    return found == removed_.end() ? std::vector<const DiffChange*>{} : std::vector<const DiffChange*>{found->second};
  }

  std::size_t Add(const std::string& key, bool isInstance, const std::string& kovaId, bool local, bool root,
                  std::vector<const DiffChange*> changes) {
    const auto [at, added] = index_.try_emplace(key, nodes_.size());
    if (!added) return at->second;
    Node node;
    node.name = "n" + std::to_string(nodes_.size());
    node.isInstance = isInstance;
    node.kovaId = kovaId;
    node.local = local;
    node.root = root;
    node.changes = std::move(changes);
    nodes_.push_back(std::move(node));
    return nodes_.size() - 1;
  }

  // The edges of an instance: from the reference it stands under, coloured when the instance was
  // added, removed or moved; to the reference it instantiates (dashed), coloured when the instance
  // was added or removed.
  void AddEdges(std::size_t parent, std::size_t node, const std::string& key, const std::string& refId) {
    std::string under;
    std::string instantiates = "style=dashed";
    for (const DiffChange* change : nodes_[node].changes) {
      if (change->kind == Kind::kChanged || !under.empty()) continue;
      under = std::string("color=") + KindColour(change->kind);
      if (change->kind != Kind::kMoved) instantiates += ", " + under;
    }
    edges_.push_back({parent, key, under});
    edges_.push_back({node, ReferenceKey(refId), instantiates});
  }

  static std::string Attributes(const Node& node) {
    std::vector<std::string> label{ShowValue(node.kovaId)};
    std::string marks;
    const auto mark = [&marks](const char* text) { marks += (marks.empty() ? "(" : ", ") + std::string(text); };
    if (node.root) mark("root");
    if (node.local) mark("local");
    if (node.absent) mark("absent");
    if (!marks.empty()) label.push_back(marks + ")");
    for (const DiffChange* change : node.changes) {
      std::string line = KindName(change->kind);
      if (change->kind == Kind::kMoved) line += " from " + ShowValue(change->oldParent);
      if (change->kind == Kind::kChanged) {
        line += ":";
        for (std::size_t i = 0; i < change->fields.size(); ++i) line += (i == 0 ? " " : ", ") + change->fields[i].field;
      }
      label.push_back(std::move(line));
    }

    std::string attributes = node.isInstance ? "shape=ellipse" : "shape=box";
    if (node.root) attributes += ", penwidth=2";
    if (node.absent) attributes += ", style=dashed";
    if (node.local) attributes += ", style=filled, fillcolor=\"gray92\"";
    if (node.changes.empty()) {
      attributes += ", color=\"gray50\", fontcolor=\"gray30\"";
    } else {
      const char* colour = KindColour(node.changes.front()->kind);
      attributes += std::string(", color=") + colour + ", fontcolor=" + colour;
      if (!node.root) attributes += ", penwidth=2";
    }
    return attributes + ", label=" + DotLabel(label);
  }

  std::unordered_map<std::string, std::vector<const DiffChange*>> changes_;  // new keys
  std::unordered_map<std::string, const DiffChange*> removed_;               // old keys
  std::unordered_map<std::string, std::string> movedFrom_;                   // old key to new key
  std::vector<Node> nodes_;
  std::unordered_map<std::string, std::size_t> index_;
  std::vector<Edge> edges_;
};

}  // namespace

void WriteDiffDot(const KOVAMappingTable& before, const KOVAMappingTable& after, const TableDiff& diff,
                  const std::function<void(std::string_view)>& write) {
  Graph graph(diff);
  graph.AddNew(after);
  graph.AddOld(before);
  graph.Write(write);
}

}  // namespace kova::tool
