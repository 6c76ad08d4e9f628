// Where a line, or a run of lines, starts and ends, in whatever a text counts its positions.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Basics/Range.h"

#include <ostream>
#include <source_location>
#include <string_view>

namespace velmar {

/// The ends of one or more whole lines. `end` lies behind the last line's terminator and
/// `contentsEnd` in front of it; they are equal where the last line has none.
template <class Position>
struct LineBoundaries {
  Position start{};
  Position end{};
  Position contentsEnd{};

  /// From the start up to behind the terminator.
  [[nodiscard]] constexpr Range<Position> range() const { return {start, end}; }
  /// From the start up to the terminator, which is left out.
  [[nodiscard]] constexpr Range<Position> contentsRange() const { return {start, contentsEnd}; }

  constexpr bool operator==(const LineBoundaries&) const = default;
};

/// Writes "0..<7 with contents to 5".
template <class Position>
std::ostream& operator<<(std::ostream& stream, const LineBoundaries<Position>& boundaries) {
  return stream << boundaries.start << "..<" << boundaries.end << " with contents to "
                << boundaries.contentsEnd;
}

/// Which line an offset between two lines belongs to: `upstream` the one that ends there,
/// `downstream` the one that starts there.
enum class LineAffinity { upstream, downstream };

/// The name of the case: "upstream" or "downstream".
[[nodiscard]] constexpr std::string_view description(LineAffinity affinity) {
  switch (affinity) {
  case LineAffinity::upstream:
    return "upstream";
  case LineAffinity::downstream:
    return "downstream";
  }
  preconditionFailed("A line affinity has a value outside its cases.",
                     std::source_location::current());
}

/// Writes the description.
inline std::ostream& operator<<(std::ostream& stream, LineAffinity affinity) {
  return stream << description(affinity);
}

} // namespace velmar
