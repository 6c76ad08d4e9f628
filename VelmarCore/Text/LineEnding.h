// What ends a line, and how it is recognised in text of any encoding.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Basics/Range.h"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string_view>

namespace velmar {

/// The three terminators that a document's lines can have. The raw values are stored by
/// applications and never change.
enum class LineEnding : std::int64_t { lf = 0, cr = 1, crlf = 2 };

/// The case with that raw value; absent for every number but 0, 1 and 2.
[[nodiscard]] std::optional<LineEnding> lineEndingFromRawValue(std::int64_t rawValue) noexcept;

/// The characters themselves: "\n", "\r" or "\r\n".
[[nodiscard]] std::string_view string(LineEnding ending) noexcept;
/// The name that people know: "LF", "CR" or "CRLF".
[[nodiscard]] std::string_view displayName(LineEnding ending) noexcept;

/// Writes the display name.
std::ostream& operator<<(std::ostream& stream, LineEnding ending);

/// A terminator and the code units that it takes: one, or two for CR LF.
struct FoundLineEnding {
  LineEnding ending = LineEnding::lf;
  TextRange range;

  bool operator==(const FoundLineEnding&) const = default;
};

namespace detail {

/// The one algorithm behind every encoding: CR and LF are single code units of the same value in
/// all of them.
template <class TextView>
[[nodiscard]] constexpr std::optional<FoundLineEnding> lineEndingIn(TextView text,
                                                                    std::int64_t index) {
  using Unit = typename TextView::value_type;
  constexpr Unit lf = 10;
  constexpr Unit cr = 13;
  precondition(index >= 0, "A line ending was looked for in front of the text.");
  const auto count = static_cast<std::int64_t>(text.size());
  if (index >= count)
    return std::nullopt;
  const auto unitAt = [&](std::int64_t at) { return text[static_cast<std::size_t>(at)]; };
  const std::int64_t next = index + 1;
  if (unitAt(index) == lf) {
    if (index > 0 && unitAt(index - 1) == cr)
      return FoundLineEnding{LineEnding::crlf, {index - 1, next}};
    return FoundLineEnding{LineEnding::lf, {index, next}};
  }
  if (unitAt(index) == cr) {
    if (next < count && unitAt(next) == lf)
      return FoundLineEnding{LineEnding::crlf, {index, next + 1}};
    return FoundLineEnding{LineEnding::cr, {index, next}};
  }
  return std::nullopt;
}

} // namespace detail

/// The terminator that the unit at `index` belongs to, with the range of the whole terminator:
/// either unit of a CR LF pair gives the pair. Absent for any other unit and at or behind the end
/// of the text.
///
/// `index` and the range count code units of `text`: bytes of UTF-8, units of UTF-16, or scalars. A
/// negative index stops the process. O(1).
[[nodiscard]] constexpr std::optional<FoundLineEnding> lineEndingAt(std::u16string_view text,
                                                                    std::int64_t index) {
  return detail::lineEndingIn(text, index);
}
[[nodiscard]] constexpr std::optional<FoundLineEnding> lineEndingAt(std::string_view text,
                                                                    std::int64_t index) {
  return detail::lineEndingIn(text, index);
}
[[nodiscard]] constexpr std::optional<FoundLineEnding> lineEndingAt(std::u32string_view text,
                                                                    std::int64_t index) {
  return detail::lineEndingIn(text, index);
}

} // namespace velmar
