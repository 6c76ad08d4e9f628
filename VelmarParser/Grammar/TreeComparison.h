// Which nodes two trees of the same text don't have in common.
//
// The runtime tells where the structure differs as the user sees it: if a brace turns the root into
// an error, that is everywhere. But a tree that was parsed from an old one shares with it all that
// was taken over, which nobody needs to look at again. Like TreeChanges, the source beside this
// knows how the runtime lays out its nodes.
#pragma once

#include "VelmarParser/Grammar/TreeUnits.h"

#include <tree_sitter/api.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace velmar {

struct TreeDifferences {
  /// Each visible node of either tree that has no equal in the other touches one of these, if only
  /// with its first byte or where it is empty. Nodes are equal if they and all below them have the
  /// same types and ranges and are the same to their parents, which gives aliases, fields and
  /// supertypes. In no particular order.
  std::vector<Range<TreeByte>> places;
  /// From the first to the last token that has an equal but whose text or what lies before it was
  /// edited, if there are any.
  std::optional<Range<TreeByte>> editedTokens;
};

/// How `tree` differs from `old`, the tree that it was parsed from after that had been edited along
/// with the text. Absent if there are more than `mostPlaces`. O(nodes not shared + their children).
[[nodiscard]] std::optional<TreeDifferences> differencesOf(const TSTree& old, const TSTree& tree,
                                                           std::size_t mostPlaces);

} // namespace velmar
