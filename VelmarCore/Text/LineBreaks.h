// Finding the next CR or LF, the inner loop of loading and pasting.
#pragma once

#include <cstddef>
#include <string_view>

namespace velmar {

/// The index of the first CR or LF at or behind `from`, or the size of `text` where there is none.
[[nodiscard]] std::size_t indexOfLineBreak(std::u16string_view text, std::size_t from) noexcept;

/// Whether there is a CR or LF in `text`. A single unit, what a keystroke brings, costs no call.
[[nodiscard]] inline bool hasLineBreak(std::u16string_view text) noexcept {
  if (text.size() == 1)
    return text.front() == u'\n' || text.front() == u'\r';
  return !text.empty() && indexOfLineBreak(text, 0) != text.size();
}

} // namespace velmar
