#include "VelmarCore/Text/ShiftedOffsets.h"

#include <algorithm>

namespace velmar {

std::size_t ShiftedOffsets::countUpTo(std::int64_t offset) const noexcept {
  const std::size_t boundary = std::min(shiftedFrom_, raw_.size());
  const std::int64_t* base = raw_.data();
  std::size_t length = boundary;
  std::size_t counted = 0;
  if (boundary < raw_.size() && raw_[boundary] + shift_ <= offset) {
    base += boundary;
    length = raw_.size() - boundary;
    counted = boundary;
    offset -= shift_;
  }
  // A search that always halves takes no branch that depends on the data.
  while (length > 0) {
    const std::size_t half = length - length / 2;
    const std::size_t step = base[half - 1] <= offset ? half : 0;
    base += step;
    counted += step;
    length /= 2;
  }
  return counted;
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
