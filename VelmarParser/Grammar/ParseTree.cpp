#include "VelmarParser/Grammar/ParseTree.h"

#include "VelmarPlatform/Basics/Precondition.h"

#include <cstdlib>

namespace velmar {

std::vector<TSRange> ParseTree::changedRangesFrom(const ParseTree& old) const {
  std::uint32_t count = 0;
  const std::unique_ptr<TSRange, decltype(&std::free)> ranges(
      ts_tree_get_changed_ranges(old.base(), base(), &count), &std::free);
  return ranges ? std::vector<TSRange>(ranges.get(), ranges.get() + count) : std::vector<TSRange>();
}

std::optional<ParseNode> ParseTreeCursor::currentNode() const {
  const TSNode node = ts_tree_cursor_current_node(&base_);
  return ts_node_is_null(node) ? std::nullopt : std::optional(ParseNode(node));
}

std::optional<std::string_view> ParseTreeCursor::currentFieldName() const {
  const char* const name = ts_tree_cursor_current_field_name(&base_);
  return name ? std::optional<std::string_view>(name) : std::nullopt;
}

std::optional<Grammar::FieldID> ParseTreeCursor::currentFieldID() const {
  const TSFieldId field = ts_tree_cursor_current_field_id(&base_);
  return field == 0 ? std::nullopt : std::optional(Grammar::FieldID{field});
}

std::optional<std::int64_t> ParseTreeCursor::goToFirstChildForByte(std::int64_t byte) {
  precondition(byte >= 0 && byte <= std::numeric_limits<std::uint32_t>::max(),
               "A byte doesn't fit a syntax tree.");
  const std::int64_t index =
      ts_tree_cursor_goto_first_child_for_byte(&base_, static_cast<std::uint32_t>(byte));
  return index < 0 ? std::nullopt : std::optional(index);
}

std::optional<std::int64_t> ParseTreeCursor::goToFirstChildFor(TextPosition position) {
  const std::int64_t index = ts_tree_cursor_goto_first_child_for_point(&base_, treePoint(position));
  return index < 0 ? std::nullopt : std::optional(index);
}

} // namespace velmar
