#include "VelmarCore/Text/LineStarts.h"

#include <algorithm>
#include <cstring>

// Clang would turn the selection in a search by halving back into a branch unless it is told.
#if defined(__has_builtin) && __has_builtin(__builtin_unpredictable)
#define VELMAR_UNPREDICTABLE(condition) __builtin_unpredictable(condition)
#else
#define VELMAR_UNPREDICTABLE(condition) (condition)
#endif

namespace velmar::detail {

std::size_t LineStarts::lastAtOrBefore(std::uint32_t offset) const noexcept {
  const std::uint32_t* base = stored_.data();
  std::size_t length = stored_.size() - 1;
  std::uint32_t shift = 0;
  const std::size_t behind = exactUpTo_ + 1;
  if (behind < length && stored_[behind] + shift_ <= offset) {
    base += behind;
    length -= behind;
    shift = shift_;
  } else {
    length = behind;
  }
  // Halved without branches, which the processor couldn't foresee. The shift is added to the start:
  // a stored start can lie below 0, so it tells nothing without it.
  while (length > 1) {
    const std::size_t half = length / 2;
    base = VELMAR_UNPREDICTABLE(base[half] + shift <= offset) ? base + half : base;
    length -= half;
  }
  return static_cast<std::size_t>(base - stored_.data());
}

std::span<std::uint32_t> LineStarts::replace(std::size_t first, std::size_t end,
                                             std::size_t newCount, std::uint32_t delta) {
  makeExactUpTo(first);
  const std::size_t kept = stored_.size() - end;
  const std::size_t behind = first + newCount;
  if (behind > end)
    resizeWithRoom(stored_, behind + kept);
  std::memmove(stored_.data() + behind, stored_.data() + end, kept * sizeof(std::uint32_t));
  stored_.resize(behind + kept);
  exactUpTo_ = behind - 1;
  shift_ += delta;
  return std::span(stored_).subspan(first, newCount);
}

void LineStarts::makeExactUpTo(std::size_t index) noexcept {
  const auto add = [this](std::size_t from, std::size_t to, std::uint32_t amount) {
    for (std::uint32_t& start : std::span(stored_).subspan(from, to - from))
      start += amount;
  };
  if (index >= exactUpTo_) {
    add(exactUpTo_ + 1, index + 1, shift_);
  } else if (exactUpTo_ - index <= stored_.size() - exactUpTo_) {
    add(index + 1, exactUpTo_ + 1, 0 - shift_);
  } else {
    add(exactUpTo_ + 1, stored_.size(), shift_);
    shift_ = 0;
  }
  exactUpTo_ = index;
}

} // namespace velmar::detail
