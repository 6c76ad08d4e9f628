// A set of values of an ordered type, kept as sorted half-open ranges that are apart from each
// other.
//
// The parser keeps in these what part of a text a layer covers and what has to be done again. Any
// number of ranges works, but none or one is by far the commonest: that costs no allocation. A set
// knows nothing of texts; a caller that has to move one along with an edit builds it anew,
// appending range by range. Platforms that have an index set of their own get a bridge elsewhere;
// this one has none, so there is nothing to convert to.
//
//     TextRangeSet set{{0, 5}};
//     set.insertContentsOf({5, 9});           // {0..<9}: ranges that touch become one
//     set.removeContentsOf({3, 4});           // {0..<3, 4..<9}
#pragma once

#include "VelmarCore/Text/InlineArray.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Basics/Range.h"

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <ostream>
#include <ranges>
#include <span>
#include <string>

namespace velmar {

/// The values of some sorted, disjoint, non-adjacent, non-empty half-open ranges.
///
/// A plain value; a copy costs what it holds. One owner at a time changes a set; many may read.
template <std::totally_ordered T>
class RangeSet {
public:
  using Bound = T;

  RangeSet() noexcept = default;
  /// The values of `range`; the empty set if that is empty.
  explicit RangeSet(const Range<T>& range) { append(range); }
  /// The values of all `ranges`, which may be empty, overlap and come in any order. O(n log n), and
  /// O(n) if they are sorted by lower bound.
  explicit RangeSet(std::span<const Range<T>> ranges);
  RangeSet(std::initializer_list<Range<T>> ranges)
      : RangeSet(std::span(ranges.begin(), ranges.size())) {}

  /// The set of `ranges`, which are as `checkInvariants` wants them; stops the process if they
  /// aren't.
  [[nodiscard]] static RangeSet fromOrderedRanges(std::span<const Range<T>> ranges);
  /// The positions `indices` of `collection`, each inserted as `insert(index, collection)` does.
  template <std::ranges::input_range Indices, std::ranges::sized_range Collection>
  [[nodiscard]] static RangeSet fromIndices(const Indices& indices, const Collection& collection)
    requires std::integral<T>
  {
    RangeSet set;
    for (const auto& index : indices)
      set.insert(static_cast<T>(index), collection);
    return set;
  }

  /// The ranges in ascending order, no two of which touch. Valid until the set changes.
  [[nodiscard]] std::span<const Range<T>> ranges() const noexcept {
    return {ranges_.data(), ranges_.size()};
  }
  [[nodiscard]] bool isEmpty() const noexcept { return ranges_.empty(); }
  /// What lies outside of the object.
  [[nodiscard]] std::size_t allocatedBytes() const noexcept { return ranges_.allocatedBytes(); }
  /// O(log n).
  [[nodiscard]] bool contains(const T& value) const;
  /// Whether some value of `range` is in the set: touching is not enough, and an empty range has no
  /// values. O(log n).
  [[nodiscard]] bool intersectsContentsOf(const Range<T>& range) const;
  /// O(n log m) for n ranges here and m there; the empty set is a subset of every other. So are the
  /// next three.
  [[nodiscard]] bool isSubsetOf(const RangeSet& other) const;
  [[nodiscard]] bool isSupersetOf(const RangeSet& other) const { return other.isSubsetOf(*this); }
  [[nodiscard]] bool isStrictSubsetOf(const RangeSet& other) const {
    return *this != other && isSubsetOf(other);
  }
  [[nodiscard]] bool isStrictSupersetOf(const RangeSet& other) const {
    return other.isStrictSubsetOf(*this);
  }
  /// Whether the two have no value in common. O(n + m), without an allocation.
  [[nodiscard]] bool isDisjoint(const RangeSet& other) const;
  /// Such as "[0..<3, 4..<9]".
  [[nodiscard]] std::string description() const;

