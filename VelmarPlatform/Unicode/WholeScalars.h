// Where a text that was cut by bytes ends as a text.
#pragma once

#include <cstddef>
#include <string_view>

namespace velmar {

/// How long `text`, UTF-8, is without the first bytes of a scalar at its end whose others are
/// missing: all of it if nothing is, also where its end isn't valid for another reason.
[[nodiscard]] constexpr std::size_t lengthOfWholeScalars(std::string_view text) noexcept {
  constexpr std::size_t mostBytesSeen = 3;
  for (std::size_t back = 1; back <= mostBytesSeen && back <= text.size(); ++back) {
    const auto byte = static_cast<unsigned char>(text[text.size() - back]);
    if ((byte & 0xC0) == 0x80)
      continue;
    const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
    return length > back ? text.size() - back : text.size();
  }
  return text.size();
}

} // namespace velmar
