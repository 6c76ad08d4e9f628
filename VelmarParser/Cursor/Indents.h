// How far a line is to be indented, by the language's indents query.
//
// The query captures nodes; what counts is on which line each of them starts:
//
//     (compound_statement) @indent.begin               ; lines behind its first are a level deeper
//     (compound_statement "}" @indent.branch)          ; a line that starts with this isn't
//     (ERROR "{" @indent.begin) (ERROR "}" @indent.end)   ; the same while a piece doesn't parse
//
// Nodes that start on one line count once, the innermost of them: `call({` opens one level.
//
// While something is typed, its text is broken most of the time, and that is when a new line is
// asked for. So a node whose closing token the parser had to make up goes on over blank space
// behind it; opening tokens that stand in an error, captured by themselves, pair there with the
// closing ones and, where they have none, count up to the end of what the error stands in; and only
// the lines in front decide, so what is missing behind the cursor does no harm.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Query/QueryMatchMetadata.h"
#include "VelmarParser/Query/TextEnumeration.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>

namespace velmar {

/// What an indents query captures.
enum class IndentsCapture : std::uint8_t {
  /// Lines inside, such as those of a comment, stay as they are.
  automatic,
  /// Lines inside are a level deeper than the line on which it starts; "indent.levels" says how
  /// many
  /// levels. With "indent.body" so is the line that it starts, if that isn't the line on which what
  /// stands in front of it ends: a statement without braces. With "indent.open" it has no closing
  /// token and goes on over blank space behind it: a case of a switch.
  begin,
  /// Closes; like `branch` where a line starts with it.
  end,
  /// A line that starts with it is as deep as the line on which its parent starts.
  branch,
  /// Lines inside it are a level less deep.
  dedent,
  /// Like `begin`, but lines inside are aligned: with what stands behind its first token, if that
  /// is on the same line, or with the node itself if it has no such token.
  align,
  /// Doesn't count, whatever else captures it.
  ignore,
  /// A line that starts with it isn't indented.
  zero,
};

inline std::span<const std::string_view> rawValuesOf(IndentsCapture) {
  static constexpr std::array<std::string_view, 8> texts{
      "indent.auto",   "indent.begin", "indent.end",    "indent.branch",
      "indent.dedent", "indent.align", "indent.ignore", "indent.zero"};
  return texts;
}

/// What the query says of a place: by capture, the nodes with the metadata of their last match.
struct Indents {
  using Nodes = std::unordered_map<ParseNode, QueryMatchMetadata>;

  std::map<IndentsCapture, Nodes> values;

  /// Empty for a capture that isn't there.
  [[nodiscard]] const Nodes& operator[](IndentsCapture capture) const;
};

struct LineIndent {
  /// The levels that count, never below 0.
  std::int64_t levels = 0;
  /// An offset with whose column the line is to be aligned; absent if only levels count.
  std::optional<std::int64_t> alignedWith = std::nullopt;
  /// The levels behind that column.
  std::int64_t levelsBehindAlignment = 0;
  /// Whether the line is to stay as it is, whatever the levels say.
  bool isKept = false;

  bool operator==(const LineIndent&) const = default;
};

/// How far the line that holds `offset` is to be indented, as far as this layer knows; nothing
/// without an indents query. Stops the process for an offset outside the text.
///
/// The cost follows what stands on the line and encloses it, not the document.
[[nodiscard]] LineIndent lineIndentAt(const Parse::Layer& layer, std::int64_t offset);

/// The same by all layers that hold the line: what a layer adds counts on top of what is around it.
[[nodiscard]] LineIndent lineIndentAt(const Parse& parse, std::int64_t offset);

/// The levels alone; an alignment counts as one.
[[nodiscard]] std::int64_t indentAt(const Parse::Layer& layer, std::int64_t offset);

} // namespace velmar
