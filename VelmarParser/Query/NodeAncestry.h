// Where a node hangs: its ancestors and the fields in between.
//
// A node knows neither its parent nor its field; both are found from the root down. These functions
// make one way down where asking node by node would make one for each ancestor.
#pragma once

#include "VelmarParser/Grammar/ParseNode.h"

#include <optional>
#include <string_view>

namespace velmar {

/// Calls `visit` with the strict ancestors of `node`, the root first, until it gives true. Whether
/// it did. O(depth × children).
template <class Visit>
bool anyAncestor(ParseNode node, Visit&& visit) {
  TSNode at = ts_tree_root_node(node.base().tree);
  while (!ts_node_is_null(at) && at.id != node.base().id) {
    if (visit(ParseNode(at)))
      return true;
    at = ts_node_child_with_descendant(at, node.base());
  }
  return false;
}

/// The field of `parent` that its child `child` stands in, if it stands in one. O(children).
[[nodiscard]] std::optional<std::string_view> fieldNameOfChild(ParseNode parent, ParseNode child);

/// Calls `visit` with the names of the fields on the way from the root down to `node`, where there
/// are such, until it gives true. Whether it did. O(depth × children).
template <class Visit>
bool anyFieldOnTheWay(ParseNode node, Visit&& visit) {
  std::optional<ParseNode> parent;
  const auto visitFieldOf = [&](ParseNode child) {
    const auto field = parent ? fieldNameOfChild(*parent, child) : std::nullopt;
    parent = child;
    return field && visit(*field);
  };
  return anyAncestor(node, visitFieldOf) || visitFieldOf(node);
}

/// The named child of `parent` at `index`, counted from the end if it is negative.
[[nodiscard]] std::optional<ParseNode> namedChildAt(ParseNode parent, std::int64_t index);

} // namespace velmar
