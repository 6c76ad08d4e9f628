// What one match says of a stretch of the text: all of it, or where it starts, or where it ends.
//
// A query marks stretches with the captures "subtree", "start", "start.before", "end" and
// "end.after", and says more about them with properties:
//
//     ((block) @subtree (#set! "scope.byLine"))
//     ((start_tag (tag_name) @name) @start (#set! "scope.groupByName"))
#pragma once

#include "VelmarParser/Query/QueryMatches.h"
#include "VelmarParser/Query/TextEnumeration.h"
#include "VelmarParser/Structure/ScopingAttributes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar {

/// What a pattern can set about the stretch that it marks.
enum class ScopeMetadata : std::uint8_t {
  /// The stretch is whole lines, without the first one and the one that its end stands on.
  byLine,
  /// A start that nothing ends runs on: to the next one of its level, or the end of what is around.
  extend,
  /// The name of the group in which starts and ends pair.
  group,
  /// The group's name is the symbol's.
  groupByName,
  /// A signed decimal number.
  level,
};

inline std::span<const std::string_view> rawValuesOf(ScopeMetadata) {
  static constexpr std::array<std::string_view, 5> texts{
      "scope.byLine", "scope.extend", "scope.group", "scope.groupByName", "scope.level"};
  return texts;
}

/// The captures that give positions: `subtree` the whole of its node, the others one end.
enum class ScopingCapture : std::uint8_t {
  subtree,
  /// Behind the node.
  start,
  startBefore,
  /// In front of the node.
  end,
  endAfter,
};

inline std::span<const std::string_view> rawValuesOf(ScopingCapture) {
  static constexpr std::array<std::string_view, 5> texts{"subtree", "start", "start.before", "end",
                                                         "end.after"};
  return texts;
}

struct ScopingCandidate {
  /// A range, or an end, or a start alone. Offsets are UTF-16 code units of the document.
  class PartialRange {
  public:
    /// At one position, all that is whole comes first; then an end closes what stands in front of
    /// it, before a start begins anew.
    enum class Kind : std::uint8_t { range, end, start };

    PartialRange() = default;
    [[nodiscard]] static PartialRange whole(TextRange range) { return {Kind::range, range}; }
    [[nodiscard]] static PartialRange startingAt(std::int64_t offset) {
      return {Kind::start, {offset, offset}};
    }
    [[nodiscard]] static PartialRange endingAt(std::int64_t offset) {
      return {Kind::end, {offset, offset}};
    }

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    /// For a start or an end, the empty range there.
    [[nodiscard]] TextRange range() const noexcept { return range_; }
    /// Less comes first among candidates of one range.
    [[nodiscard]] int sortPriority() const noexcept { return static_cast<int>(kind_); }

    bool operator==(const PartialRange&) const = default;

  private:
    PartialRange(Kind kind, TextRange range) : range_(range), kind_(kind) {}

    TextRange range_;
    Kind kind_ = Kind::range;
  };

  PartialRange span;
  std::int64_t level = 0;
  bool byLine = false;
  std::optional<std::string> group = std::nullopt;
  /// Whether the one who reads the match is to fill `group`.
  bool groupByName = false;
  /// Only for a lone start.
  bool isExtended = false;
  ScopingAttributes attributes = {};

  bool operator==(const ScopingCandidate&) const = default;
};

struct ScopingOptions {
  /// Whether the range leaves out the rest of its first line and the line that its end stands on.
  bool byLine = false;
  /// Whether a range inside one line is none.
  bool enforceMultiline = false;
};

/// The range to use for a stretch from `lower` to `upper`; absent if nothing is left of it.
/// O(log lines).
[[nodiscard]] std::optional<TextRange> rangeForScopingRegion(const DocumentText& text,
                                                             std::int64_t lower, std::int64_t upper,
                                                             ScopingOptions options);

/// What the match marks, without attributes; absent if it marks nothing, or a range that is no
/// range: one whose start isn't in front of its end, say. `byLine` comes from the match.
[[nodiscard]] std::optional<ScopingCandidate>
scopingCandidateFor(const QueryMatches::Element& match, const DocumentText& text,
                    bool enforceMultiline);

} // namespace velmar
