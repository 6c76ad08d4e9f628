// One syntax tree and the cursor that walks it, each with a single owner.
#pragma once

#include "VelmarParser/Grammar/ParseNode.h"

#include <tree_sitter/api.h>

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace velmar {

/// Owns a tree of the runtime, which goes with it. Nodes and cursors of it must go first.
class ParseTree {
public:
  explicit ParseTree(TSTree* base) noexcept : base_(base) {}

  [[nodiscard]] TSTree* base() const noexcept { return base_.get(); }
  [[nodiscard]] ParseNode rootNode() const { return ParseNode(ts_tree_root_node(base_.get())); }

  /// Where this tree's structure differs from that of `old`, the tree that it was parsed from after
  /// that had been edited. Byte ranges in the runtime's order; empty where it reports none.
  /// Differences in text alone aren't reported.
  [[nodiscard]] std::vector<TSRange> changedRangesFrom(const ParseTree& old) const;

private:
  struct Deleter {
    void operator()(TSTree* tree) const noexcept { ts_tree_delete(tree); }
  };
  std::unique_ptr<TSTree, Deleter> base_;
};

/// A place in a tree from which its neighbours are one step away. The tree must outlive it.
class ParseTreeCursor {
public:
  /// What a walk does after it has seen a node.
  enum class EnumerateAction { stop, next, skipDescendants };

  /// A cursor that can't leave `node`.
  static ParseTreeCursor startingAt(ParseNode node) {
    return ParseTreeCursor(ts_tree_cursor_new(node.base()));
  }
  /// A second cursor at the same place.
  static ParseTreeCursor copying(const ParseTreeCursor& other) {
    return ParseTreeCursor(ts_tree_cursor_copy(&other.base_));
  }
  ParseTreeCursor(ParseTreeCursor&& other) noexcept : base_(std::exchange(other.base_, {})) {}
  ParseTreeCursor& operator=(ParseTreeCursor&& other) noexcept {
    std::swap(base_, other.base_);
    return *this;
  }
  ParseTreeCursor(const ParseTreeCursor&) = delete;
  ParseTreeCursor& operator=(const ParseTreeCursor&) = delete;
  ~ParseTreeCursor() { ts_tree_cursor_delete(&base_); }

  /// Absent where the runtime's node is null.
  [[nodiscard]] std::optional<ParseNode> currentNode() const;
  [[nodiscard]] std::optional<std::string_view> currentFieldName() const;
  [[nodiscard]] std::optional<Grammar::FieldID> currentFieldID() const;

  /// Each says whether it moved.
  bool goToFirstChild() { return ts_tree_cursor_goto_first_child(&base_); }
  bool goToLastChild() { return ts_tree_cursor_goto_last_child(&base_); }
  bool goToNextSibling() { return ts_tree_cursor_goto_next_sibling(&base_); }
  bool goToPreviousSibling() { return ts_tree_cursor_goto_previous_sibling(&base_); }
  bool goToParent() { return ts_tree_cursor_goto_parent(&base_); }
  /// To the first child that extends beyond a byte or position. Gives its index, or nothing where
  /// there is none, and then stays. The byte, and the position's line and doubled column, must not
  /// be negative and must fit 32 bits.
  std::optional<std::int64_t> goToFirstChildForByte(std::int64_t byte);
  std::optional<std::int64_t> goToFirstChildFor(TextPosition position);
  /// Starts anew at `node`, of the same or another tree.
  void resetTo(ParseNode node) { ts_tree_cursor_reset(&base_, node.base()); }

  /// Visits nodes in pre-order from the present one, as `body`, which takes a ParseNode and gives
  /// an EnumerateAction, says. The cursor stays where the walk ended. What `body` throws passes
  /// through.
  template <class Body>
  void enumerate(Body&& body) {
    bool visit = true;
    while (const auto node = currentNode()) {
      if (visit) {
        const EnumerateAction action = body(*node);
        if (action == EnumerateAction::stop)
          return;
        if (action == EnumerateAction::next && goToFirstChild())
          continue;
      }
      visit = goToNextSibling();
      if (!visit && !goToParent())
        return;
    }
  }

private:
  explicit ParseTreeCursor(TSTreeCursor base) noexcept : base_(base) {}
  TSTreeCursor base_;
};

} // namespace velmar
