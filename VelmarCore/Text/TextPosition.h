// A place in a document by line and column, as editors, protocols and syntax trees name it. Turning
// one into an offset and back takes the document's lines and is the line array's business.
#pragma once

#include "VelmarPlatform/Basics/Range.h"
#include "VelmarPlatform/Coding/Forward.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

namespace velmar {

/// A line and a column, both from 0. The column counts UTF-16 code units from the start of the
/// line.
///
/// Positions order by line, then by column. Nothing ties a position to a document: neither number
/// is checked here.
struct TextPosition {
  std::int64_t line = 0;
  std::int64_t column = 0;

  auto operator<=>(const TextPosition&) const = default;

  /// The line, a colon and the column, both from 0: "3:14".
  [[nodiscard]] std::string description() const;
  /// A document has it as a table of `line` and `column`.
  static std::span<const FieldRow> rows();
};

/// Writes the description.
std::ostream& operator<<(std::ostream& stream, const TextPosition& position);

/// A range as a foreign protocol sends it: some of the numbers may be missing, and either kind may
/// count from 1.
struct ForeignTextRange {
  std::int64_t startLine = 0;
  /// Absent means the line's first column.
  std::optional<std::int64_t> startColumn = std::nullopt;
  /// Absent means the start's line.
  std::optional<std::int64_t> endLine = std::nullopt;
  /// Absent means the start's column, also where the end lies on a later line.
  std::optional<std::int64_t> endColumn = std::nullopt;
  bool linesStartAtOne = false;
  bool columnsStartAtOne = false;
};

/// The positions that `foreign` means. Every number is taken, whatever a peer sends: those below
/// the first line or column are clamped to it, and an end in front of the start gives the empty
/// range at the start.
[[nodiscard]] Range<TextPosition> textPositionRangeFrom(const ForeignTextRange& foreign);

} // namespace velmar

template <>
struct std::hash<velmar::TextPosition> {
  std::size_t operator()(const velmar::TextPosition& position) const noexcept;
};
