// Stretches of the text as units: folds, symbols, arguments, prose.
//
// Two matches can declare one region, also where the grammar has no node for it: a match that gives
// only a start waits for one that gives an end. They pair by position, or, where they name a group,
// with the others of that group:
//
//     (atx_heading (atx_h2_marker)) @start.before   with "scope.extend" and "scope.level" "2"
//
// runs up to the next region of level 2 or 1. Nothing here fails: what comes to no usable range is
// left out. All of it is the caller's thread's.
#pragma once

#include "VelmarCore/Concurrency/CancellationToken.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Structure/ScopingCandidate.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmar {

/// A stretch that has both ends.
struct ScopingRegion {
  /// UTF-16 code units of the document.
  TextRange range;
  std::int64_t level = 0;
  /// The group in which its ends met.
  std::optional<std::string> group = std::nullopt;
  bool byLine = false;
  /// Whether it still lacks its end. None that is given out does.
  bool isIncomplete = false;
  ScopingAttributes attributes = {};

  bool operator==(const ScopingRegion&) const = default;
};

struct ScopingRegionsOptions {
  /// Whether what lies inside one line is left out.
  bool enforceMultiline = false;
  /// Makes the pairing throw CancellationError soon. Null: it can't be cancelled.
  const CancellationToken* cancel = nullptr;
};

/// Pairs the candidates of one layer, and gives the regions in order of their lower bounds, the
/// longer first where two start together, but for extended ones, whose ends are found last.
///
/// An end closes the last start in front of it, or in its group the last one of its level, where
/// level 0 takes any. A start that nothing ends is dropped; if it is extended, it ends where a line
/// ends in front of the next region with a level that isn't deeper (a blank line there is left out
/// too), or else with what encloses it. O(n log n).
[[nodiscard]] std::vector<ScopingRegion> scopingRegionsFor(const DocumentText& text,
                                                           std::vector<ScopingCandidate> candidates,
                                                           ScopingRegionsOptions options = {});

/// A region of `range` alone, without attributes; absent where `rangeForScopingRegion` is.
[[nodiscard]] std::optional<ScopingRegion>
scopingRegionFor(const DocumentText& text, TextRange range, ScopingOptions options);

/// Adds to a candidate what its match says beyond positions.
using ScopingCandidateBuilder =
    std::function<void(ScopingCandidate& candidate, const QueryMatches::Element& match)>;

/// The regions that `query` declares with nodes from `node` down, in `range`. `pass` is what
/// regular expressions are charged to, if given.
[[nodiscard]] std::vector<ScopingRegion>
scopingRegionsIn(std::optional<ParseNode> node, TextRange range, const DocumentText& text,
                 const std::shared_ptr<const Query>& query,
                 const ScopingCandidateBuilder& candidateBuilder = nullptr,
                 RegularExpressionPass* pass = nullptr);

/// The regions that `query` declares in `range` of the layer, or in all of it.
[[nodiscard]] std::vector<ScopingRegion>
scopingRegions(const Parse::Layer& layer, const std::shared_ptr<const Query>& query,
               std::optional<TextRange> range = std::nullopt,
               const ScopingCandidateBuilder& candidateBuilder = nullptr,
               RegularExpressionPass* pass = nullptr);

} // namespace velmar
