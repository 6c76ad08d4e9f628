// Frees trees and parsers that are large and no longer wanted, away from the caller.
//
// Freeing the tree of a large file takes 100 ms and more, for every node is visited. A tree that
// shares nearly all of its nodes with its successor costs next to nothing and is freed in place;
// what is given up whole comes here.
#pragma once

#include "VelmarParser/Grammar/ParseTree.h"

#include <tree_sitter/api.h>

namespace velmar {

/// Frees `tree` on a background thread, soon. Returns at once; any thread.
void disposeInBackground(ParseTree tree);
/// Frees `tree` here if it has few nodes, else on a background thread.
void disposeTree(ParseTree tree);
/// The same for a parser of the runtime, with what it holds of a parse that was given up.
void disposeInBackground(TSParser* parser);

} // namespace velmar
