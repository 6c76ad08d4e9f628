#include "VelmarParser/Query/NodeAncestry.h"

#include "VelmarParser/Grammar/ParseTree.h"

namespace velmar {

std::optional<std::string_view> fieldNameOfChild(ParseNode parent, ParseNode child) {
  auto cursor = ParseTreeCursor::startingAt(parent);
  for (bool isThere = cursor.goToFirstChild(); isThere; isThere = cursor.goToNextSibling()) {
    if (cursor.currentNode() == child)
      return cursor.currentFieldName();
  }
  return std::nullopt;
}

std::optional<ParseNode> namedChildAt(ParseNode parent, std::int64_t index) {
  const auto children = parent.namedChildren();
  const std::int64_t count = children.count();
  if (index < 0)
    index += count;
  return index >= 0 && index < count ? std::optional(children[index]) : std::nullopt;
}

} // namespace velmar
