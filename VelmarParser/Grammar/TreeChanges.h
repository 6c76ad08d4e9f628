// Two things about edited trees that the runtime's public interface can only tell by walking all
// children of a node, of which a long document has many.
//
// A tree keeps long lists of children as balanced trees of hidden nodes, and an edit marks the
// nodes on its way. So what changed is found in a few steps from the root, past whatever the edit
// didn't touch. The source beside this knows, as few others do, how the runtime lays out its nodes;
// it is written for the runtime's version that grammars/package.json pins.
#pragma once

#include "VelmarParser/Grammar/TreeUnits.h"

#include <tree_sitter/api.h>

#include <optional>

namespace velmar {

/// Where an edited tree, whose root has changes, says that it was edited: from the start of the
/// first innermost node with changes to the end of the last one. Absent if that is empty or turned
/// round. O(depth).
[[nodiscard]] std::optional<Range<TreeByte>> editedExtentOf(const TSTree& tree);

/// Moves a tree whose text begins at `oldStart` along with that text, which now begins at
/// `newStart` and is otherwise what it was. The tree has no changes before and none after; nodes
/// and cursors of it are invalid. O(depth).
void moveTree(TSTree& tree, TreeByte oldStart, TSPoint oldPoint, TreeByte newStart,
              TSPoint newPoint);

/// Whether a token on the tree's first line was recognised by the column at which it stands. O(1).
[[nodiscard]] bool dependsOnColumn(const TSTree& tree);

} // namespace velmar
