// Ascending offsets in one block of memory, of which a tail can be moved along without touching it.
//
// The starts of runs behind an edit all move by one amount. Here that is a note, "from this index
// on, add so much". The next edit moves the note: only the offsets between the two places are
// touched, one addition each. So typing in one place costs nothing behind it, and an edit elsewhere
// is at most one pass over contiguous integers.
#pragma once

#include "VelmarCore/Text/InlineArray.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace velmar {

/// Offsets in ascending order, equal ones allowed. A plain value; unchecked, for the collections
/// built on it.
class ShiftedOffsets {
public:
  [[nodiscard]] std::size_t size() const noexcept { return raw_.size(); }
  [[nodiscard]] std::int64_t operator[](std::size_t index) const noexcept {
    return raw_[index] + (index >= shiftedFrom_ ? shift_ : 0);
  }

  /// How many offsets are at most `offset`: the index of the last of them is one less. O(log n).
  [[nodiscard]] std::size_t countUpTo(std::int64_t offset) const noexcept;

  /// Changes one offset.
  void set(std::size_t index, std::int64_t offset) noexcept {
    raw_[index] = offset - (index >= shiftedFrom_ ? shift_ : 0);
  }

  /// Adds an offset behind all others. Amortised O(1).
  void pushBack(std::int64_t offset) {
    raw_.pushBack(offset - (raw_.size() >= shiftedFrom_ ? shift_ : 0));
  }

  /// What lies outside of the object.
  [[nodiscard]] std::size_t allocatedBytes() const noexcept { return raw_.allocatedBytes(); }
  /// Makes room for `count` offsets in all.
  void reserve(std::size_t count) { raw_.reserve(count); }

  /// Removes the offsets from `first` to before `last`, puts `count` in their place and adds
  /// `delta` to all behind. The answer is the place of the new ones, which the caller fills.
  ///
  /// O(distance to the place of the last call), and a move of what lies behind if the number of
  /// offsets changes.
  std::span<std::int64_t> replace(std::size_t first, std::size_t last, std::size_t count,
                                  std::int64_t delta);

private:
  void moveShiftTo(std::size_t index) noexcept;

  InlineArray<std::int64_t, 1> raw_;
  std::size_t shiftedFrom_ = 0; // from this index on, an offset is its raw value and `shift_`
  std::int64_t shift_ = 0;
};

} // namespace velmar
