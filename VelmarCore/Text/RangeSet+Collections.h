// Range sets as positions in collections: finding, picking out and removing elements by range set.
//
// Positions count from 0. Any sized random-access collection will do; removing needs one that can
// erase a tail.
#pragma once

#include "VelmarCore/Text/RangeSet.h"
#include "VelmarPlatform/Basics/Precondition.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <ranges>
#include <utility>
#include <vector>

namespace velmar {
namespace detail {

/// Stops the process unless all of `set` lies in a collection of `size` elements.
inline void checkPositions(const RangeSet<std::int64_t>& set, std::size_t size) {
  precondition(set.isEmpty() || (set.ranges().front().lowerBound >= 0 &&
                                 std::cmp_less_equal(set.ranges().back().upperBound, size)),
               "A range set reaches outside its collection.");
}

} // namespace detail

/// The positions of the elements that pass `predicate`, which sees each once and in order; what it
/// throws is passed on.
template <std::ranges::input_range Collection, class Predicate>
[[nodiscard]] RangeSet<std::int64_t> rangesWhere(const Collection& collection,
                                                 Predicate predicate) {
  RangeSet<std::int64_t> passed;
  std::int64_t position = 0;
  std::int64_t runStart = 0; // of the elements that pass, up to `position`
  for (const auto& element : collection) {
    if (!std::invoke(predicate, element)) {
      passed.insertContentsOf({runStart, position});
      runStart = position + 1;
    }
    ++position;
  }
  passed.insertContentsOf({runStart, position});
  return passed;
}

/// Copies of the elements at the positions `set`, in order. Stops the process if `set` reaches
/// outside.
template <std::ranges::random_access_range Collection>
  requires std::ranges::sized_range<Collection>
[[nodiscard]] auto elementsIn(const Collection& collection, const RangeSet<std::int64_t>& set) {
  detail::checkPositions(set, std::ranges::size(collection));
  std::vector<std::ranges::range_value_t<Collection>> elements;
  for (const TextRange& range : set.ranges())
    elements.insert(elements.end(), std::ranges::begin(collection) + range.lowerBound,
                    std::ranges::begin(collection) + range.upperBound);
  return elements;
}

/// Takes the elements at the positions `set` out of `collection` and gives them, **highest position
/// first**. One pass over what lies behind the first of them. Stops the process if `set` reaches
/// outside.
template <std::ranges::random_access_range Collection>
  requires std::ranges::sized_range<Collection>
auto removeInRanges(Collection& collection, const RangeSet<std::int64_t>& set) {
  detail::checkPositions(set, std::ranges::size(collection));
  std::vector<std::ranges::range_value_t<Collection>> removed;
  if (set.isEmpty())
    return removed;
  const auto begin = std::ranges::begin(collection);
  const auto ranges = set.ranges();
  for (auto range = ranges.rbegin(); range != ranges.rend(); ++range)
    for (std::int64_t position = range->upperBound; position-- > range->lowerBound;)
      removed.push_back(std::move(begin[position]));
  auto kept = begin + ranges.front().lowerBound;
  for (std::size_t k = 0; k < ranges.size(); ++k) {
    const auto gapEnd =
        k + 1 < ranges.size() ? begin + ranges[k + 1].lowerBound : std::ranges::end(collection);
    kept = std::move(begin + ranges[k].upperBound, gapEnd, kept);
  }
  collection.erase(kept, std::ranges::end(collection));
  return removed;
}

} // namespace velmar
