// Sorting what was found in a document, in the order of ranges, such that it can be given up.
#pragma once

#include "VelmarCore/Text/RangeComparator.h"
#include "VelmarParser/Structure/CancellationTicks.h"
#include "VelmarParser/Structure/DisposedVector.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace velmar {

/// Sorts `elements` by the range that `range` projects each to, then by `priority(element)`, less
/// first; elements that compare the same keep their order. O(n log n), and O(n) if they are in
/// order already.
///
/// Throws CancellationError, and then the elements are good for nothing but to be freed.
template <class Element, class ToRange, class ToPriority>
void sortInOrder(std::vector<Element>& elements, ToRange range, ToPriority priority,
                 CancellationTicks& ticks) {
  struct Key {
    TextRange range;
    int priority;
    std::size_t place;
  };
  std::vector<Key> keys;
  keys.reserve(elements.size());
  for (const Element& element : elements) {
    ticks.step();
    keys.push_back({std::invoke(range, element), std::invoke(priority, element), keys.size()});
  }
  const auto before = [&](const Key& left, const Key& right) {
    ticks.step();
    const auto compared = RangeComparator<std::int64_t>().compare(left.range, right.range);
    if (compared != 0)
      return compared < 0;
    if (left.priority != right.priority)
      return left.priority < right.priority;
    return left.place < right.place;
  };
  if (std::ranges::is_sorted(keys, before))
    return;
  std::ranges::sort(keys, before);
  DisposedVector<Element> sorted;
  sorted.reserve(elements.size());
  for (const Key& key : keys) {
    ticks.step(); // New memory for many large elements takes a while to get.
    sorted.push_back(std::move(elements[key.place]));
  }
  elements.swap(sorted);
}

template <class Element, class ToRange>
void sortInOrder(std::vector<Element>& elements, ToRange range, CancellationTicks& ticks) {
  sortInOrder(elements, range, [](const Element&) { return 0; }, ticks);
}

} // namespace velmar
