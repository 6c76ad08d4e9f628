// Where a node hangs: its ancestors and the fields in between.
//
// The runtime's nodes know neither their parent nor their field; each question goes down from the
// root through all the children on the way. Whoever asks about node after node, in roughly the
// order of the text, keeps one of these, which stands in the tree and goes only as far as the next
// node is away.
#pragma once

#include "VelmarParser/Grammar/ParseTree.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace velmar {

/// Finds the way from the root of a tree down to a node. The trees must stand as they are while one
/// of these is in use.
class NodeAncestry {
public:
  /// A node on the way and the field of its parent that it stands in.
  struct Step {
    ParseNode node;
    std::optional<Grammar::FieldID> field;
    bool isFieldKnown = false;
  };

  /// The steps from the root to `node`, both included, good until the next question; none for a
  /// null node. O(distance from the last node asked for).
  [[nodiscard]] std::span<const Step> wayTo(ParseNode node);
  /// Absent for the root.
  [[nodiscard]] std::optional<ParseNode> parentOf(ParseNode node);

private:
  [[nodiscard]] bool isOnTheWay(ParseNode node);
  [[nodiscard]] bool searchOutwards(ParseNode node);
  [[nodiscard]] bool searchBelow(ParseNode node);
  [[nodiscard]] bool searchFromRoot(ParseNode node);
  bool goDown(ParseNode node);
  bool goOn();
  bool goUp();
  void noteField();

  std::optional<ParseTreeCursor> cursor_;
  std::vector<Step> way_; // ends where the cursor stands
};

/// The name of a step's field.
[[nodiscard]] std::optional<std::string_view> fieldNameOf(const NodeAncestry::Step& step);

/// The named child of `parent` at `index`, counted from the end if it is negative.
[[nodiscard]] std::optional<ParseNode> namedChildAt(ParseNode parent, std::int64_t index);

} // namespace velmar
