// The bodies of RunArray: reading, and the one splice that all changes end in.
#pragma once

#include "VelmarCore/Text/RunArray.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace velmar {

/// The values of a run array in order.
template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
class RunArray<T, Comparator>::Iterator {
public:
  using value_type = T;
  using difference_type = std::ptrdiff_t;
  using iterator_category = std::bidirectional_iterator_tag;
  using pointer = const T*;
  using reference = const T&;

  Iterator() = default;

  reference operator*() const { return storage_->values[run_]; }
  pointer operator->() const { return &**this; }
  Iterator& operator++() {
    ++offset_;
    skipEnded();
    return *this;
  }
  Iterator& operator--() {
    while (run_ == storage_->runCount() || storage_->start(run_) == offset_)
      --run_;
    --offset_;
    return *this;
  }
  Iterator operator++(int) {
    Iterator old = *this;
    ++*this;
    return old;
  }
  Iterator operator--(int) {
    Iterator old = *this;
    --*this;
    return old;
  }
  bool operator==(const Iterator& other) const { return offset_ == other.offset_; }

private:
  friend RunArray;
  static Iterator atStart(const Storage& storage) {
    Iterator start(storage, 0, 0);
    start.skipEnded();
    return start;
  }
  static Iterator atEnd(const Storage& storage) {
    return Iterator(storage, storage.runCount(), storage.count);
  }
  Iterator(const Storage& storage, std::size_t run, std::int64_t offset)
      : storage_(&storage), run_(run), offset_(offset) {}

  void skipEnded() {
    while (run_ < storage_->runCount() && storage_->end(run_) == offset_)
      ++run_;
  }

