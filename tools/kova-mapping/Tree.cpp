#include "Tree.h"

#include <KOVAMappingServices/KOVAMappingInstance.h>
#include <KOVAMappingServices/KOVAMappingReference.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "Dot.h"
#include "Text.h"

namespace kova::tool {

namespace {

// What the walk needs of the table, read once.
struct Structure {
  const std::vector<KOVAMappingReference>& references;
  std::vector<std::size_t> firstInstance;  // by reference: the position of its first instance
  std::vector<std::size_t> target;         // by instance: the reference it instantiates, or kNoPosition
  std::vector<bool> instantiated;          // by reference: some instance of the table instantiates it
  std::size_t root = kNoPosition;

  explicit Structure(const KOVAMappingTable& table) : references(table.GetReferences()) {
    std::unordered_map<std::string, std::size_t> byId;
    byId.reserve(references.size());
    for (std::size_t r = 0; r < references.size(); ++r) {
      byId.try_emplace(references[r].GetKOVAID().ConvertToChar(), r);
      if (root == kNoPosition && !references[r].GetIsLocal()) root = r;
    }
    instantiated.assign(references.size(), false);
    firstInstance.reserve(references.size());
    for (const KOVAMappingReference& reference : references) {
      firstInstance.push_back(target.size());
      for (const KOVAMappingInstance& instance : reference.GetInstances()) {
        const auto found = byId.find(instance.GetRefID().ConvertToChar());
        target.push_back(found == byId.end() ? kNoPosition : found->second);
        if (found != byId.end()) instantiated[found->second] = true;
      }
    }
  }

  std::size_t InstanceCount(std::size_t reference) const { return references[reference].GetInstances().size(); }
};

// Marks every reference that the walk from top reaches, whatever the depth.
void Reach(const Structure& structure, std::size_t top, std::vector<bool>& reached) {
  if (reached[top]) return;
  reached[top] = true;
  std::vector<std::size_t> pending{top};
  while (!pending.empty()) {
    const std::size_t reference = pending.back();
    pending.pop_back();
    const std::size_t first = structure.firstInstance[reference];
    for (std::size_t i = first; i < first + structure.InstanceCount(reference); ++i) {
      const std::size_t next = structure.target[i];
      if (next == kNoPosition || reached[next]) continue;
      reached[next] = true;
      pending.push_back(next);
    }
  }
}

// The tops of the trees: the root, then the references it does not reach (see Tree.h).
std::vector<std::size_t> Tops(const Structure& structure) {
  const std::size_t count = structure.references.size();
  std::vector<std::size_t> tops;
  std::vector<bool> reached(count, false);
  if (structure.root != kNoPosition) {
    tops.push_back(structure.root);
    Reach(structure, structure.root, reached);
  }
  for (const bool onlyTheUninstantiated : {true, false}) {
    for (std::size_t r = 0; r < count; ++r) {
      if (reached[r] || (onlyTheUninstantiated && structure.instantiated[r])) continue;
      tops.push_back(r);
      Reach(structure, r, reached);
    }
  }
  return tops;
}

class Walk {
 public:
  Walk(const Structure& structure, int maxDepth)
      : structure_(structure),
        maxDepth_(maxDepth),
        expanded_(structure.references.size(), false),
        onPath_(structure.references.size(), false) {}