  /// Adds the values of `range`; the answer is whether the set changed. O(log n) to find the place,
  /// O(n) to move what lies behind it; amortised O(1) at the end.
  bool insertContentsOf(const Range<T>& range) {
    if (range.isEmpty())
      return false;
    if (!ranges_.empty() && !(ranges_.back().upperBound < range.lowerBound))
      return insertInside(range);
    append(range);
    return true;
  }
  /// Takes the values of `range` out. Costs as `insertContentsOf`.
  void removeContentsOf(const Range<T>& range);
  /// Adds the position `index` of `collection`, that is `index..<index + 1`; the answer is whether
  /// the set changed. Stops the process if the collection has no such position.
  template <std::ranges::sized_range Collection>
  bool insert(T index, const Collection& collection)
    requires std::integral<T>
  {
    return insertContentsOf(positionOf(index, collection));
  }
  /// Takes the position `index` of `collection` out. Stops the process as `insert` does.
  template <std::ranges::sized_range Collection>
  void remove(T index, const Collection& collection)
    requires std::integral<T>
  {
    removeContentsOf(positionOf(index, collection));
  }
  /// Empties the set and keeps its memory for what comes next.
  void removeAll() noexcept { ranges_.clear(); }

  // The operations on two sets are one pass over the ranges that can matter, O(n + m) at worst. The
  // `form…` ones work in place: they allocate only if the ranges of both sets together don't fit
  // into the memory at hand.
  void formUnion(const RangeSet& other);
  void formIntersection(const RangeSet& other);
  void formSymmetricDifference(const RangeSet& other);
  void subtract(const RangeSet& other);
  [[nodiscard]] RangeSet unionWith(const RangeSet& other) const;
  [[nodiscard]] RangeSet intersection(const RangeSet& other) const;
  [[nodiscard]] RangeSet symmetricDifference(const RangeSet& other) const;
  [[nodiscard]] RangeSet subtracting(const RangeSet& other) const;

  /// The values of `bounds` that aren't in the set. O(log n) and what it gives.
  [[nodiscard]] RangeSet gapsBoundedBy(const Range<T>& bounds) const;
  /// The positions of `collection`, from 0 on, that aren't in the set.
  template <std::ranges::sized_range Collection>
  [[nodiscard]] RangeSet invertedWithin(const Collection& collection) const
    requires std::integral<T>
  {
    return gapsBoundedBy({T{}, static_cast<T>(std::ranges::size(collection))});
  }

  /// Stops the process unless no range is empty and each ends before the next begins.
  void checkInvariants() const;

  [[nodiscard]] bool operator==(const RangeSet& other) const {
    return std::ranges::equal(ranges_, other.ranges_);
  }
  friend std::ostream& operator<<(std::ostream& stream, const RangeSet& set) {
    stream << '[';
    for (const Range<T>& range : set.ranges_)
      stream << (&range == set.ranges_.begin() ? "" : ", ") << range;
    return stream << ']';
  }

private:
  // Positions in `ranges_`, half-open.
  struct Span {
    std::size_t first;
    std::size_t last;
  };
  enum class Adjacent { included, excluded };

  template <class Collection>
  static Range<T> positionOf(T index, const Collection& collection) {
    precondition(!std::cmp_less(index, 0) && std::cmp_less(index, std::ranges::size(collection)),
                 "An index lies outside its collection.");
    return {index, static_cast<T>(index + 1)};
  }

  // `range` lies behind all others and doesn't touch them, or is empty and left out.
  void append(const Range<T>& range) {
    if (!range.isEmpty())
      ranges_.pushBack(range);
  }
  bool insertInside(const Range<T>& range);
  [[nodiscard]] Span rangesMeeting(const Range<T>& range, Adjacent adjacent) const;
  [[nodiscard]] std::span<const Range<T>> rangesIn(const Range<T>& range) const;
  // From the first value to the last; the set isn't empty.
  [[nodiscard]] Range<T> hull() const { return {ranges_[0].lowerBound, ranges_.back().upperBound}; }
  template <class Combine>
  void rewrite(Span window, std::span<const Range<T>> other, Combine combine);

  InlineArray<Range<T>, 1> ranges_;
};

/// Parts of a document, in UTF-16 code units.
using TextRangeSet = RangeSet<std::int64_t>;

} // namespace velmar

#include "VelmarCore/Text/RangeSet.inl.h"

namespace velmar {

extern template class RangeSet<std::int64_t>; // in RangeSet.cpp

} // namespace velmar

template <class T>
struct std::hash<velmar::RangeSet<T>> {
  std::size_t operator()(const velmar::RangeSet<T>& set) const noexcept {
    std::size_t hash = set.ranges().size();
    for (const auto& range : set.ranges())
      hash = hash * 31 + std::hash<velmar::Range<T>>()(range);
    return hash;
  }
};
