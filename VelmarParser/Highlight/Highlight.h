// Colours on demand: what there is to paint in a part of one language layer.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Highlight/HighlightResults.h"

namespace velmar {

/// Runs the layer's highlights query over the parts of `range` that the layer covers. Empty results
/// for a layer without a tree or a query; a query that can't be had reaches the document's error
/// handler under "highlights".
///
/// `range` counts UTF-16 code units; what of it lies outside the text is left out. The cost follows
/// the range, not the document. A property "priority" whose text isn't a whole number counts as 0.
/// Merging the layers of a document is the painter's: the deeper one lies on top.
[[nodiscard]] HighlightResults highlight(const Parse::Layer& layer, TextRange range);

} // namespace velmar