  std::vector<TreeNode> Run() {
    for (const std::size_t top : Tops(structure_)) {
      TreeNode node = ReferenceNode(top, 0, kNoPosition);
      node.unreached = top != structure_.root;
      Place(std::move(node), 0);
      // The references whose instances are being listed, from the top down.
      while (!stack_.empty()) {
        Frame& frame = stack_.back();
        const std::size_t count = structure_.InstanceCount(frame.reference);
        if (frame.next == count) {
          onPath_[frame.reference] = false;
          stack_.pop_back();
          continue;
        }
        const std::size_t index = frame.next++;
        const Frame at = frame;  // Place may grow the stack
        const KOVAMappingInstance& instance = structure_.references[at.reference].GetInstances()[index];
        TreeNode line;
        line.kind = TreeNode::Kind::kInstance;
        line.level = nodes_[at.line].level + 1;
        line.last = index + 1 == count;
        line.parent = at.line;
        line.kovaId = instance.GetKOVAID().ConvertToChar();
        line.position = structure_.firstInstance[at.reference] + index;
        line.local = instance.GetIsLocal();
        const std::size_t instanceLine = nodes_.size();
        nodes_.push_back(std::move(line));

        const std::size_t target = structure_.target[structure_.firstInstance[at.reference] + index];
        if (target == kNoPosition) {
          TreeNode absent;
          absent.level = nodes_[instanceLine].level + 1;
          absent.parent = instanceLine;
          absent.kovaId = instance.GetRefID().ConvertToChar();
          absent.absent = true;
          nodes_.push_back(std::move(absent));
        } else {
          Place(ReferenceNode(target, nodes_[instanceLine].level + 1, instanceLine), at.depth + 1);
        }
      }
    }
    return std::move(nodes_);
  }

 private:
  struct Frame {
    std::size_t reference;
    std::size_t line;  // the reference's line
    int depth;         // instances between the top and the reference
    std::size_t next;  // the next instance to list
  };

  TreeNode ReferenceNode(std::size_t reference, int level, std::size_t parent) const {
    TreeNode node;
    node.level = level;
    node.parent = parent;
    node.kovaId = structure_.references[reference].GetKOVAID().ConvertToChar();
    node.position = reference;
    node.local = structure_.references[reference].GetIsLocal();
    node.root = reference == structure_.root;
    return node;
  }

  // Adds the line of a reference and, when its instances are to be listed, starts listing them.
  void Place(TreeNode node, int depth) {
    const std::size_t reference = node.position;
    const bool hasInstances = structure_.InstanceCount(reference) > 0;
    bool expand = false;
    if (!hasInstances) {
      // Nothing below it: never marked.
    } else if (onPath_[reference]) {
      node.cycle = true;
    } else if (expanded_[reference]) {
      node.seeAbove = true;
    } else if (depth >= maxDepth_) {
      node.depthLimit = true;
    } else {
      expand = true;
    }
    const std::size_t line = nodes_.size();
    nodes_.push_back(std::move(node));
    if (!expand) return;
    expanded_[reference] = true;
    onPath_[reference] = true;
    stack_.push_back({reference, line, depth, 0});
  }

