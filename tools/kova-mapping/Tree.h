// The product structure of a mapping table as a tree: a reference, its instances, and under each
// instance the reference it instantiates (found by the instance's RefId among the references'
// kOVA ids, the first match winning), and so on down.
//
// The root reference (the first reference that is not local) comes first. References that no walk
// from the root reaches come after it, each at the top of a tree of its own: first those that no
// instance of the table instantiates, then the rest (references only reached through a cycle), in
// table order, leaving out those that an earlier top already reaches.
//
// The walk is iterative and each reference is expanded (its instances listed) at most once, so the
// tree has at most one line per reference and two per instance, plus the tops, whatever the
// shape of the table:
//  - a reference met again on the path that leads to it is a cycle: listed, not expanded;
//  - a reference met again elsewhere after its instances were listed is "see above";
//  - an instance whose RefId names no reference of the table leads to an absent reference;
//  - a reference more than the depth limit of instances below its top is listed, not expanded.
#ifndef KOVA_TOOLS_KOVA_MAPPING_TREE_H_
#define KOVA_TOOLS_KOVA_MAPPING_TREE_H_

#include <KOVAMappingServices/KOVAMappingTable.h>

#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace kova::tool {

// The depth limit, in instances below the top of a tree: by default, and at most.
inline constexpr int kDefaultTreeDepth = 100;
inline constexpr int kMaxTreeDepth = 1000;

inline constexpr std::size_t kNoPosition = std::numeric_limits<std::size_t>::max();

// One line of the tree, in the order of the lines (each node before its children).
struct TreeNode {
  enum class Kind { kReference, kInstance };
  Kind kind = Kind::kReference;
  // 0 for the top of a tree; a reference's instances one level below it, the reference an
  // instance instantiates one level below the instance.
  int level = 0;
  bool last = true;                  // the last child of its parent (tops and instantiated references are)
  std::size_t parent = kNoPosition;  // the parent's line (kNoPosition for a top)
  std::string kovaId;
  // References: the position in the table's references, or kNoPosition when absent. Instances:
  // the position among all instances of the table (reference by reference, in table order).
  std::size_t position = kNoPosition;

  bool local = false;
  bool root = false;        // references: the table's root
  bool absent = false;      // references: no reference of the table has this kOVA id
  bool unreached = false;   // references: the top of a tree after the root's
  bool cycle = false;       // references: already on the path from the top, not expanded
  bool seeAbove = false;    // references: instances listed above, not again
  bool depthLimit = false;  // references: instances not listed, the depth limit was reached
};

// The lines of the table's tree, references expanded at most maxDepth instances below their top.
std::vector<TreeNode> ProductTree(const KOVAMappingTable& table, int maxDepth = kDefaultTreeDepth);

// The marks of a line, in this order: root, local, absent, unreached, cycle, see above, depth
// limit.
std::vector<std::string> TreeMarks(const TreeNode& node);

// "reference ID (mark, mark)" or "instance ID (local)": the kOVA id shown as ShowValue shows it,
// the marks in parentheses when there are some.
std::string TreeLabel(const TreeNode& node);

// The tree as text, one line a node, drawn with box-drawing characters (├── │ └──) or, with ascii,
// with |-- | `--. Each line is handed to write with its final newline.
void WriteTreeText(const std::vector<TreeNode>& nodes, bool ascii, const std::function<void(std::string_view)>& write);

// The tree as a Graphviz digraph: one node for each reference and each instance listed (absent
// references by kOVA id), edges from a reference to its instances and from an instance to the
// reference it instantiates.
void WriteTreeDot(const std::vector<TreeNode>& nodes, const std::function<void(std::string_view)>& write);

}  // namespace kova::tool

#endif  // KOVA_TOOLS_KOVA_MAPPING_TREE_H_
