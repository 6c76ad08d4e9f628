// The one place where the tree's units meet the text's.
//
// Trees measure UTF-16LE text in bytes: an offset is twice the UTF-16 offset, and so is a column.
// Everything else here speaks code units. A tree's numbers have 32 bits; a text that doesn't fit
// must not get this far (see `largestParsableCount`).
#pragma once

#include "VelmarCore/Text/TextPosition.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Basics/Range.h"

#include <tree_sitter/api.h>

#include <compare>
#include <cstdint>
#include <limits>

namespace velmar {

/// An offset into a tree, in bytes of UTF-16LE text.
struct TreeByte {
  std::uint32_t value = 0;
  auto operator<=>(const TreeByte&) const = default;
};

/// The most code units that a document can have: 2^31 bytes and more are outside what trees can
/// measure.
inline constexpr std::int64_t largestParsableCount = (std::int64_t{1} << 30) - 1;

/// Stops the process if `utf16Offset` is negative or too large for a tree.
[[nodiscard]] inline TreeByte treeByte(std::int64_t utf16Offset) {
  precondition(utf16Offset >= 0 && utf16Offset <= std::numeric_limits<std::uint32_t>::max() / 2,
               "An offset doesn't fit a syntax tree.");
  return {static_cast<std::uint32_t>(utf16Offset) * 2};
}
[[nodiscard]] constexpr std::int64_t utf16Offset(TreeByte byte) {
  return byte.value / 2;
}
[[nodiscard]] constexpr TextRange utf16Range(TreeByte start, TreeByte end) {
  return {utf16Offset(start), utf16Offset(end)};
}

/// Stops the process if the line or the doubled column doesn't fit 32 bits.
[[nodiscard]] inline TSPoint treePoint(TextPosition position) {
  precondition(position.line >= 0 && position.line <= std::numeric_limits<std::uint32_t>::max(),
               "A line doesn't fit a syntax tree.");
  return {static_cast<std::uint32_t>(position.line), treeByte(position.column).value};
}
[[nodiscard]] constexpr TextPosition textPosition(TSPoint point) {
  return {.line = point.row, .column = point.column / 2};
}

} // namespace velmar
