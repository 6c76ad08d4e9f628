// Finding the next CR or LF, the inner loop of loading and pasting.
#pragma once

#include <cstddef>
#include <string_view>

namespace velmar {

/// The index of the first CR or LF at or behind `from`, or the size of `text` where there is none.
[[nodiscard]] std::size_t indexOfLineBreak(std::u16string_view text, std::size_t from) noexcept;

} // namespace velmar
