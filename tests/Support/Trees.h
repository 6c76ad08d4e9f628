// Comparing and printing syntax trees in tests.
#pragma once

#include "VelmarParser/Grammar/ParseTree.h"

#include <tree_sitter/api.h>

#include <string>

namespace velmar::testing {

/// One node to a line: indentation, field, type in quotes if anonymous, UTF-16 range, marks.
std::string treeText(ParseNode root);

/// Where two trees differ first, in words; empty if all nodes have the same types, ranges, fields
/// and marks.
std::string treeDifference(TSNode left, TSNode right);

} // namespace velmar::testing
