// A long array of values kept as runs of neighbours that may share one value.
//
// The parser keeps a property of each UTF-16 unit of a document in these: hundreds or many
// thousands of runs for millions of units. A run is a value and its start, in two blocks of memory;
// the end is the start of the next. An edit splices the runs it touches and moves the starts behind
// it without touching values (see ShiftedOffsets.h). A copy shares everything until one side
// changes, so a reader can have one for the price of a counter.
//
//     RunArray<char> letters('a', 5);               // a: 0..<5
//     letters.replaceSubrange({2, 3}, 'b', 1);      // a: 0..<2, b: 2..<3, a: 3..<5
//     letters[2];                                   // 'b'
//
// Which neighbours may share a run is the comparator's say (RunComparator.h). Runs are merged where
// an edit makes seams, and nowhere else; what a merged run holds is the value that was there first.
#pragma once

#include "VelmarCore/Text/CopyOnWrite.h"
#include "VelmarCore/Text/InlineArray.h"
#include "VelmarCore/Text/RunComparator.h"
#include "VelmarCore/Text/ShiftedOffsets.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Basics/Range.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

namespace velmar {

/// Whether runs asked for in a range show their part in it (`no`) or all of themselves (`yes`).
enum class ExpandedRanges { no, yes };

/// What a function that searches an array by halves says of the run it is shown: look in front of
/// it (`ascending`), behind it (`descending`), it is the one (`same`), or give up (`cancel`).
enum class BisectResult { ascending, descending, same, cancel };

namespace detail {

/// The contents of a run array: run k holds `values[k]` from `starts[k]` up to the next start, or
/// `count`.
template <class T>
struct RunStorage {
  ShiftedOffsets starts;
  InlineArray<T, 1> values;
  std::int64_t count = 0;

  [[nodiscard]] std::size_t runCount() const noexcept { return values.size(); }
  [[nodiscard]] std::int64_t start(std::size_t run) const noexcept { return starts[run]; }
  [[nodiscard]] std::int64_t end(std::size_t run) const noexcept {
    return run + 1 < values.size() ? starts[run + 1] : count;
  }
  [[nodiscard]] TextRange range(std::size_t run) const { return {start(run), end(run)}; }
  /// The run that holds `offset`, of which there is one if that lies in the array.
  [[nodiscard]] std::size_t runHolding(std::int64_t offset) const {
    precondition(offset >= 0 && offset < count, "An offset lies outside a run array.");
    return starts.countUpTo(offset) - 1; // of several that start there, all but the last are empty
  }
};

/// A random-access iterator over anything with `operator[]`, whose elements are values.
template <class Collection, class Element>
class IndexIterator {
public:
  using value_type = Element;
  using difference_type = std::ptrdiff_t;
  using iterator_concept = std::random_access_iterator_tag;

  IndexIterator() = default;
  IndexIterator(const Collection* collection, std::ptrdiff_t index)
      : collection_(collection), index_(index) {}

  Element operator*() const { return (*this)[0]; }
  Element operator[](std::ptrdiff_t n) const {
    return (*collection_)[static_cast<std::size_t>(index_ + n)];
  }
  IndexIterator& operator+=(std::ptrdiff_t n) {
    index_ += n;
    return *this;
  }
  IndexIterator& operator-=(std::ptrdiff_t n) { return *this += -n; }
  IndexIterator& operator++() { return *this += 1; }
  IndexIterator& operator--() { return *this -= 1; }
  IndexIterator operator++(int) { return std::exchange(*this, *this + 1); }
  IndexIterator operator--(int) { return std::exchange(*this, *this - 1); }
  friend IndexIterator operator+(IndexIterator it, std::ptrdiff_t n) { return it += n; }
  friend IndexIterator operator+(std::ptrdiff_t n, IndexIterator it) { return it += n; }
  friend IndexIterator operator-(IndexIterator it, std::ptrdiff_t n) { return it -= n; }
  friend std::ptrdiff_t operator-(const IndexIterator& left, const IndexIterator& right) {
    return left.index_ - right.index_;
  }
  bool operator==(const IndexIterator& other) const { return index_ == other.index_; }
  auto operator<=>(const IndexIterator& other) const { return index_ <=> other.index_; }

private:
  const Collection* collection_ = nullptr;
  std::ptrdiff_t index_ = 0;
};

} // namespace detail

/// `count()` values of the type `T`, stored as runs.
///
/// Offsets and lengths count values. A plain value with one owner at a time; copies may go to other
/// threads. Offsets outside the array and negative lengths stop the process.
template <class T, RunComparator Comparator = EquatableRunComparator<T>>
  requires std::same_as<typename Comparator::Compared, T>
class RunArray {
  using Storage = detail::RunStorage<T>;

public:
  using value_type = T;

