#include "VelmarCore/Text/TranscodedText.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>

namespace velmar {

namespace {

bool isAllASCII(std::string_view text) noexcept {
  unsigned char seen = 0;
  for (const char byte : text)
    seen |= static_cast<unsigned char>(byte);
  return seen < 0x80;
}

} // namespace

TranscodedText::TranscodedText(std::string_view text) : bytes_(text) {
  if (!isAllASCII(text)) {
    transcode();
    return;
  }
  char16_t* units = shortStorage_.data();
  if (text.size() > shortStorage_.size()) {
    storage_.resize(text.size());
    units = storage_.data();
  }
  widenASCII(units);
  units_ = {units, text.size()};
}

void TranscodedText::widenASCII(char16_t* units) const noexcept {
  for (std::size_t i = 0; i < bytes_.size(); ++i)
    units[i] = static_cast<char16_t>(bytes_[i]);
}

void TranscodedText::transcode() {
  storage_.reserve(bytes_.size());
  for (std::size_t byte = 0; byte < bytes_.size();) {
    if (storage_.size() >= places_.size() * placeInterval)
      places_.push_back({storage_.size(), byte});
    const DecodedScalar decoded = decodeUTF8(bytes_, byte);
    if (decoded.scalar < 0x10000) {
      storage_.push_back(static_cast<char16_t>(decoded.scalar));
    } else {
      storage_.push_back(static_cast<char16_t>(0xD800 + ((decoded.scalar - 0x10000) >> 10)));
      storage_.push_back(static_cast<char16_t>(0xDC00 + ((decoded.scalar - 0x10000) & 0x3FF)));
    }
    byte += decoded.length;
  }
  units_ = storage_;
}

TranscodedText::Place TranscodedText::next(Place place) const noexcept {
  const DecodedScalar decoded = decodeUTF8(bytes_, place.byte);
  return {place.unit + (decoded.scalar < 0x10000 ? 1 : 2), place.byte + decoded.length};
}

std::optional<std::int64_t> TranscodedText::byteOffset(std::int64_t unitOffset) const {
  if (isOneToOne())
    return unitOffset;
  const auto unit = static_cast<std::size_t>(unitOffset);
  std::size_t index = std::min(unit / placeInterval, places_.size() - 1);
  // The character noted for an interval may begin one unit into it.
  if (places_[index].unit > unit && index > 0)
    --index;
  Place place = places_[index];
  while (place.unit < unit)
    place = next(place);
  if (place.unit != unit)
    return std::nullopt;
  return static_cast<std::int64_t>(place.byte);
}

std::int64_t TranscodedText::unitOffset(std::int64_t byteOffset) const {
  if (isOneToOne())
    return byteOffset;
  const auto byte = static_cast<std::size_t>(byteOffset);
  auto behind = std::ranges::upper_bound(places_, byte, {}, &Place::byte);
  Place place = *std::prev(behind);
  while (place.byte < byte)
    place = next(place);
  return static_cast<std::int64_t>(place.unit);
}

} // namespace velmar