  const Storage* storage_ = nullptr;
  std::size_t run_ = 0; // holds `offset_`, or is past the last run
  std::int64_t offset_ = 0;
};

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
RunArray<T, Comparator>::RunArray(T value, std::int64_t count, Comparator comparator)
    : comparator_(std::move(comparator)) {
  precondition(count >= 0, "A run array can't have a negative length.");
  Storage& storage = storage_.write();
  storage.values.pushBack(std::move(value));
  storage.starts.replace(0, 0, 1, 0)[0] = 0;
  storage.count = count;
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
template <class A, class B, class Transformer>
RunArray<T, Comparator> RunArray<T, Comparator>::fromContentsOf(const RunArray<A, B>& source,
                                                                std::optional<TextRange> range,
                                                                Comparator comparator,
                                                                Transformer transformer) {
  RunArray array(std::move(comparator));
  Pairs pairs =
      array.pairsOf(range ? source.runsIn(*range) : source.runs(), std::move(transformer));
  array.splice({0, 0}, std::move(pairs), range ? range->length() : source.count());
  return array;
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
auto RunArray<T, Comparator>::runsIn(TextRange range, ExpandedRanges expanded) const -> Runs {
  const Storage& storage = storage_.read();
  precondition(range.upperBound <= storage.count, "A range reaches beyond a run array.");
  const std::size_t first = storage.runHolding(range.lowerBound);
  std::size_t last = first + 1;
  if (!range.isEmpty() && storage.end(first) < range.upperBound)
    last = storage.runHolding(range.upperBound - 1) + 1;
  return {storage_, range, expanded, first, last};
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
template <class Predicate>
std::optional<TextRange> RunArray<T, Comparator>::longestEffectiveRange(TextRange range,
                                                                        Predicate predicate) const {
  const Runs runs = runsIn(range);
  std::int64_t end = range.lowerBound;
  for (std::size_t k = 0; k < runs.size(); ++k) {
    const TextRange part = runs.range(k);
    if (!std::invoke(predicate, runs.value(k), part))
      break;
    end = part.upperBound;
  }
  if (end == range.lowerBound)
    return std::nullopt;
  return TextRange(range.lowerBound, end);
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
template <class Function>
auto RunArray<T, Comparator>::bisectUsing(Function function) const -> std::optional<Run> {
  const Runs runs = this->runs();
  std::size_t low = 0;
  std::size_t end = runs.size();
  while (low < end) {
    const std::size_t middle = (low + end - 1) / 2;
    BisectContext context{runs[middle], std::nullopt, std::nullopt};
    if (middle > 0)
      context.previousRun = runs[middle - 1];
    if (middle + 1 < runs.size())
      context.nextRun = runs[middle + 1];
    switch (std::invoke(function, std::as_const(context))) {
    case BisectResult::ascending:
      end = middle;
      break;
    case BisectResult::descending:
      low = middle + 1;
      break;
    case BisectResult::same:
      return std::move(context.run);
    case BisectResult::cancel:
      return std::nullopt;
    }
  }
  return std::nullopt;
}

// What the splice would do at the end, without its searches: arrays are mostly filled this way.
template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
void RunArray<T, Comparator>::append(T value, std::int64_t count) {
  precondition(count >= 0, "A value can't be laid down a negative number of times.");
  if (count == 0)
    return;
  Storage& storage = storage_.write();
  if (storage.values.empty() || !comparator_.canMerge(storage.values.back(), value)) {
    storage.values.reserve(storage.runCount() + 1);
    storage.starts.pushBack(storage.count);
    storage.values.pushBack(std::move(value));
  }
  storage.count += count;
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
void RunArray<T, Comparator>::replaceSubrange(TextRange range, T value, std::int64_t count) {
  precondition(count >= 0, "A value can't be laid down a negative number of times.");
  Pairs pairs;
  if (count > 0)
    pairs.pushBack({std::move(value), count});
  splice(range, std::move(pairs), count);
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
template <class OtherComparator>
void RunArray<T, Comparator>::replaceSubrangeWithContentsOf(
    TextRange range, const RunArray<T, OtherComparator>& other,
    std::optional<TextRange> arraySubrange) {
  const std::int64_t length = arraySubrange ? arraySubrange->length() : other.count();
  Pairs pairs =
      pairsOf(arraySubrange ? other.runsIn(*arraySubrange) : other.runs(), std::identity());
  splice(range, std::move(pairs), length);
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
void RunArray<T, Comparator>::replaceSubrangeWithPairs(TextRange range,
                                                       std::span<const Pair> pairs) {
  Pairs kept;
  std::int64_t length = 0;
  kept.reserve(pairs.size() + 1);
  for (const Pair& pair : pairs) {
    precondition(pair.count >= 0, "A value can't be laid down a negative number of times.");
    length += pair.count;
    if (pair.count > 0)
      kept.pushBack(pair);
  }
  splice(range, std::move(kept), length);
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
template <class Function>
void RunArray<T, Comparator>::transformSubrange(TextRange range, Function function) {
  // The runs share the storage: they have to be gone when it is written, or it is copied.
  Pairs pairs = pairsOf(runsIn(range), std::move(function));
  splice(range, std::move(pairs), range.length());
}

template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
void RunArray<T, Comparator>::checkInvariants() const {
  const Storage& storage = storage_.read();
  precondition(storage.starts.size() == storage.values.size(), "A run lacks its start or value.");
  precondition(storage.runCount() > 0 || storage.count == 0, "An array has values but no runs.");
  for (std::size_t run = 0; run < storage.runCount(); ++run) {
    precondition(run > 0 || storage.start(run) == 0, "The first run doesn't start at 0.");
    precondition(storage.start(run) < storage.end(run) ||
                     (run == 0 && storage.start(run) == storage.end(run)),
                 "A run behind the first is empty, or runs are out of order.");
  }
}

// ---- The splice
// ------------------------------------------------------------------------------------------------------

// Adds to the last pair if it may hold `value` too, else a pair.
template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
void RunArray<T, Comparator>::appendMerging(Pairs& pairs, T value, std::int64_t count) const {
  if (!pairs.empty() && comparator_.canMerge(pairs.back().value, value))
    pairs.back().count += count;
  else
    pairs.pushBack({std::move(value), count});
}

// The values of `runs`, transformed, as pairs no two neighbours of which can merge.
template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
template <class Source, class Transformer>
auto RunArray<T, Comparator>::pairsOf(const Source& runs, Transformer transformer) const -> Pairs {
  Pairs pairs;
  for (std::size_t k = 0; k < runs.size(); ++k) {
    T value = std::invoke(transformer, runs.value(k));
    if (const std::int64_t length = runs.range(k).length(); length > 0)
      appendMerging(pairs, std::move(value), length);
  }
  return pairs;
}

// Puts `pairs`, `length` values in all, in the place of `range`.
//
// It goes as if `range` were removed first, the runs on both sides merging if they can, and the
// pairs inserted then. That shows where values differ though their keys merge: a run that was
// merged and is split again keeps the value in front on both sides.
template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
void RunArray<T, Comparator>::splice(TextRange range, Pairs pairs, std::int64_t length) {
  const auto [lower, upper] = range;
  precondition(lower >= 0 && upper <= count(), "A range reaches beyond a run array.");
  if (range.isEmpty() && length == 0)
    return;
  Storage& storage = storage_.write();

  // The runs before `first` hold something in front of `range`, those from `last` on something
  // behind it. They are the same run where `last` is `first - 1`.
  const std::size_t runCount = storage.runCount();
  std::size_t first = runCount;
  std::size_t last = runCount;
  if (lower < storage.count) {
    const std::size_t run = storage.runHolding(lower);
    first = storage.start(run) < lower ? run + 1 : run;
    if (upper < storage.end(run))
      last = run;
    else if (run + 1 < runCount && upper < storage.end(run + 1))
      last = run + 1; // short edits end here, without a second search
    else if (upper < storage.count)
      last = storage.runHolding(upper);
  }

  const bool isInside = first > 0 && last == first - 1;
  const bool merges = !isInside && !range.isEmpty() && first > 0 && last < runCount &&
                      comparator_.canMerge(storage.values[first - 1], storage.values[last]);
  Plan plan{first, isInside || merges ? last + 1 : last};
  if (length > 0) {
    if (isInside || merges)
      plan = planWithin(storage, first - 1, last, lower, pairs);
    else
      plan = planBetween(storage, first, last, first == 0 && !range.isEmpty(), pairs);
  }

  const std::size_t fresh = pairs.size() - plan.skipped;
  const std::size_t newCount = runCount - (plan.last - plan.first) + fresh;
  storage.starts.reserve(newCount); // from here on nothing can fail
  storage.values.reserve(newCount);
  if (plan.last < runCount)
    storage.starts.set(plan.last, std::max(upper, storage.start(plan.last)));
  const auto starts = storage.starts.replace(plan.first, plan.last, fresh, length - range.length());
  std::int64_t position = lower;
  for (std::size_t k = 0; k < pairs.size(); position += pairs[k].count, ++k)
    if (k >= plan.skipped)
      starts[k - plan.skipped] = position;
  storage.values.replace(plan.first, plan.last, fresh, [&](std::size_t k) -> T&& {
    return std::move(pairs[plan.skipped + k].value);
  });
  storage.count += length - range.length();
}

// The pairs go into the run `host`, which holds values on both sides; `last` is the run whose end
// is that of `host` now.
template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
auto RunArray<T, Comparator>::planWithin(Storage& storage, std::size_t host, std::size_t last,
                                         std::int64_t offset, Pairs& pairs) const -> Plan {
  const T& hostValue = storage.values[host];
  if (storage.start(host) == offset) {
    // An empty first run that has just taken over the values behind: the pairs come before it.
    const bool joins = comparator_.canMerge(pairs.back().value, hostValue);
    if (!joins)
      storage.values[last] = hostValue;
    return {host, joins ? last + 1 : last};
  }
  Plan plan{host + 1, last + 1};
  plan.skipped = comparator_.canMerge(hostValue, pairs[0].value) ? 1 : 0;
  const T& latest = pairs.size() > plan.skipped ? pairs.back().value : hostValue;
  if (!comparator_.canMerge(latest, hostValue))
    pairs.pushBack({hostValue, 0}); // what the pairs split off; its length is what is left
  return plan;
}

// The pairs go between the runs `first - 1` and `last`, either of which may be missing.
template <class T, RunComparator Comparator>
  requires std::same_as<typename Comparator::Compared, T>
auto RunArray<T, Comparator>::planBetween(const Storage& storage, std::size_t first,
                                          std::size_t last, bool atFront, const Pairs& pairs) const
    -> Plan {
  Plan plan{first, last};
  if (first > 0 && comparator_.canMerge(storage.values[first - 1], pairs[0].value))
    plan.skipped = 1;
  if (last < storage.runCount()) {
    const T& latest = pairs.size() > plan.skipped ? pairs.back().value : storage.values[first - 1];
    const T& behind = storage.values[last];
    // At the front of the array the comparator is asked the other way round.
    if (atFront ? comparator_.canMerge(behind, latest) : comparator_.canMerge(latest, behind))
      ++plan.last;
  }
  return plan;
}

} // namespace velmar
