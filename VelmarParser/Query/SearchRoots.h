// Where to begin a search for the matches around a place.
//
// From a tree's root, the runtime passes all siblings in front of the place at every level, and an
// error can have tens of thousands of children. But a match lies whole in its root. So where no
// match can begin at a node, those around a place lie whole in its children there, and these are
// found for many places in one pass.
#pragma once

#include "VelmarParser/Grammar/ParseNode.h"
#include "VelmarParser/Query/Query.h"

#include <tree_sitter/api.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace velmar {

/// For one query and one tree; one thread.
class SearchRoots {
public:
  /// The query and the tree must outlive this.
  SearchRoots(const Query& query, ParseNode root) noexcept;
  SearchRoots(const SearchRoots&) = delete;
  SearchRoots& operator=(const SearchRoots&) = delete;
  ~SearchRoots();

  /// The nodes to search in for all matches that touch `range`, in text order, none of them in
  /// another: each such match lies whole in one of them, and is found there as from the root. They
  /// are good until the next call. As long as each range begins behind the one before, all calls
  /// together go through a node's children once.
  [[nodiscard]] std::span<const ParseNode> around(Range<TreeByte> range);

  /// How many siblings were passed in all calls, and will be by who searches in what they gave.
  [[nodiscard]] std::int64_t passedCount() const noexcept { return passedCount_; }

private:
  class Children;

  /// The children of `node`, at a certain number of steps below the root.
  Children& childrenOf(TSNode node, std::size_t depth);
  [[nodiscard]] bool canBeginAt(TSNode node) const;

  const Query* query_;
  ParseNode root_;
  std::vector<std::unique_ptr<Children>> levels_;
  TreeByte lastUpperBound_{0};
  std::vector<ParseNode> found_;
  std::int64_t passedCount_ = 0;
};

} // namespace velmar
