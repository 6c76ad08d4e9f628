#include "VelmarCore/Text/TextStreamCollator.h"

#include "VelmarPlatform/Unicode/UTF.h"

namespace velmar {

std::optional<std::string> TextStreamCollator::append(std::span<const std::byte> bytes,
                                                      Delivery delivery) {
  return append(charactersOf(bytes), delivery);
}

std::optional<std::string> TextStreamCollator::append(std::string_view bytes, Delivery delivery) {
  const auto add = [this](std::string_view part) {
    const auto added = bytesOf(part);
    buffer_.insert(buffer_.end(), added.begin(), added.end());
  };
  if (delivery == Delivery::everything) {
    add(bytes);
    return flush();
  }
  // What was kept holds no line feed, so only the new bytes are searched.
  const std::size_t lineFeed = bytes.rfind('\n');
  if (lineFeed == std::string_view::npos) {
    add(bytes);
    return std::nullopt;
  }
  const std::string_view head = bytes.substr(0, lineFeed + 1);
  std::string lines;
  if (buffer_.empty()) { // as a rule: then the bytes needn't pass through the buffer
    lines = repairedUTF8(head);
  } else {
    add(head);
    lines = repairedUTF8(charactersOf(buffer_));
    buffer_.clear();
  }
  add(bytes.substr(lineFeed + 1));
  return lines;
}

std::optional<std::string> TextStreamCollator::flush() {
  if (buffer_.empty())
    return std::nullopt;
  std::string rest = repairedUTF8(charactersOf(buffer_));
  buffer_.clear();
  return rest;
}

} // namespace velmar
