// Where in a layer there is prose to check, and what may be a colour.
#pragma once

#include "VelmarCore/Text/RangeSet.h"
#include "VelmarParser/Document/Parse.h"

#include <vector>

namespace velmar {

/// The text in `range` that is written for people: what the layer's textChecking query declares,
/// also where a stretch reaches out of `range`. Without such a query, the parts of comments in
/// `range`. What of `range` lies outside the text is left out.
[[nodiscard]] TextRangeSet textCheckingRangesIntersecting(const Parse::Layer& layer,
                                                          TextRange range);

/// What the layer's colors query declares in `range`, sorted: places to be read as colours by
/// whoever knows their forms. Empty without such a query.
[[nodiscard]] std::vector<TextRange> colorCandidatesIn(const Parse::Layer& layer, TextRange range);

} // namespace velmar
