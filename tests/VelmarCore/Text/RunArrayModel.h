// A run array told the slow way: a list of runs that each know both their ends, changed one step at
// a time, with what lies behind an edit moved only at its end. It says where the seams are; tests
// and fuzzing hold the real one against it.
#pragma once

#include "VelmarPlatform/Basics/Range.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace velmar {

template <class T, class Comparator>
class RunArrayModel {
public:
  struct Run {
    T value;
    std::int64_t start;
    std::int64_t end;
  };

  explicit RunArrayModel(Comparator comparator) : comparator_(std::move(comparator)) {}
  RunArrayModel(T value, std::int64_t count, Comparator comparator)
      : comparator_(std::move(comparator)), runs_{{std::move(value), 0, count}}, count_(count) {}

  [[nodiscard]] const std::vector<Run>& runs() const { return runs_; }
  [[nodiscard]] std::int64_t count() const { return count_; }

  void remove(std::int64_t from, std::int64_t to) {
    if (from == to)
      return;
    std::size_t index = indexHolding(from);
    cutOut(from, to, index);
    shiftFrom(index, from - to);
    count_ -= to - from;
  }

  /// `pairs` are values and how often they come; none is 0.
  void replace(std::int64_t from, std::int64_t to,
               const std::vector<std::pair<T, std::int64_t>>& pairs) {
    std::int64_t added = 0;
    for (const auto& pair : pairs)
      added += pair.second;
    if (added == 0)
      return remove(from, to);
    const std::int64_t delta = added - (to - from);
    if (from == to && to == count_) {
      addAtTail(pairs, from);
      count_ += added;
      return;
    }
    std::size_t index = indexHolding(from);
    std::int64_t pendingShift = 0;
    const bool removes = from < to;
    bool atFront = false;
    if (removes) {
      cutOut(from, to, index);
      pendingShift = from - to;
      atFront = index == 0;
      if (index > 0 && runs_[index - 1].start <= from && from < runs_[index - 1].end) {
        --index; // this run is in place already, and is the one to split
        pendingShift = 0;
        if (runs_[index].start == from) { // unless nothing of it lies in front: then it moves too
          runs_[index].start += to - from;
          runs_[index].end += to - from;
          pendingShift = from - to;
        }
      }
    }
    if (count_ - (to - from) == from)
      index += addAtTail(pairs, from);
    else if (atFront)
      index = addAtFront(pairs);
    else
      index = addInside(pairs, from, index, pendingShift);
    shiftFrom(index, delta);
    count_ += delta;
  }

private:
  [[nodiscard]] std::size_t indexHolding(std::int64_t offset) const {
    for (std::size_t index = 0;; ++index)
      if (runs_[index].start <= offset && offset < runs_[index].end)
        return index;
  }

  // Takes the positions out; runs behind them stay where they are. `index` is the run holding
  // `from`, and afterwards the first run behind the cut.
  void cutOut(std::int64_t from, std::int64_t to, std::size_t& index) {
    Run& cut = runs_[index];
    if (cut.start < from) {
      cut.end = cut.end >= to ? cut.end - (to - from) : from;
      ++index;
    }
    std::size_t covered = index;
    while (covered < runs_.size() && runs_[covered].start <= to) {
      Run& run = runs_[covered];
      if (run.end <= to) {
        ++covered;
        continue;
      }
      if (index > 0 && comparator_.canMerge(runs_[index - 1].value, run.value)) {
        runs_[index - 1].end += run.end - to;
        ++covered;
      } else if (run.start < to) {
        run.start = to;
      }
      break;
    }
    runs_.erase(at(index), at(covered));
  }

  std::size_t addAtTail(const std::vector<std::pair<T, std::int64_t>>& pairs,
                        std::int64_t position) {
    std::size_t added = 0;
    for (std::size_t k = 0; k < pairs.size(); ++k) {
      const auto& [value, length] = pairs[k];
      if (k == 0 && !runs_.empty() && comparator_.canMerge(runs_.back().value, value)) {
        runs_.back().end += length;
      } else {
        runs_.push_back({value, position, position + length});
        ++added;
      }
      position += length;
    }
    return added;
  }

  std::size_t addAtFront(const std::vector<std::pair<T, std::int64_t>>& pairs) {
    std::size_t index = 0;
    std::int64_t position = 0;
    for (const auto& [value, length] : pairs) {
      runs_.insert(at(index++), Run{value, position, position + length});
      position += length;
    }
    if (index < runs_.size() && comparator_.canMerge(runs_[index].value, runs_[index - 1].value)) {
      runs_[index - 1].end += runs_[index].end - runs_[index].start;
      runs_.erase(at(index));
    }
    return index;
  }

  std::size_t addInside(const std::vector<std::pair<T, std::int64_t>>& pairs, std::int64_t from,
                        std::size_t index, std::int64_t pendingShift) {
    const std::int64_t low = runs_[index].start + pendingShift;
    const std::int64_t high = runs_[index].end + pendingShift;
    const T splitValue = runs_[index].value;
    std::int64_t position = from;
    std::int64_t tail = 0;
    std::size_t latest = 0; // the run that holds the latest pair
    for (std::size_t k = 0; k < pairs.size(); ++k) {
      const auto& [value, length] = pairs[k];
      const Run fresh{value, position, position + length};
      if (k > 0) {
        runs_.insert(at(++latest), fresh);
      } else if (position != low) {
        tail = high - position;
        latest = index;
        if (comparator_.canMerge(splitValue, value)) {
          runs_[index].end = position + length;
        } else {
          runs_[index].end = position;
          runs_.insert(at(++latest), fresh);
        }
      } else if (index > 0 && comparator_.canMerge(runs_[index - 1].value, value)) {
        latest = index - 1;
        runs_[latest].end += length;
      } else {
        latest = index;
        runs_.insert(at(index), fresh);
      }
      position += length;
    }
    std::size_t behind = latest + 1;
    if (tail > 0) {
      if (comparator_.canMerge(runs_[latest].value, splitValue))
        runs_[latest].end += tail;
      else
        runs_.insert(at(behind++), Run{splitValue, position, position + tail});
    } else if (behind < runs_.size() &&
               comparator_.canMerge(runs_[latest].value, runs_[behind].value)) {
      runs_[latest].end += runs_[behind].end - runs_[behind].start;
      runs_.erase(at(behind));
    }
    return behind;
  }

  void shiftFrom(std::size_t index, std::int64_t delta) {
    for (; index < runs_.size(); ++index) {
      runs_[index].start += delta;
      runs_[index].end += delta;
    }
  }

  [[nodiscard]] auto at(std::size_t index) {
    return runs_.begin() + static_cast<std::ptrdiff_t>(index);
  }

  Comparator comparator_;
  std::vector<Run> runs_;
  std::int64_t count_ = 0;
};

// ---- Values and comparators for it -----------------------------------------------------------

/// A value whose kind alone decides whether it merges.
struct Token {
  int kind = 0;
  int serial = 0;
  bool operator==(const Token&) const = default;
};

/// Merges neighbours in ascending order only, to see which way round the comparator is asked.
struct AscendingRunComparator {
  using Compared = int;
  [[nodiscard]] bool canMerge(int left, int right) const { return left < right; }
  [[nodiscard]] std::size_t hashValue() const noexcept { return 0; }
  bool operator==(const AscendingRunComparator&) const = default;
};

} // namespace velmar
