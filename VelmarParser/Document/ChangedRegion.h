// The part of a layer in which a query may answer differently after an edit.
//
// A query's answer is a set of things found, each with a range. What an edit can change of it lies
// where the tree changed, where the old tree's matches around that had captured something, and
// where things reach out of there: the region grows until everything found in a range of it lies
// within that range. Outside, all is as it was, only moved.
#pragma once

#include "VelmarParser/Document/LayerImpl.h"
#include "VelmarParser/Query/QueryMatch.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace velmar::detail {

/// One range of a region and what was found in it, in the order of the query's matches.
template <class Found>
struct RegionPart {
  TextRange range;
  std::vector<Found> found;
};

/// Whether so much of a text of `count` units is dirty that asking about it costs more than asking
/// the new tree about everything: a quote can change all that follows.
[[nodiscard]] inline bool isMostlyDirty(const Query& query, const LayerChange& change,
                                        std::int64_t count) {
  std::int64_t dirty = 0;
  for (const TextRange& range : change.dirty.ranges())
    dirty += range.length();
  // Where each pattern has one root, the old tree needn't be asked about all of it, too.
  return dirty > (query.hasSingleRoots() ? count - count / 8 : count / 3);
}

/// Parts of `dirty` of which one is touched by each node that reaches out of it.
inline void appendEndsOf(TextRange dirty, std::vector<TextRange>& ends) {
  constexpr std::int64_t littleText = 64;
  if (dirty.length() <= littleText) {
    ends.push_back(dirty);
    return;
  }
  ends.emplace_back(dirty.lowerBound, dirty.lowerBound + 1);
  ends.emplace_back(dirty.upperBound - 1, dirty.upperBound);
}

/// Where `query` may find other things than before, to begin with.
///
/// A match of the old tree may have lost its predicates' favour, and nobody can ask these again:
/// the text that they saw is gone. So all that the old matches captured counts. What lies in a
/// dirty range does anyway; a match that captured something elsewhere as well has a root that
/// reaches out of it, so that it is enough to ask at its ends, unless a pattern has several roots.
[[nodiscard]] inline TextRangeSet regionToAsk(const Query& query, const LayerChange& change,
                                              std::int64_t count) {
  TextRangeSet region = change.dirty;
  const ParseNode old = change.old->rootNode();
  std::vector<TextRange> asked;
  for (const TextRange& dirty : change.dirty.ranges()) {
    if (query.hasSingleRoots())
      appendEndsOf(dirty, asked);
    else
      asked.push_back(dirty);
  }
  for (const TextRange& part : asked) {
    const auto range = part.intersection(old.utf16Range());
    if (!range || range->isEmpty())
      continue;
    for (const Query::Match& match : query.matchesStartingAt(old, *range)) {
      for (const auto& capture : match.captures())
        region.insertContentsOf(capture.node().utf16Range());
    }
  }
  region.formIntersection(TextRangeSet({0, count}));
  return region;
}

/// Grows `region` by what `find(range, found, region)` finds, and by what that adds itself, until
/// nothing reaches out of its range. A match that lies elsewhere is found again there, beside all
/// others of that place, since their order can matter. Absent where `find` gives false or where
/// asking piece by piece isn't worth it: then the whole layer is to be asked.
template <class Found, class Find>
[[nodiscard]] std::optional<std::vector<RegionPart<Found>>> settle(TextRangeSet region, Find find) {
  constexpr std::size_t mostRanges = 32;
  constexpr int mostRounds = 16;
  std::vector<RegionPart<Found>> before;
  for (int round = 0; round < mostRounds && region.ranges().size() <= mostRanges; ++round) {
    const TextRangeSet asked = region;
    std::vector<RegionPart<Found>> parts;
    for (const TextRange& range : asked.ranges()) {
      const auto known = std::ranges::find(before, range, &RegionPart<Found>::range);
      if (known != before.end()) {
        parts.push_back(std::move(*known));
        continue;
      }
      RegionPart<Found> part{range, {}};
      if (!find(range, part.found, region))
        return std::nullopt;
      std::erase_if(part.found, [&](const Found& found) {
        if (range.containsRange(found.range))
          return false;
        region.insertContentsOf(found.range);
        return true;
      });
      parts.push_back(std::move(part));
    }
    if (region == asked)
      return parts;
    before = std::move(parts);
  }
  return std::nullopt;
}

} // namespace velmar::detail
