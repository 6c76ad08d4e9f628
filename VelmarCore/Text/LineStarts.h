// Where the lines of a text start, as ascending offsets that move when text is put in or taken out
// before them.
//
// The offsets lie in one plain array. Behind the place of the last edit they lack the same shift,
// which is remembered once and put right for those that a later edit at another place leaves
// behind. So typing on at one place costs nothing for the lines behind it, however many there are,
// and an edit elsewhere is one pass over the starts in between.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace velmar::detail {

/// The starts of the lines and, as the last, the end of the text. Sums wrap around, so that a shift
/// can be negative.
class LineStarts {
public:
  /// An empty text with one line.
  LineStarts() : stored_{0, 0} {}

  /// One more than there are lines.
  [[nodiscard]] std::size_t count() const noexcept { return stored_.size(); }
  [[nodiscard]] std::uint32_t operator[](std::size_t index) const noexcept {
    return stored_[index] + (index > exactUpTo_ ? shift_ : 0);
  }
  [[nodiscard]] std::uint32_t back() const noexcept { return (*this)[count() - 1]; }

  /// What lies outside of the object.
  [[nodiscard]] std::size_t allocatedBytes() const noexcept {
    return stored_.capacity() * sizeof(std::uint32_t);
  }

  /// The last line that starts at or before `offset`. O(log n).
  [[nodiscard]] std::size_t lastAtOrBefore(std::uint32_t offset) const noexcept;
  /// Where the last edit was. Within the array.
  [[nodiscard]] std::size_t lastEdited() const noexcept { return exactUpTo_; }

  /// Moves all starts behind the one at `index` by `delta`.
  void shiftBehind(std::size_t index, std::uint32_t delta) {
    if (index != exactUpTo_)
      makeExactUpTo(index);
    shift_ += delta;
  }

  /// Puts `newCount` starts, one at least, in place of those from `first` up to `end`, and moves
  /// all behind by `delta`. Gives the new ones, for the caller to fill at once.
  [[nodiscard]] std::span<std::uint32_t> replace(std::size_t first, std::size_t end,
                                                 std::size_t newCount, std::uint32_t delta);

private:
  void makeExactUpTo(std::size_t index) noexcept;

  std::vector<std::uint32_t> stored_;
  /// All stored starts behind this one lack `shift_`. Always a line's index.
  std::size_t exactUpTo_ = 0;
  std::uint32_t shift_ = 0;
};

/// Room for a list of `count` that will hardly stay at that: an eighth more. Vectors would double.
template <class List>
void resizeWithRoom(List& list, std::size_t count) {
  if (count > list.capacity())
    list.reserve(count + count / 8 + 16);
  list.resize(count);
}

} // namespace velmar::detail
