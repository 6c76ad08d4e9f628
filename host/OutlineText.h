// The outline of a document and its folds, as lines for people and as JSON.
#pragma once

#include "VelmarParser/Structure/Structure.h"
#include "host/JSONWriter.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velmar::host {

/// For each symbol in how many of those before it it lies. Symbols of one range stand side by side.
/// `symbols` are in order.
[[nodiscard]] std::vector<std::int64_t> depthsOf(const std::vector<CodeSymbol>& symbols);

/// What to call a symbol: its display name or its name, with its arguments behind it. One line, fit
/// to be shown.
[[nodiscard]] std::string titleOf(const CodeSymbol& symbol);

/// "12-40", counting from 1; "12" for what lies in one line. The end is the last line that has text
/// of `range`.
[[nodiscard]] std::string linesOf(const DocumentText& text, TextRange range);

/// One line for each symbol, moved to the right by those that hold it.
void writeOutline(const std::vector<CodeSymbol>& symbols, const DocumentText& text, Output& output);
/// One line for each fold: its lines, its role, and the text of its first line.
void writeFolds(const std::vector<CodeFoldingRegion>& folds, const DocumentText& text,
                Output& output);

/// A list of objects, each with the list of those that it holds.
void writeOutlineAsJSON(const std::vector<CodeSymbol>& symbols, JSONWriter& writer);
void writeFoldsAsJSON(const std::vector<CodeFoldingRegion>& folds, JSONWriter& writer);

} // namespace velmar::host
