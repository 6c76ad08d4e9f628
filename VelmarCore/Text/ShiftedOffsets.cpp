#include "VelmarCore/Text/ShiftedOffsets.h"

#include <algorithm>

#if defined(__clang__)
#define VELMAR_UNPREDICTABLE(condition) __builtin_unpredictable(condition)
#else
#define VELMAR_UNPREDICTABLE(condition) (condition)
#endif

namespace velmar {

std::size_t ShiftedOffsets::countUpTo(std::int64_t offset) const noexcept {
  const std::size_t boundary = std::min(shiftedFrom_, raw_.size());
  const std::int64_t* base = raw_.data();
  std::size_t length = boundary;
  if (boundary < raw_.size() && raw_[boundary] + shift_ <= offset) {
    base += boundary;
    length = raw_.size() - boundary;
    offset -= shift_;
  }
  // A search that always halves needs no branch that depends on the data; one guesses wrong half of
  // the time.
  while (length > 0) {
    const std::size_t half = length - length / 2;
    base += VELMAR_UNPREDICTABLE(base[half - 1] <= offset) ? half : 0;
    length /= 2;
  }
  return static_cast<std::size_t>(base - raw_.data());
}

std::span<std::int64_t> ShiftedOffsets::replace(std::size_t first, std::size_t last,
                                                std::size_t count, std::int64_t delta) {
  moveShiftTo(last);
  raw_.replace(first, last, count, [](std::size_t) { return std::int64_t{0}; });
  shiftedFrom_ = first + count;
  shift_ += delta;
  return {raw_.data() + first, count};
}

void ShiftedOffsets::moveShiftTo(std::size_t index) noexcept {
  const std::size_t size = raw_.size();
  std::size_t from = std::min(shiftedFrom_, size);
  if (shift_ != 0 && index < from && size - from < from - index) {
    // The tail is shorter than the way back to `index`: settle it, and start anew.
    for (std::size_t k = from; k < size; ++k)
      raw_[k] += shift_;
    shift_ = 0;
  }
  if (shift_ != 0) {
    for (; from < index; ++from)
      raw_[from] += shift_;
    for (; from > index; --from)
      raw_[from - 1] -= shift_;
  }
  shiftedFrom_ = index;
}

} // namespace velmar
