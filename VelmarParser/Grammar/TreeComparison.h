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
#include <cstdint>
#include <optional>
#include <vector>

namespace velmar {

/// A visible node of one of two trees that has no equal in the other. Nodes are equal if they have
/// the same type and range, are the same to their parents, which gives aliases, fields and
/// supertypes, and if the innermost nodes around them that have equals are equal, too.
struct TreeDifference {
  Range<TreeByte> range;
  /// These are compared by themselves.
  bool hasChildren = false;
  /// Which of the trees it belongs to.
  bool isInOld = false;
  /// As queries see it.
  TSSymbol type = 0;
  /// That of the innermost visible node around it that has an equal; 0 without one.
  TSSymbol parentType = 0;

  /// The type that stands for several nodes of any type.
  static constexpr TSSymbol anyType = UINT16_MAX - 2;
};

struct TreeDifferences {
  /// Roughly in text order.
  std::vector<TreeDifference> nodes;
  /// From the first to the last token that has an equal but whose text or what lies before it was
  /// edited, if there are any.
  std::optional<Range<TreeByte>> editedTokens;
  /// Of how many nodes the children were compared.
  std::size_t enteredCount = 0;
};

/// How `tree` differs from `old`, the tree that it was parsed from after that had been edited along
/// with the text. Absent if there are more than `mostNodes`. O(nodes not shared + their children).
[[nodiscard]] std::optional<TreeDifferences> differencesOf(const TSTree& old, const TSTree& tree,
                                                           std::size_t mostNodes);

} // namespace velmar
