// The outline and the folds of a document as parts of an HTML page.
#pragma once

#include "VelmarParser/Structure/Structure.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velmar::host {

/// Nested lists of links to the lines that symbols begin in, for those that begin in `range`; empty
/// if there is none.
[[nodiscard]] std::string outlineAsHTML(const std::vector<CodeSymbol>& symbols,
                                        const DocumentText& text, TextRange range);

/// By the line that stays in sight, from 1, what folds there: "function to 12, block to 4".
[[nodiscard]] std::map<std::int64_t, std::string>
foldTitles(const std::vector<CodeFoldingRegion>& folds, const DocumentText& text);

} // namespace velmar::host
