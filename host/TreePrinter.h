// Writes a syntax tree for people and for programs. Both forms walk with a cursor and recurse
// nowhere, for a tree can be as deep as its text is long.
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Grammar/ParseTree.h"
#include "host/JSONWriter.h"
#include "host/Streams.h"

#include <cstdint>

namespace velmar::host {

/// What a walk through a whole tree has met.
struct TreeCounts {
  std::int64_t nodes = 0;
  std::int64_t errors = 0;
  std::int64_t missing = 0;
};

/// Writes one line for each node, children further to the right than their parent:
///
///     name: identifier 4..<8 0:4-0:8 main
///
/// the field, the type (in quotation marks where it is the text itself), the range in UTF-16 code
/// units, the same by line and column from 0, and of short leaves the text.
TreeCounts printTree(const ParseTree& tree, const DocumentText& text, Output& output);

/// Writes the root as an object with its children in an array, and so on down.
TreeCounts writeTreeAsJSON(const ParseTree& tree, JSONWriter& writer);

} // namespace velmar::host
