#include "tests/Support/Trees.h"

#include <sstream>

namespace velmar::testing {

namespace {

void describe(std::ostream& stream, TSTreeCursor& cursor) {
  const ParseNode node(ts_tree_cursor_current_node(&cursor));
  if (const char* const field = ts_tree_cursor_current_field_name(&cursor))
    stream << field << ": ";
  const auto type = node.type().value_or("(none)");
  if (node.isNamed())
    stream << type;
  else
    stream << '"' << type << '"';
  stream << ' ' << node.utf16Range() << ' ' << node.textRange();
  if (node.isMissing())
    stream << " MISSING";
  if (node.isExtra())
    stream << " EXTRA";
}

/// Moves on in pre-order; false at the end. `depth` follows.
bool advance(TSTreeCursor& cursor, int& depth) {
  if (ts_tree_cursor_goto_first_child(&cursor)) {
    ++depth;
    return true;
  }
  while (!ts_tree_cursor_goto_next_sibling(&cursor)) {
    if (!ts_tree_cursor_goto_parent(&cursor))
      return false;
    --depth;
  }
  return true;
}

bool sameNode(TSTreeCursor& left, TSTreeCursor& right) {
  const TSNode a = ts_tree_cursor_current_node(&left);
  const TSNode b = ts_tree_cursor_current_node(&right);
  const auto samePoint = [](TSPoint p, TSPoint q) {
    return p.row == q.row && p.column == q.column;
  };
  return ts_node_symbol(a) == ts_node_symbol(b) && ts_node_start_byte(a) == ts_node_start_byte(b) &&
         ts_node_end_byte(a) == ts_node_end_byte(b) &&
         samePoint(ts_node_start_point(a), ts_node_start_point(b)) &&
         samePoint(ts_node_end_point(a), ts_node_end_point(b)) &&
         ts_node_is_missing(a) == ts_node_is_missing(b) &&
         ts_node_is_extra(a) == ts_node_is_extra(b) &&
         ts_node_child_count(a) == ts_node_child_count(b) &&
         ts_tree_cursor_current_field_id(&left) == ts_tree_cursor_current_field_id(&right);
}

} // namespace

std::string treeText(ParseNode root) {
  std::ostringstream stream;
  TSTreeCursor cursor = ts_tree_cursor_new(root.base());
  int depth = 0;
  do {
    stream << std::string(static_cast<std::size_t>(depth) * 2, ' ');
    describe(stream, cursor);
    stream << '\n';
  } while (advance(cursor, depth));
  ts_tree_cursor_delete(&cursor);
  return stream.str();
}

std::string treeDifference(TSNode left, TSNode right) {
  TSTreeCursor a = ts_tree_cursor_new(left);
  TSTreeCursor b = ts_tree_cursor_new(right);
  int depthA = 0;
  int depthB = 0;
  std::ostringstream difference;
  while (true) {
    if (!sameNode(a, b)) {
      describe(difference, a);
      difference << " against ";
      describe(difference, b);
      break;
    }
    const bool moreA = advance(a, depthA);
    const bool moreB = advance(b, depthB);
    if (!moreA && !moreB)
      break;
    if (moreA != moreB) {
      difference << "one tree has more nodes";
      break;
    }
  }
  ts_tree_cursor_delete(&a);
  ts_tree_cursor_delete(&b);
  return difference.str();
}

} // namespace velmar::testing
