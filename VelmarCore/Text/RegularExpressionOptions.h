// How the pattern of a regular expression is to be read. The bits are part of stored forms and so
// never change.
#pragma once

#include <cstdint>

namespace velmar {

/// A set of options; combine with `|`. Bits without a name have no effect, but count when
/// expressions are compared.
enum class RegularExpressionOptions : std::uint32_t {
  none = 0,
  /// Letters match without regard to case, by Unicode's simple rules.
  caseInsensitive = 1,
  /// Blanks in the pattern are ignored, and so is everything from `#` to the end of the line.
  allowCommentsAndWhitespace = 2,
  /// The whole pattern is a literal text.
  ignoreMetacharacters = 4,
  /// `.` matches line breaks too.
  dotMatchesLineSeparators = 8,
  /// `^` and `$` match at the start and end of each line, not only of the text.
  anchorsMatchLines = 16,
};

[[nodiscard]] constexpr RegularExpressionOptions operator|(RegularExpressionOptions a,
                                                           RegularExpressionOptions b) noexcept {
  return RegularExpressionOptions(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

/// Whether `options` hold all of `wanted`.
[[nodiscard]] constexpr bool holds(RegularExpressionOptions options,
                                   RegularExpressionOptions wanted) noexcept {
  const auto bits = static_cast<std::uint32_t>(wanted);
  return (static_cast<std::uint32_t>(options) & bits) == bits;
}

} // namespace velmar
