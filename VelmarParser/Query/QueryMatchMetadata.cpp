#include "VelmarParser/Query/QueryMatchMetadata.h"

#include <algorithm>

namespace velmar {

std::size_t QueryMatchMetadata::indexOf(std::optional<std::int64_t> captureID,
                                        std::string_view key) const {
  std::size_t index = 0;
  while (index < count_ && (slots_[index].captureID != captureID || slots_[index].key != key))
    ++index;
  return index;
}

const QueryPropertyValue* QueryMatchMetadata::valueWithID(std::optional<std::int64_t> captureID,
                                                          std::string_view key) const {
  const std::size_t index = indexOf(captureID, key);
  return index < count_ ? &slots_[index].value : nullptr;
}

QueryPropertyValue& QueryMatchMetadata::slotFor(std::optional<std::int64_t> captureID,
                                                std::string_view key) {
  const std::size_t index = indexOf(captureID, key);
  if (index == count_) {
    if (count_ == slots_.size())
      slots_.emplace_back();
    slots_[count_].captureID = captureID;
    slots_[count_].key = key;
    ++count_;
  }
  return slots_[index].value;
}

void QueryMatchMetadata::setValue(const std::optional<QueryPropertyValue>& value,
                                  const std::optional<QueryPredicateCapture>& capture,
                                  std::string_view key) {
  if (value)
    return set(idOf(capture), key, *value);
  const std::size_t index = indexOf(idOf(capture), key);
  if (index == count_)
    return;
  std::rotate(slots_.begin() + static_cast<std::ptrdiff_t>(index),
              slots_.begin() + static_cast<std::ptrdiff_t>(index) + 1,
              slots_.begin() + static_cast<std::ptrdiff_t>(count_));
  --count_;
}

void QueryMatchMetadata::set(std::optional<std::int64_t> captureID, std::string_view key,
                             const QueryPropertyValue& value) {
  slotFor(captureID, key) = value;
}

void QueryMatchMetadata::setText(std::optional<std::int64_t> captureID, std::string_view key,
                                 std::string_view text) {
  slotFor(captureID, key).setString(text);
}

void QueryMatchMetadata::assign(const QueryMatchMetadata& other) {
  if (this == &other)
    return;
  slots_.resize(std::max(slots_.size(), other.count_));
  std::ranges::copy(other.properties(), slots_.begin());
  count_ = other.count_;
}

bool QueryMatchMetadata::operator==(const QueryMatchMetadata& other) const {
  return count_ == other.count_ && std::ranges::all_of(properties(), [&](const Property& property) {
           const auto* const value = other.valueWithID(property.captureID, property.key);
           return value && *value == property.value;
         });
}

} // namespace velmar