  const Structure& structure_;
  int maxDepth_;
  std::vector<bool> expanded_;
  std::vector<bool> onPath_;
  std::vector<Frame> stack_;
  std::vector<TreeNode> nodes_;
};

}  // namespace

std::vector<TreeNode> ProductTree(const KOVAMappingTable& table, int maxDepth) {
  const Structure structure(table);
  return Walk(structure, std::max(maxDepth, 0)).Run();
}

std::vector<std::string> TreeMarks(const TreeNode& node) {
  std::vector<std::string> marks;
  if (node.root) marks.emplace_back("root");
  if (node.local) marks.emplace_back("local");
  if (node.absent) marks.emplace_back("absent");
  if (node.unreached) marks.emplace_back("unreached");
  if (node.cycle) marks.emplace_back("cycle");
  if (node.seeAbove) marks.emplace_back("see above");
  if (node.depthLimit) marks.emplace_back("depth limit");
  return marks;
}

namespace {

std::string JoinMarks(const std::vector<std::string>& marks) {
  std::string text = "(";
  for (std::size_t i = 0; i < marks.size(); ++i) {
    if (i > 0) text += ", ";
    text += marks[i];
  }
  return text + ")";
}

}  // namespace

std::string TreeLabel(const TreeNode& node) {
  std::string label = node.kind == TreeNode::Kind::kReference ? "reference " : "instance ";
  label += ShowValue(node.kovaId);
  const std::vector<std::string> marks = TreeMarks(node);
  if (!marks.empty()) label += " " + JoinMarks(marks);
  return label;
}

void WriteTreeText(const std::vector<TreeNode>& nodes, bool ascii, const std::function<void(std::string_view)>& write) {
  const std::string_view branch = ascii ? "|-- " : "\u251C\u2500\u2500 ";      // ├──
  const std::string_view lastBranch = ascii ? "`-- " : "\u2514\u2500\u2500 ";  // └──
  const std::string_view through = ascii ? "|   " : "\u2502   ";               // │
  const std::string_view blank = "    ";
  // By level: whether the line last drawn at that level was its parent's last child, i.e. whether
  // the lines below it are drawn without a vertical bar in that column.
  std::vector<bool> lastAt;
  std::string line;
  for (const TreeNode& node : nodes) {
    const auto level = static_cast<std::size_t>(node.level);
    lastAt.resize(level + 1);
    lastAt[level] = node.last;
    line.clear();
    for (std::size_t column = 1; column < level; ++column) line += lastAt[column] ? blank : through;
    if (level > 0) line += node.last ? lastBranch : branch;
    line += TreeLabel(node);
    line += '\n';
    write(line);
  }
}

void WriteTreeDot(const std::vector<TreeNode>& nodes, const std::function<void(std::string_view)>& write) {
  // Graph nodes, in the order their first line comes: references by position, absent references
  // by kOVA id, instances by position.
  struct GraphNode {
    std::string name;
    const TreeNode* first = nullptr;
    bool expanded = false;  // its instances are listed somewhere
    bool cut = false;       // it is at the depth limit somewhere
  };
  std::vector<GraphNode> graph;
  std::unordered_map<std::size_t, std::size_t> references;
  std::unordered_map<std::size_t, std::size_t> instances;
  std::unordered_map<std::string, std::size_t> absent;
  std::vector<std::size_t> graphNodeOf(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const TreeNode& node = nodes[i];
    std::string name;
    std::size_t index = graph.size();
    if (node.absent) {
      const auto [at, added] = absent.try_emplace(node.kovaId, graph.size());
      index = at->second;
      if (added) name = "a" + std::to_string(absent.size() - 1);
    } else if (node.kind == TreeNode::Kind::kReference) {
      const auto [at, added] = references.try_emplace(node.position, graph.size());
      index = at->second;
      if (added) name = "r" + std::to_string(node.position);
    } else {
      const auto [at, added] = instances.try_emplace(node.position, graph.size());
      index = at->second;
      if (added) name = "i" + std::to_string(node.position);
    }
    if (index == graph.size()) graph.push_back({std::move(name), &node});
    graphNodeOf[i] = index;
    const bool listsInstances = i + 1 < nodes.size() && nodes[i + 1].parent == i;
    if (node.kind == TreeNode::Kind::kReference && listsInstances) graph[index].expanded = true;
    if (node.depthLimit) graph[index].cut = true;
  }

  write(
      "digraph tree {\n"
      "  node [fontname=\"Helvetica\", fontsize=10];\n"
      "  edge [color=\"gray40\"];\n");
  for (const GraphNode& graphNode : graph) {
    TreeNode shown = *graphNode.first;
    shown.cycle = false;
    shown.seeAbove = false;
    shown.depthLimit = graphNode.cut && !graphNode.expanded;
    std::vector<std::string> label{ShowValue(shown.kovaId)};
    const std::vector<std::string> marks = TreeMarks(shown);
    if (!marks.empty()) label.push_back(JoinMarks(marks));
    std::string attributes = shown.kind == TreeNode::Kind::kReference ? "shape=box" : "shape=ellipse";
    if (shown.root) attributes += ", penwidth=2";
    if (shown.absent) attributes += ", style=dashed";
    if (shown.local) attributes += ", style=filled, fillcolor=\"gray92\"";
    write("  " + graphNode.name + " [" + attributes + ", label=" + DotLabel(label) + "];\n");
  }
  // Edges in the order of the lines: reference to instance, instance to what it instantiates
  // (dashed). An edge back up a cycle does not rank its target.
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const TreeNode& node = nodes[i];
    if (node.parent == kNoPosition) continue;
    std::string edge = "  " + graph[graphNodeOf[node.parent]].name + " -> " + graph[graphNodeOf[i]].name;
    if (node.kind == TreeNode::Kind::kReference)
      edge += node.cycle ? " [style=dashed, constraint=false]" : " [style=dashed]";
    write(edge + ";\n");
  }
  write("}\n");
}

}  // namespace kova::tool
