#include "VelmarCore/Text/TextPosition.h"

#include "VelmarPlatform/Coding/Record.h"

#include <algorithm>
#include <ostream>

namespace velmar {

namespace {

/// A foreign number counted from 0, and never below it. Clamps first, so that the lowest integer
/// doesn't overflow.
std::int64_t countedFromZero(std::int64_t number, bool startsAtOne) {
  return startsAtOne ? std::max<std::int64_t>(number, 1) - 1 : std::max<std::int64_t>(number, 0);
}

} // namespace

std::string TextPosition::description() const {
  return std::to_string(line) + ":" + std::to_string(column);
}

std::ostream& operator<<(std::ostream& stream, const TextPosition& position) {
  return stream << position.description();
}

Range<TextPosition> textPositionRangeFrom(const ForeignTextRange& foreign) {
  const std::int64_t startColumn = foreign.startColumn.value_or(foreign.columnsStartAtOne ? 1 : 0);
  const std::int64_t endLine = foreign.endLine.value_or(foreign.startLine);
  const std::int64_t endColumn = foreign.endColumn.value_or(startColumn);

  const TextPosition start{countedFromZero(foreign.startLine, foreign.linesStartAtOne),
                           countedFromZero(startColumn, foreign.columnsStartAtOne)};
  const TextPosition end{countedFromZero(endLine, foreign.linesStartAtOne),
                         countedFromZero(endColumn, foreign.columnsStartAtOne)};
  return {start, std::max(start, end)};
}

std::span<const FieldRow> TextPosition::rows() {
  static constexpr auto table =
      rowsOf<TextPosition>(row<&TextPosition::line>("line"), row<&TextPosition::column>("column"));
  return table;
}

} // namespace velmar

std::size_t
std::hash<velmar::TextPosition>::operator()(const velmar::TextPosition& position) const noexcept {
  // Lines and columns are small and standard libraries hash an integer to itself, so spread the
  // line before mixing.
  const auto line = static_cast<std::size_t>(position.line) * 0x9e3779b97f4a7c15ULL;
  return (line ^ (line >> 32)) + static_cast<std::size_t>(position.column);
}
