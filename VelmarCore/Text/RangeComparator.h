// The order of ranges in this engine, and sorting by it.
//
// Ranges that start together sort longest first, so that an outer construct comes before what it
// holds. A key to sort by is a member pointer or any projection: `sortBy(points,
// &InjectionPoint::range)`. A comparing function needs no wrapper here; the standard algorithms
// take it as it is.
#pragma once

#include "VelmarPlatform/Basics/Range.h"

#include <algorithm>
#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <iterator>
#include <optional>
#include <ranges>
#include <type_traits>
#include <utility>
#include <vector>

namespace velmar {

enum class SortOrder { forward, reverse };

/// Orders ranges by lower bound, and ranges that start together by upper bound, the larger one
/// first.
template <class Bound>
struct RangeComparator {
  SortOrder order = SortOrder::forward;

  /// `less` where `left` comes first, `equivalent` for equal ranges.
  [[nodiscard]] constexpr std::weak_ordering compare(const Range<Bound>& left,
                                                     const Range<Bound>& right) const {
    const bool isForward = order == SortOrder::forward;
    const auto before = isForward ? std::weak_ordering::less : std::weak_ordering::greater;
    const auto after = isForward ? std::weak_ordering::greater : std::weak_ordering::less;
    if (left.lowerBound < right.lowerBound)
      return before;
    if (right.lowerBound < left.lowerBound)
      return after;
    if (right.upperBound < left.upperBound)
      return before;
    if (left.upperBound < right.upperBound)
      return after;
    return std::weak_ordering::equivalent;
  }

  /// Whether `left` comes before `right`: the form that standard algorithms take.
  [[nodiscard]] constexpr bool operator()(const Range<Bound>& left,
                                          const Range<Bound>& right) const {
    return compare(left, right) < 0;
  }

  bool operator==(const RangeComparator&) const = default;
};

/// Orders ranges that may be absent. An absent one neither precedes nor follows anything, so this
/// is no strict weak order: don't hand it to `std::sort`, whose behaviour would be undefined.
/// `sortBy` knows what to do.
template <class Bound>
struct OptionalRangeComparator {
  RangeComparator<Bound> base;

  [[nodiscard]] constexpr SortOrder order() const { return base.order; }

  /// As `base` says where both are there, else `equivalent`.
  [[nodiscard]] constexpr std::weak_ordering
  compare(const std::optional<Range<Bound>>& left, const std::optional<Range<Bound>>& right) const {
    if (!left || !right)
      return std::weak_ordering::equivalent;
    return base.compare(*left, *right);
  }

  bool operator==(const OptionalRangeComparator&) const = default;
};

namespace detail {

/// The bound of a range or of an optional one; `NotARange` for anything else.
struct NotARange {};
template <class>
struct RangeKey {
  using Bound = NotARange;
};
template <class B>
struct RangeKey<Range<B>> {
  using Bound = B;
  static const Range<B>* range(const Range<B>& key) { return &key; }
};
template <class B>
struct RangeKey<std::optional<Range<B>>> {
  using Bound = B;
  static const Range<B>* range(const std::optional<Range<B>>& key) { return key ? &*key : nullptr; }
};

template <class Elements, class Projection>
using ProjectedKey = RangeKey<std::remove_cvref_t<
    std::invoke_result_t<Projection&, std::ranges::range_reference_t<Elements&>>>>;

} // namespace detail

/// A collection and a projection of its elements to a `Range` or to an optional one.
template <class Elements, class Projection>
concept SortableByRange =
    std::ranges::random_access_range<Elements> &&
    !std::same_as<typename detail::ProjectedKey<Elements, Projection>::Bound, detail::NotARange>;

/// Sorts `elements` by the range that `key` projects each to; elements that compare the same keep
/// their order.
///
/// With optional ranges, an element without one keeps its place, and the others are in order among
/// the remaining places. O(n log n), and O(n) if the elements are in order already. Each element is
/// moved at most twice.
template <class Elements, class Projection>
  requires SortableByRange<Elements, Projection>
void sortBy(Elements& elements, Projection key, SortOrder order = SortOrder::forward) {
  using Key = detail::ProjectedKey<Elements, Projection>;
  const RangeComparator<typename Key::Bound> comparator{order};
  const auto element = [&](std::ptrdiff_t place) -> decltype(auto) {
    return std::ranges::begin(elements)[place];
  };

  // The keys are sorted away from the elements, each with the place it comes from, which settles
  // ties.
  struct Keyed {
    Range<typename Key::Bound> range;
    std::ptrdiff_t place;
  };
  std::vector<Keyed> keyed;
  keyed.reserve(static_cast<std::size_t>(std::ranges::distance(elements)));
  for (std::ptrdiff_t place = 0; place < std::ranges::distance(elements); ++place) {
    const auto& value = std::invoke(key, element(place));
    if (const auto* range = Key::range(value))
      keyed.push_back({*range, place});
  }
  if (std::ranges::is_sorted(keyed, comparator, &Keyed::range))
    return;
  std::vector<Keyed> sorted = keyed;
  std::ranges::sort(sorted, [&](const Keyed& left, const Keyed& right) {
    const auto compared = comparator.compare(left.range, right.range);
    return compared < 0 || (compared == 0 && left.place < right.place);
  });

  std::vector<std::ranges::range_value_t<Elements>> moved;
  moved.reserve(sorted.size());
  for (const Keyed& entry : sorted)
    moved.push_back(std::move(element(entry.place)));
  for (std::size_t k = 0; k < keyed.size(); ++k)
    element(keyed[k].place) = std::move(moved[k]);
}

/// The elements of `elements` in the order of `sortBy`.
template <std::ranges::input_range Elements, class Projection>
[[nodiscard]] auto sortedBy(Elements&& elements, Projection key,
                            SortOrder order = SortOrder::forward) {
  std::vector<std::ranges::range_value_t<Elements>> sorted;
  std::ranges::copy(elements, std::back_inserter(sorted));
  sortBy(sorted, std::move(key), order);
  return sorted;
}

} // namespace velmar
