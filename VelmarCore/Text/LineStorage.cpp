#include "VelmarCore/Text/LineStorage.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace velmar {

UTF16LineArrayStringStorage::UTF16LineArrayStringStorage(
    UTF16LineArrayStringStorage&& other) noexcept
    : units_(std::exchange(other.units_, nullptr)), count_(std::exchange(other.count_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

UTF16LineArrayStringStorage&
UTF16LineArrayStringStorage::operator=(UTF16LineArrayStringStorage&& other) noexcept {
  std::swap(units_, other.units_);
  std::swap(count_, other.count_);
  std::swap(capacity_, other.capacity_);
  return *this;
}

UTF16LineArrayStringStorage::~UTF16LineArrayStringStorage() {
  std::free(units_);
}

char16_t UTF16LineArrayStringStorage::operator[](std::int64_t index) const {
  precondition(index >= 0 && index < count(), "A code unit's index lies outside its line.");
  return units_[index];
}

std::u16string UTF16LineArrayStringStorage::substringFor(TextRange range) const {
  checkRange(range);
  return {units_ + range.lowerBound, static_cast<std::size_t>(range.length())};
}

void UTF16LineArrayStringStorage::copySubrange(TextRange range, std::span<char16_t> buffer) const {
  checkRange(range);
  precondition(std::cmp_greater_equal(buffer.size(), range.length()),
               "The buffer is smaller than the range to copy.");
  if (!range.isEmpty())
    std::memcpy(buffer.data(), units_ + range.lowerBound,
                static_cast<std::size_t>(range.length()) * sizeof(char16_t));
}

void UTF16LineArrayStringStorage::replaceSubrange(TextRange range, std::u16string_view units) {
  checkRange(range);
  const std::size_t tail = count_ - static_cast<std::size_t>(range.upperBound);
  const std::size_t newCount = static_cast<std::size_t>(range.lowerBound) + units.size() + tail;
  if (newCount > capacity_)
    reserve(newCount);
  char16_t* const hole = units_ + range.lowerBound;
  if (tail != 0 && std::cmp_not_equal(units.size(), range.length()))
    std::memmove(hole + units.size(), units_ + range.upperBound, tail * sizeof(char16_t));
  if (units.size() == 1)
    *hole = units.front(); // A keystroke: not worth a call.
  else if (!units.empty())
    std::memcpy(hole, units.data(), units.size() * sizeof(char16_t));
  count_ = static_cast<std::uint32_t>(newCount);
}

void UTF16LineArrayStringStorage::appendContentsOf(std::u16string_view units) {
  replaceSubrange({count(), count()}, units);
}

void UTF16LineArrayStringStorage::removeSubrange(TextRange range) {
  replaceSubrange(range, {});
}

void UTF16LineArrayStringStorage::checkRange(TextRange range) const {
  precondition(range.lowerBound >= 0 && range.upperBound <= count(),
               "A range reaches outside its line.");
}

void UTF16LineArrayStringStorage::reserve(std::size_t needed) {
  precondition(needed <= std::numeric_limits<std::uint32_t>::max() / 2,
               "A line can't hold more than 2,147,483,647 code units.");
  // The first text of a line fits exactly; a line that has grown once is likely to grow again.
  // Allocators hand out blocks of a multiple of 16 bytes less 8 of their own, so that is what we
  // ask for.
  const std::size_t wanted = capacity_ == 0 ? needed : needed + needed / 4 + 4;
  const std::size_t rounded = (wanted + 4 + 7) / 8 * 8 - 4;
  void* const block = std::realloc(
      units_,
      rounded * sizeof(char16_t)); // NOLINT(bugprone-suspicious-realloc-usage): throws below
  if (!block)
    throw std::bad_alloc();
  units_ = static_cast<char16_t*>(block);
  capacity_ = static_cast<std::uint32_t>(rounded);
}

} // namespace velmar
