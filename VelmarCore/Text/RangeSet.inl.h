// The bodies of RangeSet: searches, single changes, and the passes over two sets.
#pragma once

#include "VelmarCore/Text/RangeSet.h"

#include <sstream>

namespace velmar {
namespace detail {

/// The first of `ranges` that ends behind `value`, or past the last one.
template <class T>
[[nodiscard]] const Range<T>* firstEndingAfter(std::span<const Range<T>> ranges, const T& value) {
  return std::ranges::upper_bound(ranges.data(), ranges.data() + ranges.size(), value, {},
                                  &Range<T>::upperBound);
}

// The three passes below read two lists of ranges, each in order and apart, and write one to `out`,
// whose end they give. `out` may be the memory in front of `a`, as long as the room between is at
// least as long as `b`: what is written then never overtakes what is still to be read, because each
// range written is paid for by one used up.

template <class T>
Range<T>* writeUnion(std::span<const Range<T>> as, std::span<const Range<T>> bs, Range<T>* out) {
  const Range<T>* a = as.data();
  const Range<T>* b = bs.data();
  const Range<T>* const aEnd = a + as.size();
  const Range<T>* const bEnd = b + bs.size();
  while (a != aEnd && b != bEnd) {
    if (a->upperBound < b->lowerBound) {
      *out++ = *a++;
    } else if (b->upperBound < a->lowerBound) {
      *out++ = *b++;
    } else { // they meet: one range, which goes on to swallow what it reaches on either side
      Range<T> joined(std::min(a->lowerBound, b->lowerBound),
                      std::max(a->upperBound, b->upperBound));
      ++a;
      ++b;
      for (;;) {
        if (a != aEnd && !(joined.upperBound < a->lowerBound))
          joined.upperBound = std::max(joined.upperBound, (a++)->upperBound);
        else if (b != bEnd && !(joined.upperBound < b->lowerBound))
          joined.upperBound = std::max(joined.upperBound, (b++)->upperBound);
        else
          break;
      }
      *out++ = joined;
    }
  }
  out = std::copy(b, bEnd, out);
  return out == a ? out + (aEnd - a) : std::copy(a, aEnd, out);
}

// The overlaps need no merging: those of one list are apart because the ranges of the other are.
template <class T>
Range<T>* writeIntersection(std::span<const Range<T>> as, std::span<const Range<T>> bs,
                            Range<T>* out) {
  const Range<T>* a = as.data();
  const Range<T>* b = bs.data();
  const Range<T>* const aEnd = a + as.size();
  const Range<T>* const bEnd = b + bs.size();
  while (a != aEnd && b != bEnd) {
    if (!(b->lowerBound < a->upperBound)) {
      ++a;
    } else if (!(a->lowerBound < b->upperBound)) {
      ++b;
    } else { // they overlap; the one that ends first is done, the other may reach further
      const bool bEndsFirst = b->upperBound < a->upperBound;
      const Range<T> overlap(std::max(a->lowerBound, b->lowerBound),
                             bEndsFirst ? b->upperBound : a->upperBound);
      a += bEndsFirst ? 0 : 1;
      b += bEndsFirst ? 1 : 0;
      *out++ = overlap;
    }
  }
  return out;
}

template <class T>
Range<T>* writeDifference(std::span<const Range<T>> as, std::span<const Range<T>> bs,
                          Range<T>* out) {
  const Range<T>* b = bs.data();
  const Range<T>* const bEnd = b + bs.size();
  for (const Range<T>& next : as) {
    Range<T> rest = next; // a copy: `out` may come to lie on it
    while (b != bEnd && !(rest.lowerBound < b->upperBound))
      ++b;
    for (; b != bEnd && b->lowerBound < rest.upperBound; ++b) {
      if (rest.lowerBound < b->lowerBound)
        *out++ = Range<T>(rest.lowerBound, b->lowerBound);
      rest.lowerBound = std::min(b->upperBound, rest.upperBound);
      if (rest.upperBound < b->upperBound)
        break; // this one may cut the next range too
    }
    if (!rest.isEmpty())
      *out++ = rest;
  }
  return out;
}

} // namespace detail

template <std::totally_ordered T>
RangeSet<T>::RangeSet(std::span<const Range<T>> ranges) {
  ranges_.resizeForOverwrite(ranges.size());
  std::ranges::copy(ranges, ranges_.begin());
  if (!std::ranges::is_sorted(ranges_, {}, &Range<T>::lowerBound))
    std::ranges::sort(ranges_, {}, &Range<T>::lowerBound);
  Range<T>* out = ranges_.begin();
  for (const Range<T>& next : ranges_) {
    if (next.isEmpty())
      continue;
    if (out != ranges_.begin() && !(out[-1].upperBound < next.lowerBound))
      out[-1].upperBound = std::max(out[-1].upperBound, next.upperBound);
    else
      *out++ = next;
  }
  ranges_.truncate(static_cast<std::size_t>(out - ranges_.begin()));
}

template <std::totally_ordered T>
RangeSet<T> RangeSet<T>::fromOrderedRanges(std::span<const Range<T>> ranges) {
  RangeSet set;
  set.ranges_.resizeForOverwrite(ranges.size());
  std::ranges::copy(ranges, set.ranges_.begin());
  set.checkInvariants();
  return set;
}

template <std::totally_ordered T>
bool RangeSet<T>::contains(const T& value) const {
  const Range<T>* const found = detail::firstEndingAfter(ranges(), value);
  return found != ranges_.end() && !(value < found->lowerBound);
}

template <std::totally_ordered T>
bool RangeSet<T>::intersectsContentsOf(const Range<T>& range) const {
  const Range<T>* const found = detail::firstEndingAfter(ranges(), range.lowerBound);
  return found != ranges_.end() && found->overlaps(range);
}

template <std::totally_ordered T>
bool RangeSet<T>::isSubsetOf(const RangeSet& other) const {
  std::span<const Range<T>> rest = other.ranges();
  for (const Range<T>& range : ranges_) {
    const Range<T>* const found = detail::firstEndingAfter(rest, range.lowerBound);
    if (found == other.ranges_.end() || !found->containsRange(range))
      return false;
    rest = {found, other.ranges_.end()};
  }
  return true;
}

template <std::totally_ordered T>
bool RangeSet<T>::isDisjoint(const RangeSet& other) const {
  const Range<T>* a = ranges_.begin();
  const Range<T>* b = other.ranges_.begin();
  while (a != ranges_.end() && b != other.ranges_.end()) {
    if (a->overlaps(*b))
      return false;
    if (a->lowerBound < b->lowerBound)
      ++a;
    else
      ++b;
  }
  return true;
}

template <std::totally_ordered T>
std::string RangeSet<T>::description() const {
  std::ostringstream stream;
  stream << *this;
  return std::move(stream).str();
}

// Where the ranges stand that have something in common with `range`, or, with `included`, that
// touch it at least. An empty answer is the place where `range` would go.
template <std::totally_ordered T>
typename RangeSet<T>::Span RangeSet<T>::rangesMeeting(const Range<T>& range,
                                                      Adjacent adjacent) const {
  const bool touching = adjacent == Adjacent::included;
  const auto first = std::ranges::partition_point(ranges_, [&](const Range<T>& stored) {
    return stored.upperBound < range.lowerBound ||
           (!touching && stored.upperBound == range.lowerBound);
  });
  const auto last = std::ranges::partition_point(first, ranges_.end(), [&](const Range<T>& stored) {
    return stored.lowerBound < range.upperBound ||
           (touching && stored.lowerBound == range.upperBound);
  });
  return {static_cast<std::size_t>(first - ranges_.begin()),
          static_cast<std::size_t>(last - ranges_.begin())};
}

template <std::totally_ordered T>
bool RangeSet<T>::insertInside(const Range<T>& range) {
  const auto [first, last] = rangesMeeting(range, Adjacent::included);
  Range<T> joined = range;
  if (first != last) {
    joined.lowerBound = std::min(joined.lowerBound, ranges_[first].lowerBound);
    joined.upperBound = std::max(joined.upperBound, ranges_[last - 1].upperBound);
    if (last - first == 1 && ranges_[first] == joined)
      return false;
  }
  ranges_.replace(first, last, 1, [&](std::size_t) -> const Range<T>& { return joined; });
  return true;
}

template <std::totally_ordered T>
void RangeSet<T>::removeContentsOf(const Range<T>& range) {
  if (range.isEmpty())
    return;
  const auto [first, last] = rangesMeeting(range, Adjacent::excluded);
  if (first == last)
    return;
  Range<T> left = ranges_[first];
  Range<T> right = ranges_[last - 1];
  left.upperBound = range.lowerBound;
  right.lowerBound = range.upperBound;
  const bool cutsFirst = left.lowerBound < left.upperBound;
  const bool cutsLast = right.lowerBound < right.upperBound;
  ranges_.replace(
      first, last, (cutsFirst ? 1U : 0U) + (cutsLast ? 1U : 0U),
      [&](std::size_t k) -> const Range<T>& { return cutsFirst && k == 0 ? left : right; });
}

// The stored ranges that have something in common with `range`, whole.
template <std::totally_ordered T>
std::span<const Range<T>> RangeSet<T>::rangesIn(const Range<T>& range) const {
  const auto [first, last] = rangesMeeting(range, Adjacent::excluded);
  return ranges().subspan(first, last - first);
}

// Puts what `combine(ours, other, out)` writes in the place of our ranges in `window`: at most as
// many as both together.
template <std::totally_ordered T>
template <class Combine>
void RangeSet<T>::rewrite(Span window, std::span<const Range<T>> other, Combine combine) {
  const std::size_t room = other.size();
  const std::size_t size = ranges_.size();
  ranges_.resizeForOverwrite(size + room);
  Range<T>* const out = ranges_.begin() + window.first;
  std::move_backward(out, ranges_.begin() + size, ranges_.end());
  const Range<T>* const ours = out + room;
  const Range<T>* const oursEnd = ranges_.begin() + window.last + room;
  Range<T>* const written = combine(std::span<const Range<T>>(ours, oursEnd), other, out);
  Range<T>* const end = std::move(ranges_.begin() + window.last + room, ranges_.end(), written);
  ranges_.truncate(static_cast<std::size_t>(end - ranges_.begin()));
}

template <std::totally_ordered T>
void RangeSet<T>::formUnion(const RangeSet& other) {
  if (other.isEmpty() || this == &other)
    return;
  if (other.ranges_.size() == 1) {
    insertContentsOf(other.ranges_[0]);
    return;
  }
  rewrite(rangesMeeting(other.hull(), Adjacent::included), other.ranges(), detail::writeUnion<T>);
}

template <std::totally_ordered T>
void RangeSet<T>::formIntersection(const RangeSet& other) {
  if (isEmpty() || this == &other)
    return;
  if (other.isEmpty())
    return removeAll();
  // Of each set only what lies in the span of the other can stay.
  const auto theirs = other.rangesIn(hull());
  if (theirs.empty())
    return removeAll();
  const Range<T> bounds(theirs.front().lowerBound, theirs.back().upperBound);
  const auto [first, last] = rangesMeeting(bounds, Adjacent::excluded);
  ranges_.truncate(last);
  ranges_.replace(0, first, 0, [](std::size_t) { return Range<T>(); });
  if (isEmpty())
    return;
  if (theirs.size() == 1) { // each of ours meets it, so it cuts the first and the last at most
    Range<T>& front = ranges_[0];
    front.lowerBound = std::max(front.lowerBound, bounds.lowerBound);
    Range<T>& back = ranges_.back();
    back.upperBound = std::min(back.upperBound, bounds.upperBound);
    return;
  }
  rewrite({0, ranges_.size()}, theirs, detail::writeIntersection<T>);
}

template <std::totally_ordered T>
void RangeSet<T>::subtract(const RangeSet& other) {
  if (isEmpty() || other.isEmpty())
    return;
  if (this == &other)
    return removeAll();
  const auto cuts = other.rangesIn(hull());
  if (cuts.empty())
    return;
  if (cuts.size() == 1)
    return removeContentsOf(cuts[0]);
  const Range<T> cutHull(cuts.front().lowerBound, cuts.back().upperBound);
  rewrite(rangesMeeting(cutHull, Adjacent::excluded), cuts, detail::writeDifference<T>);
}

template <std::totally_ordered T>
void RangeSet<T>::formSymmetricDifference(const RangeSet& other) {
  *this = symmetricDifference(other);
}

template <std::totally_ordered T>
RangeSet<T> RangeSet<T>::unionWith(const RangeSet& other) const {
  if (other.isEmpty())
    return *this;
  if (isEmpty())
    return other;
  RangeSet result;
  result.ranges_.resizeForOverwrite(ranges_.size() + other.ranges_.size());
  Range<T>* const end = detail::writeUnion(ranges(), other.ranges(), result.ranges_.begin());
  result.ranges_.truncate(static_cast<std::size_t>(end - result.ranges_.begin()));
  return result;
}

template <std::totally_ordered T>
RangeSet<T> RangeSet<T>::intersection(const RangeSet& other) const {
  RangeSet result;
  if (isEmpty() || other.isEmpty())
    return result;
  const auto ours = rangesIn(other.hull());
  const auto theirs = other.rangesIn(hull());
  result.ranges_.resizeForOverwrite(ours.size() + theirs.size());
  Range<T>* const end = detail::writeIntersection(ours, theirs, result.ranges_.begin());
  result.ranges_.truncate(static_cast<std::size_t>(end - result.ranges_.begin()));
  return result;
}

template <std::totally_ordered T>
RangeSet<T> RangeSet<T>::symmetricDifference(const RangeSet& other) const {
  RangeSet result = unionWith(other);
  result.subtract(intersection(other));
  return result;
}

template <std::totally_ordered T>
RangeSet<T> RangeSet<T>::subtracting(const RangeSet& other) const {
  RangeSet result = *this;
  result.subtract(other);
  return result;
}

template <std::totally_ordered T>
RangeSet<T> RangeSet<T>::gapsBoundedBy(const Range<T>& bounds) const {
  RangeSet gaps;
  const auto [first, last] = rangesMeeting(bounds, Adjacent::included);
  T low = bounds.lowerBound;
  for (std::size_t k = first; k < last; ++k) {
    if (low < ranges_[k].lowerBound)
      gaps.append({low, ranges_[k].lowerBound});
    low = ranges_[k].upperBound;
  }
  if (low < bounds.upperBound)
    gaps.append({low, bounds.upperBound});
  return gaps;
}

template <std::totally_ordered T>
void RangeSet<T>::checkInvariants() const {
  for (std::size_t k = 0; k < ranges_.size(); ++k) {
    precondition(ranges_[k].lowerBound < ranges_[k].upperBound,
                 "A range of a set is empty or reversed.");
    precondition(k == 0 || ranges_[k - 1].upperBound < ranges_[k].lowerBound,
                 "Two ranges of a set touch or are out of order.");
  }
}

} // namespace velmar
