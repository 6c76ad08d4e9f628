// One node of a syntax tree, seen in the text's units.
#pragma once

#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarParser/Grammar/TreeUnits.h"

#include <tree_sitter/api.h>

#include <cstddef>
#include <functional>
#include <iterator>
#include <optional>
#include <string_view>

namespace velmar {

/// A view into a tree, as large as five pointers. It must not outlive the tree it came from;
/// reading it after that is an error that nothing catches.
///
/// Unless a comment says otherwise, everything is O(1) but `parent()`, which walks down from the
/// root.
class ParseNode {
public:
  template <bool namedOnly>
  class Nodes;
  using ChildNodes = Nodes<false>;
  using NamedChildNodes = Nodes<true>;

  explicit ParseNode(TSNode base) noexcept : base_(base) {}

  [[nodiscard]] TSNode base() const noexcept { return base_; }

  /// UTF-16 code units of the document.
  [[nodiscard]] TextRange utf16Range() const { return velmar::utf16Range(startByte(), endByte()); }
  [[nodiscard]] Range<TreeByte> byteRange() const { return {startByte(), endByte()}; }
  [[nodiscard]] TreeByte startByte() const { return {ts_node_start_byte(base_)}; }
  [[nodiscard]] TreeByte endByte() const { return {ts_node_end_byte(base_)}; }
  /// The same places by line and column.
  [[nodiscard]] Range<TextPosition> textRange() const {
    return {textPosition(ts_node_start_point(base_)), textPosition(ts_node_end_point(base_))};
  }

  /// The node's type as its grammar shows it, an alias included; absent for a null node.
  [[nodiscard]] std::optional<std::string_view> type() const;
  /// The type that the grammar gives the symbol itself, whatever alias it has here.
  [[nodiscard]] std::optional<std::string_view> grammarType() const;
  [[nodiscard]] Grammar::SymbolID symbol() const { return {ts_node_symbol(base_)}; }
  [[nodiscard]] Grammar::SymbolID grammarSymbol() const { return {ts_node_grammar_symbol(base_)}; }

  /// Absent for the root. O(depth).
  [[nodiscard]] std::optional<ParseNode> parent() const;

  [[nodiscard]] bool isNull() const { return ts_node_is_null(base_); }
  [[nodiscard]] bool isNamed() const { return ts_node_is_named(base_); }
  /// Put in by the parser to recover; it covers no text.
  [[nodiscard]] bool isMissing() const { return ts_node_is_missing(base_); }
  /// Can stand anywhere, as comments do.
  [[nodiscard]] bool isExtra() const { return ts_node_is_extra(base_); }
  [[nodiscard]] bool isError() const { return ts_node_is_error(base_); }
  /// Whether this node or one below is an error or missing.
  [[nodiscard]] bool hasError() const { return ts_node_has_error(base_); }
  /// Whether the tree has been edited inside this node since it was parsed.
  [[nodiscard]] bool hasChanges() const { return ts_node_has_changes(base_); }

  /// Access by index is O(index): walk many children with a cursor.
  [[nodiscard]] ChildNodes children() const;
  [[nodiscard]] NamedChildNodes namedChildren() const;

  bool operator==(const ParseNode& other) const { return ts_node_eq(base_, other.base_); }

private:
  TSNode base_;
};

/// The children of a node, all of them or the named ones alone, indexed from 0.
template <bool namedOnly>
class ParseNode::Nodes {
public:
  class Iterator {
  public:
    using value_type = ParseNode;
    using difference_type = std::ptrdiff_t;
    Iterator() = default;
    Iterator(const Nodes* nodes, std::int64_t index) : nodes_(nodes), index_(index) {}
    ParseNode operator*() const { return (*nodes_)[index_]; }
    Iterator& operator++() {
      ++index_;
      return *this;
    }
    Iterator operator++(int) { return std::exchange(*this, Iterator(nodes_, index_ + 1)); }
    bool operator==(const Iterator& other) const { return index_ == other.index_; }

  private:
    const Nodes* nodes_ = nullptr;
    std::int64_t index_ = 0;
  };

  explicit Nodes(TSNode base) noexcept : base_(base) {}

  [[nodiscard]] std::int64_t count() const {
    return namedOnly ? ts_node_named_child_count(base_) : ts_node_child_count(base_);
  }
  /// Stops the process unless `0 <= index < count()`.
  [[nodiscard]] ParseNode operator[](std::int64_t index) const;
  /// The field in which the child at `index` stands, if it stands in one. `index` must not be
  /// negative and fit 32 bits.
  [[nodiscard]] std::optional<std::string_view> fieldNameAt(std::int64_t index) const;
  [[nodiscard]] Iterator begin() const { return {this, 0}; }
  [[nodiscard]] Iterator end() const { return {this, count()}; }

private:
  TSNode base_;
};

extern template class ParseNode::Nodes<false>;
extern template class ParseNode::Nodes<true>;

inline ParseNode::ChildNodes ParseNode::children() const {
  return ChildNodes(base_);
}
inline ParseNode::NamedChildNodes ParseNode::namedChildren() const {
  return NamedChildNodes(base_);
}

} // namespace velmar

template <>
struct std::hash<velmar::ParseNode> {
  std::size_t operator()(const velmar::ParseNode& node) const noexcept;
};
