#include "VelmarParser/Grammar/TreeChanges.h"

#include <language.h>
#include <span>
#include <subtree.h>
#include <tree.h>
#include <vector>

namespace velmar {

namespace {

std::span<Subtree> childrenOf(Subtree node) {
  return {ts_subtree_children(node), ts_subtree_child_count(node)};
}

/// A node and the byte at which its text starts, its padding left out.
struct PlacedNode {
  Subtree node;
  std::uint32_t start;
};

enum class Side { first, last };

/// Of the visible children of a node, those with changes, in order. Hidden children stand for their
/// own.
class ChangedChildren {
public:
  ChangedChildren(const TSLanguage* language, PlacedNode parent) : language_(language) {
    enter(parent);
  }

  std::optional<PlacedNode> next() {
    while (!stack_.empty()) {
      Level& level = stack_.back();
      const auto children = childrenOf(level.parent);
      if (level.index == children.size()) {
        stack_.pop_back();
        continue;
      }
      const Subtree child = children[level.index];
      const std::uint32_t start =
          level.position + (level.index > 0 ? ts_subtree_padding(child).bytes : 0);
      bool isVisible = ts_subtree_visible(child);
      if (!ts_subtree_extra(child)) {
        isVisible |= ts_language_alias_at(language_, level.parent.ptr->production_id,
                                          level.structuralIndex) != 0;
        ++level.structuralIndex;
      }
      ++level.index;
      level.position = start + ts_subtree_size(child).bytes;
      if (!ts_subtree_has_changes(child))
        continue;
      if (isVisible)
        return PlacedNode{child, start};
      enter({child, start});
    }
    return std::nullopt;
  }

private:
  struct Level {
    Subtree parent;
    std::uint32_t position; // where the child before ends; at first, where the parent starts
    std::uint32_t index = 0;
    std::uint32_t structuralIndex = 0;
  };

  void enter(PlacedNode parent) {
    if (ts_subtree_child_count(parent.node) > 0)
      stack_.push_back({parent.node, parent.start});
  }

  const TSLanguage* language_;
  std::vector<Level> stack_;
};

PlacedNode rootOf(const TSTree& tree) {
  return {tree.root, ts_subtree_padding(tree.root).bytes};
}

/// The innermost node with changes, going down to the first or the last of them at each level.
PlacedNode innermostChanged(const TSTree& tree, Side side) {
  PlacedNode node = rootOf(tree);
  while (true) {
    ChangedChildren children(tree.language, node);
    std::optional<PlacedNode> found = children.next();
    if (!found)
      return node;
    if (side == Side::last) {
      while (const auto later = children.next())
        found = later;
    }
    node = *found;
  }
}

/// After an edit all marked nodes belong to the one tree.
void clearChanges(Subtree& root) {
  std::vector<Subtree*> pending{&root};
  while (!pending.empty()) {
    Subtree& node = *pending.back();
    pending.pop_back();
    if (!ts_subtree_has_changes(node))
      continue;
    if (node.data.is_inline)
      node.data.has_changes = false;
    else
      ts_subtree_to_mut_unsafe(node).ptr->has_changes = false;
    for (Subtree& child : childrenOf(node))
      pending.push_back(&child);
  }
}

} // namespace

std::optional<Range<TreeByte>> editedExtentOf(const TSTree& tree) {
  const TreeByte start{innermostChanged(tree, Side::first).start};
  const PlacedNode last = innermostChanged(tree, Side::last);
  const TreeByte end{last.start + ts_subtree_size(last.node).bytes};
  if (end <= start)
    return std::nullopt;
  return Range<TreeByte>(start, end);
}

bool dependsOnColumn(const TSTree& tree) {
  return ts_subtree_depends_on_column(tree.root);
}

void moveTree(TSTree& tree, TreeByte oldStart, TSPoint oldPoint, TreeByte newStart,
              TSPoint newPoint) {
  const TSInputEdit edit{.start_byte = 0,
                         .old_end_byte = oldStart.value,
                         .new_end_byte = newStart.value,
                         .start_point = {0, 0},
                         .old_end_point = oldPoint,
                         .new_end_point = newPoint};
  ts_tree_edit(&tree, &edit);
  clearChanges(tree.root);
}

} // namespace velmar
