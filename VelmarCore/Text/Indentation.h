// How far a line is indented.
#pragma once

#include "VelmarPlatform/Basics/Range.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmar {

/// The leading blanks of a line, measured for some tab width. Only tabs and plain spaces are
/// indentation.
struct Indentation {
  /// The blanks that were measured, from 0, in code units of the text.
  TextRange range;
  /// The number of tabs among them.
  std::int64_t tabCount = 0;
  /// The number of spaces among them.
  std::int64_t spaceCount = 0;
  /// The blanks' width in columns: a tab counts as the tab width, whatever column it starts at.
  std::int64_t effectiveSpaces = 0;
  /// The whole steps of indentation in that width, however they are written: a tab and a full tab
  /// width of spaces are one step each. What is left over counts for nothing.
  std::int64_t level = 0;

  bool operator==(const Indentation&) const = default;
};

/// Measures the blanks that `text` starts with. A blank that carries a combining mark isn't one any
/// more and ends them.
///
/// A tab width below 1 measures nothing: an empty range and zeros. With `maxEffectiveSpaces` the
/// walk stops as soon as that width is reached; a tab can overshoot it. The width stops growing at
/// the largest integer. O(number of blanks).
[[nodiscard]] Indentation
indentationForTabWidth(std::u16string_view text, std::int64_t tabWidth,
                       std::optional<std::int64_t> maxEffectiveSpaces = std::nullopt);
[[nodiscard]] Indentation
indentationForTabWidth(std::string_view text, std::int64_t tabWidth,
                       std::optional<std::int64_t> maxEffectiveSpaces = std::nullopt);

} // namespace velmar
