// How deep each bracket stands, for an editor that paints them by depth.
#pragma once

#include "VelmarCore/Text/RangeSet.h"
#include "VelmarParser/Document/Parse.h"

#include <vector>

namespace velmar {

/// The brackets of the document: element `d` holds those at depth `d`, one code unit each. A
/// closing bracket stands at the depth of the one that it closes; one that closes nothing has none.
///
/// Which pairs there are is a fact of each layer's language, and each kind of bracket counts for
/// itself: all of `(a[b]c)` are at 0. A pair whose two sides are equal, or that needs more than a
/// code unit, doesn't count, and neither does what has a lexical class, such as comments and
/// strings. Depths go on from one piece of a layer to the next. O(document).
[[nodiscard]] std::vector<TextRangeSet> bracketDepths(const Parse& parse);

} // namespace velmar
