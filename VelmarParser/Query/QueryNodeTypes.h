// Which types of nodes matter to a query: what its text tells about where matches can begin and
// between which nodes they look.
#pragma once

#include <tree_sitter/api.h>

#include <cstddef>
#include <vector>

namespace velmar {

/// Some of a grammar's node types, by the symbols that nodes have for queries. A value.
class NodeTypeSet {
public:
  void insert(TSSymbol type) {
    if (type >= types_.size())
      types_.resize(std::size_t{type} + 1);
    types_[type] = true;
  }
  /// Makes it the set of all types.
  void insertAll() { isEverything_ = true; }
  /// O(1).
  [[nodiscard]] bool contains(TSSymbol type) const {
    return isEverything_ || (type < types_.size() && types_[type]);
  }

private:
  std::vector<bool> types_;
  bool isEverything_ = false;
};

/// Says too much where a text isn't plain, and never too little.
struct QueryNodeTypes {
  /// Those that the root of a match can have; all if its parent has a say in that.
  NodeTypeSet roots;
  /// Those of which a pattern says something about what is inside.
  NodeTypeSet parents;
};

} // namespace velmar
