#include "VelmarParser/Query/NodeText.h"

#include <algorithm>

namespace velmar {

namespace {

std::u16string_view copied(TextRange range, const DocumentText& text, std::u16string& scratch) {
  scratch.resize(static_cast<std::size_t>(range.length()));
  text.copyCodeUnits(range, LineArrayCodeUnitOptions::none, scratch);
  return scratch;
}

std::u16string_view inLine(std::int64_t line, std::int64_t column, std::int64_t length,
                           const DocumentText& text) {
  return text.codeUnitsOfLine(line).substr(static_cast<std::size_t>(column),
                                           static_cast<std::size_t>(length));
}

} // namespace

std::u16string_view textOfNode(ParseNode node, const DocumentText& text, std::u16string& scratch) {
  const TextRange range = node.utf16Range();
  // The tree knows the node's row, which spares the search for the line.
  if (const TextPosition start = textPosition(ts_node_start_point(node.base()));
      start.line < text.lineCount()) {
    const TextRange line = text.rangeOfLine(start.line);
    if (range.lowerBound == line.lowerBound + start.column && line.containsRange(range))
      return inLine(start.line, start.column, range.length(), text);
  }
  return copied(
      {std::min(range.lowerBound, text.count()), std::min(range.upperBound, text.count())}, text,
      scratch);
}

std::u16string_view textOfRange(TextRange range, const DocumentText& text,
                                std::u16string& scratch) {
  const std::int64_t line = text.indexOfLineContaining(range.lowerBound);
  const TextRange lineRange = text.rangeOfLine(line);
  if (lineRange.containsRange(range))
    return inLine(line, range.lowerBound - lineRange.lowerBound, range.length(), text);
  return copied(range, text, scratch);
}

} // namespace velmar
