// Half-open ranges, the shape of nearly every answer here.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <source_location>
#include <utility>

namespace velmar {

/// The values from `lowerBound` up to, and not including, `upperBound`. Never reversed: making such
/// a range stops the process. An empty range still has a place.
template <class Bound>
struct Range {
  Bound lowerBound{};
  Bound upperBound{};

  constexpr Range() = default;
  constexpr Range(Bound lower, Bound upper)
      : lowerBound(std::move(lower)), upperBound(std::move(upper)) {
    if (upperBound < lowerBound)
      preconditionFailed("A range's upper bound lies before its lower bound.",
                         std::source_location::current());
  }

  [[nodiscard]] constexpr bool isEmpty() const { return lowerBound == upperBound; }
  /// Whether `value` lies in the range; the upper bound doesn't.
  [[nodiscard]] constexpr bool contains(const Bound& value) const {
    return !(value < lowerBound) && value < upperBound;
  }
  /// Whether all of `other` lies inside; an empty range does where both its bounds are within ours.
  [[nodiscard]] constexpr bool containsRange(const Range& other) const {
    return !(other.lowerBound < lowerBound) && !(upperBound < other.upperBound);
  }
  /// Whether some value lies in both. Ranges that only touch don't overlap, and an empty range
  /// overlaps nothing.
  [[nodiscard]] constexpr bool overlaps(const Range& other) const {
    return std::max(lowerBound, other.lowerBound) < std::min(upperBound, other.upperBound);
  }
  /// What both have in common: absent where they are apart, empty where they only touch.
  [[nodiscard]] constexpr std::optional<Range> intersection(const Range& other) const {
    const Bound lower = std::max(lowerBound, other.lowerBound);
    const Bound upper = std::min(upperBound, other.upperBound);
    if (upper < lower)
      return std::nullopt;
    return Range(lower, upper);
  }
  /// The number of values in a range of integers.
  [[nodiscard]] constexpr std::int64_t length() const
    requires std::integral<Bound>
  {
    return static_cast<std::int64_t>(upperBound) - static_cast<std::int64_t>(lowerBound);
  }

  constexpr bool operator==(const Range&) const = default;
};

template <class Bound>
Range(Bound, Bound) -> Range<Bound>;

/// UTF-16 code units of a document, counted from its start, or of a line or string where a function
/// says so.
using TextRange = Range<std::int64_t>;

/// Writes "2..<5".
template <class Bound>
std::ostream& operator<<(std::ostream& stream, const Range<Bound>& range) {
  return stream << range.lowerBound << "..<" << range.upperBound;
}

} // namespace velmar

template <class Bound>
struct std::hash<velmar::Range<Bound>> {
  std::size_t operator()(const velmar::Range<Bound>& range) const noexcept {
    const std::size_t lower = std::hash<Bound>()(range.lowerBound);
    return lower ^ (std::hash<Bound>()(range.upperBound) + 0x9e3779b97f4a7c15ULL + (lower << 6) +
                    (lower >> 2));
  }
};
