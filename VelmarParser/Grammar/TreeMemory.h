// What a syntax tree takes.
#pragma once

#include "VelmarParser/Grammar/ParseTree.h"

#include <cstdint>

namespace velmar {

/// The bytes of a tree's nodes, as the runtime asked for them, and of the tree itself. Nodes that
/// the tree shares with an earlier one are counted as if they were its own. O(nodes).
[[nodiscard]] std::int64_t bytesOf(const ParseTree& tree);

} // namespace velmar
