// The outline of a document and what of it can be folded.
//
//     const Structure structure = parseStructure(document.rootLayer(), token);
//     for (const CodeSymbol& symbol : structure.symbols)
//       …                                  // sorted: what holds others comes before them
#pragma once

#include "VelmarCode/Syntax/CodeFoldingRegion.h"
#include "VelmarCode/Syntax/CodeSymbol.h"
#include "VelmarCore/Concurrency/CancellationToken.h"
#include "VelmarParser/Document/Parse.h"

#include <vector>

namespace velmar {

/// Both lists are in order of lower bounds, the longer first where two start together.
struct Structure {
  std::vector<CodeSymbol> symbols;
  std::vector<CodeFoldingRegion> folds;

  bool operator==(const Structure&) const = default;
};

/// Reads the symbols and folds of the layer, by its folds and symbols queries and from its
/// comments, with those of its sublayers in their places.
///
/// Runs on the caller's thread, and no edit may go on meanwhile. Throws CancellationError soon
/// after `token` is cancelled, from whichever thread; then nothing of the result is left. A query
/// that can't be had reaches the document's error handler, under "structure" or under its name;
/// without its structure queries a layer gives nothing, and neither do its sublayers.
[[nodiscard]] Structure parseStructure(const Parse::Layer& layer,
                                       const CancellationToken& token = {});

} // namespace velmar
