#include "VelmarParser/Grammar/ParseInput.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <cstring>

namespace velmar {

TSInput ParseInput::input() {
  return {.payload = this, .read = read, .encoding = TSInputEncodingUTF16LE, .decode = nullptr};
}

const char* ParseInput::read(void* payload, std::uint32_t, TSPoint point,
                             std::uint32_t* bytesRead) {
  *bytesRead = 0;
  if (!payload)
    return nullptr;
  auto& self = *static_cast<ParseInput*>(payload);
  if (point.row >= self.text_->lineCount() || (self.isCancelled_ && self.isCancelled_->load()))
    return nullptr;
  const std::u16string_view line = self.text_->codeUnitsOfLine(point.row);
  const std::size_t offset = point.column / 2;
  if (offset >= line.size())
    return nullptr;
  const std::u16string_view units = line.substr(offset, largestRead);
  *bytesRead = static_cast<std::uint32_t>(units.size() * sizeof(char16_t));
  // Only the last unit of a line can be a CR that isn't followed by the line's LF, or a lead
  // surrogate behind which nothing of the text lies.
  const char16_t last = units.back();
  if ((last != u'\r' && !isLeadSurrogate(last)) || offset + units.size() != line.size())
    return reinterpret_cast<const char*>(units.data());
  std::ranges::copy(units, self.buffer_.begin());
  if (last == u'\r')
    self.buffer_[units.size() - 1] = u'\n';
  // For the other half of a character the runtime looks one unit beyond what it was given.
  self.buffer_[units.size()] = u'\0';
  return reinterpret_cast<const char*>(self.buffer_.data());
}

} // namespace velmar
