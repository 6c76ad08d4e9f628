#include "VelmarParser/Query/NodeText.h"

#include <algorithm>

namespace velmar {

std::u16string_view textOfNode(ParseNode node, const DocumentText& text, std::u16string& scratch) {
  TextRange range = node.utf16Range();
  // The tree knows the node's row, which spares the search for the line.
  if (const TextPosition start = textPosition(ts_node_start_point(node.base()));
      start.line < text.lineCount()) {
    const TextRange line = text.rangeOfLine(start.line);
    if (range.lowerBound == line.lowerBound + start.column && line.containsRange(range))
      return text.codeUnitsOfLine(start.line)
          .substr(static_cast<std::size_t>(start.column), static_cast<std::size_t>(range.length()));
  }
  range = {std::min(range.lowerBound, text.count()), std::min(range.upperBound, text.count())};
  scratch.resize(static_cast<std::size_t>(range.length()));
  text.copyCodeUnits(range, LineArrayCodeUnitOptions::none, scratch);
  return scratch;
}

} // namespace velmar