  /// One value and the positions that hold it.
  struct Run {
    T value;
    TextRange range;

    bool operator==(const Run&) const = default;
  };

  /// A value and the length that it is to have.
  struct Pair {
    T value;
    std::int64_t count;
  };

  /// Some runs of an array as it was when asked; changing the array afterwards leaves them as they
  /// are.
  class Runs {
  public:
    using Iterator = detail::IndexIterator<Runs, Run>;

    [[nodiscard]] std::size_t size() const noexcept { return last_ - first_; }
    [[nodiscard]] bool empty() const noexcept { return first_ == last_; }
    [[nodiscard]] Run operator[](std::size_t index) const { return {value(index), range(index)}; }
    /// The value of a run without a copy. Valid as long as this object.
    [[nodiscard]] const T& value(std::size_t index) const {
      return storage_.read().values[at(index)];
    }
    /// The range of a run: all of it with `ExpandedRanges::yes`, else the part that lies in the
    /// range asked for.
    [[nodiscard]] TextRange range(std::size_t index) const {
      const TextRange whole = storage_.read().range(at(index));
      return expanded_ == ExpandedRanges::yes ? whole : whole.intersection(asked_).value_or(asked_);
    }
    [[nodiscard]] Iterator begin() const { return {this, 0}; }
    [[nodiscard]] Iterator end() const { return {this, static_cast<std::ptrdiff_t>(size())}; }

  private:
    friend RunArray;
    Runs(CopyOnWrite<Storage> storage, TextRange asked, ExpandedRanges expanded, std::size_t first,
         std::size_t last)
        : storage_(std::move(storage)), asked_(asked), expanded_(expanded), first_(first),
          last_(last) {}

    [[nodiscard]] std::size_t at(std::size_t index) const {
      precondition(index < size(), "There is no run with this index.");
      return first_ + index;
    }

    CopyOnWrite<Storage> storage_;
    TextRange asked_;
    ExpandedRanges expanded_;
    std::size_t first_; // run indices in the storage, half-open
    std::size_t last_;
  };

  /// A run and its neighbours, which are absent at the ends of the array.
  struct BisectContext {
    Run run;
    std::optional<Run> previousRun;
    std::optional<Run> nextRun;
  };

  class Iterator;

  /// No runs and no values.
  explicit RunArray(Comparator comparator) : comparator_(std::move(comparator)) {}
  RunArray()
    requires std::default_initializable<Comparator>
  = default;
  /// One run of `count` times `value`; a `count` of 0 leaves one empty run.
  RunArray(T value, std::int64_t count, Comparator comparator);
  RunArray(T value, std::int64_t count)
    requires std::default_initializable<Comparator>
      : RunArray(std::move(value), count, Comparator()) {}
  /// The values of `source` in `range`, or all of them, each run's passed through `transformer`
  /// once. What that throws is passed on.
  template <class A, class B, class Transformer>
  [[nodiscard]] static RunArray fromContentsOf(const RunArray<A, B>& source,
                                               std::optional<TextRange> range,
                                               Comparator comparator, Transformer transformer);

