#include "VelmarParser/Query/SearchRoots.h"

#include <algorithm>

namespace velmar {

/// A walk along the children of a node that sees one ahead.
class SearchRoots::Children {
public:
  explicit Children(TSNode parent) : parent_(parent), cursor_(ts_tree_cursor_new(parent)) {
    begin();
  }
  Children(const Children&) = delete;
  Children& operator=(const Children&) = delete;
  ~Children() { ts_tree_cursor_delete(&cursor_); }

  /// Begins anew with the children of another node.
  void restart(TSNode parent) {
    parent_ = parent;
    ts_tree_cursor_reset(&cursor_, parent);
    begin();
  }

  [[nodiscard]] TSNode parent() const { return parent_; }
  /// Absent at the end.
  [[nodiscard]] const std::optional<TSNode>& current() const { return current_; }
  [[nodiscard]] const std::optional<TSNode>& next() const { return next_; }
  [[nodiscard]] std::int64_t index() const { return index_; }

  void advance() {
    ++index_;
    current_ = next_;
    if (next_ && ts_tree_cursor_goto_next_sibling(&cursor_))
      next_ = ts_tree_cursor_current_node(&cursor_);
    else
      next_.reset();
  }

private:
  void begin() {
    current_.reset();
    next_.reset();
    if (ts_tree_cursor_goto_first_child(&cursor_))
      next_ = ts_tree_cursor_current_node(&cursor_);
    index_ = -1;
    advance();
  }

  TSNode parent_;
  TSTreeCursor cursor_;
  std::optional<TSNode> current_;
  std::optional<TSNode> next_;
  std::int64_t index_ = 0;
};

SearchRoots::SearchRoots(const Query& query, ParseNode root) noexcept
    : query_(&query), root_(root) {}

SearchRoots::~SearchRoots() = default;

std::span<const ParseNode> SearchRoots::around(Range<TreeByte> range) {
  const std::uint32_t lower = range.lowerBound.value;
  const std::uint32_t upper = range.upperBound.value;
  if (range.lowerBound <= lastUpperBound_)
    levels_.clear();
  lastUpperBound_ = range.upperBound;

  found_.clear();
  TSNode node = root_.base();
  for (std::size_t depth = 0;; ++depth) {
    if (found_.empty() && (canBeginAt(node) || ts_node_child_count(node) == 0))
      found_.emplace_back(node);
    const bool isKnown = !found_.empty(); // and all that is left is to count
    if (ts_node_child_count(node) == 0)
      return found_;

    Children& children = childrenOf(node, depth);
    while (children.current() && ts_node_end_byte(*children.current()) < lower) {
      children.advance();
      ++passedCount_;
    }
    if (isKnown)
      passedCount_ += children.index();
    const auto begins = [&](const std::optional<TSNode>& child) {
      return child && ts_node_start_byte(*child) <= upper;
    };
    if (!begins(children.current()))
      return found_;
    const TSNode first = *children.current();
    if (!begins(children.next())) {
      node = first;
      continue;
    }
    if (isKnown)
      return found_;
    for (found_.emplace_back(first); begins(children.next());) {
      children.advance();
      found_.emplace_back(*children.current());
    }
    // The order of matches in empty nodes at one place is the runtime's secret.
    const bool someAreEmpty = std::ranges::any_of(
        found_, [](const ParseNode& each) { return each.startByte() == each.endByte(); });
    if (someAreEmpty) {
      found_.assign(1, ParseNode(node));
      passedCount_ += children.index();
    }
    return found_;
  }
}

SearchRoots::Children& SearchRoots::childrenOf(TSNode node, std::size_t depth) {
  if (depth == levels_.size())
    levels_.push_back(std::make_unique<Children>(node));
  else if (!ts_node_eq(levels_[depth]->parent(), node))
    levels_[depth]->restart(node);
  return *levels_[depth];
}

bool SearchRoots::canBeginAt(TSNode node) const {
  return !query_->hasSingleRoots() || query_->nodeTypes().roots.contains(ts_node_symbol(node));
}

} // namespace velmar