  /// O(1).
  [[nodiscard]] std::int64_t count() const noexcept { return storage_.read().count; }
  [[nodiscard]] bool isEmpty() const noexcept { return count() == 0; }
  [[nodiscard]] const Comparator& comparator() const noexcept { return comparator_; }
  /// The value at `offset`, valid until the next change. O(log n) in the number of runs.
  [[nodiscard]] const T& operator[](std::int64_t offset) const {
    const Storage& storage = storage_.read();
    return storage.values[storage.runHolding(offset)];
  }
  /// The values one by one, valid until the next change. A step is O(1).
  [[nodiscard]] Iterator begin() const { return Iterator::atStart(storage_.read()); }
  [[nodiscard]] Iterator end() const { return Iterator::atEnd(storage_.read()); }
  /// The whole run that holds `offset`. O(log n).
  [[nodiscard]] Run runContaining(std::int64_t offset) const {
    const Storage& storage = storage_.read();
    const std::size_t run = storage.runHolding(offset);
    return {storage.values[run], storage.range(run)};
  }
  /// All runs, whole.
  [[nodiscard]] Runs runs() const {
    return {storage_, {0, count()}, ExpandedRanges::yes, 0, storage_.read().runCount()};
  }
  /// The runs that hold values of `range`; for an empty range the one that holds its place. `range`
  /// must begin below `count()`, also if it is empty.
  [[nodiscard]] Runs runsIn(TextRange range, ExpandedRanges expanded = ExpandedRanges::no) const;
  /// The longest range from the start of `range` over runs whose value and part in `range` all
  /// satisfy `predicate(value, part)`; absent if the first doesn't, or if `range` is empty. The
  /// predicate sees the runs in order, up to the first that fails; what it throws is passed on.
  /// `range` must begin below `count()`.
  template <class Predicate>
  [[nodiscard]] std::optional<TextRange> longestEffectiveRange(TextRange range,
                                                               Predicate predicate) const;
  /// The run of which `function(const BisectContext&)` says `same`, searching by halves. Absent if
  /// the search runs out of runs, if the function says `cancel`, or if there are no runs. What it
  /// throws is passed on.
  template <class Function>
  [[nodiscard]] std::optional<Run> bisectUsing(Function function) const;

  void insert(T value, std::int64_t offset, std::int64_t count) {
    replaceSubrange({offset, offset}, std::move(value), count);
  }
  /// Amortised O(1).
  void append(T value, std::int64_t count);
  /// Puts `count` times `value` in the place of `range`. Merges with the run in front and the run
  /// behind, where the comparator lets it.
  ///
  /// O(log n) to find the place and O(runs between this edit and the last) to move starts; if the
  /// number of runs changes, those behind are moved in memory. The same for all changes below.
  void replaceSubrange(TextRange range, T value, std::int64_t count);
  /// Puts the values of `other`, or those in its `arraySubrange`, in the place of `range`.
  template <class OtherComparator>
  void replaceSubrangeWithContentsOf(TextRange range, const RunArray<T, OtherComparator>& other,
                                     std::optional<TextRange> arraySubrange = std::nullopt);
  /// Puts all `pairs` in the place of `range`. Only the first and the last can merge with what is
  /// around: two neighbours among the pairs stay two runs even if they are equal. Pairs with a
  /// `count` of 0 are left out.
  void replaceSubrangeWithPairs(TextRange range, std::span<const Pair> pairs);
  /// Replaces each run's value in `range` by `function(value)`, called once for each, in order,
  /// before anything changes; what it throws is passed on. `range` must begin below `count()`.
  template <class Function>
  void transformSubrange(TextRange range, Function function);
  /// Takes the values of `range` out. The runs on both sides merge where the comparator lets them.
  void removeSubrange(TextRange range) { splice(range, {}, 0); }

  /// What lies outside of the object; shared with the copies that haven't been changed since.
  [[nodiscard]] std::size_t allocatedBytes() const noexcept {
    const Storage& storage = storage_.read();
    return sizeof storage + storage.starts.allocatedBytes() + storage.values.allocatedBytes();
  }

  /// Stops the process unless the runs cover the array in order and without gaps, none but the
  /// first being empty.
  void checkInvariants() const;

private:
  // Room for what a simple replacement lays down: its own pair, and what it splits off behind.
  using Pairs = InlineArray<Pair, 2>;

  // What a change does to the runs, in indices as they were before it.
  struct Plan {
    std::size_t first;       // the first run that goes
    std::size_t last;        // the first one behind that stays
    std::size_t skipped = 0; // 1 if the first pair joins the run before `first`
  };

  void splice(TextRange range, Pairs pairs, std::int64_t length);
  Plan planWithin(Storage& storage, std::size_t host, std::size_t last, std::int64_t offset,
                  Pairs& pairs) const;
  Plan planBetween(const Storage& storage, std::size_t first, std::size_t last, bool atFront,
                   const Pairs& pairs) const;
  void appendMerging(Pairs& pairs, T value, std::int64_t count) const;
  template <class Source, class Transformer>
  Pairs pairsOf(const Source& runs, Transformer transformer) const;

  CopyOnWrite<Storage> storage_;
  [[no_unique_address]] Comparator comparator_;
};

} // namespace velmar

#include "VelmarCore/Text/RunArray.inl.h"
