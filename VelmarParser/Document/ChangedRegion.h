// The part of a layer in which a query may answer differently after an edit.
//
// A query's answer is a set of things found, each with a range. What an edit can change of it lies
// where the tree changed, where the old tree's matches around that had captured something, and
// where things reach out of there: the region grows until everything found in a range of it lies
// within that range. Outside, all is as it was, only moved.
#pragma once

#include "VelmarParser/Document/LayerImpl.h"
#include "VelmarParser/Query/QueryMatch.h"

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

/// Whether so much of a text of `count` units is dirty that asking the old tree and the new one
/// about it costs more than asking the new one about everything: a quote can change all that
/// follows.
[[nodiscard]] inline bool isMostlyDirty(const LayerChange& change, std::int64_t count) {
  std::int64_t dirty = 0;
  for (const TextRange& range : change.dirty.ranges())
    dirty += range.length();
  return dirty > count / 3;
}

/// Where `query` may find other things than before, to begin with.
///
/// A match of the old tree may have lost its predicates' favour, and nobody can ask these again:
/// the text that they saw is gone. So all that the old matches captured counts.
[[nodiscard]] inline TextRangeSet regionToAsk(const Query& query, const LayerChange& change,
                                              std::int64_t count) {
  TextRangeSet region = change.dirty;
  const ParseNode old = change.old->rootNode();
  for (const TextRange& dirty : change.dirty.ranges()) {
    const auto range = dirty.intersection(old.utf16Range());
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
  for (int round = 0; round < mostRounds && region.ranges().size() <= mostRanges; ++round) {
    const TextRangeSet asked = region;
    std::vector<RegionPart<Found>> parts;
    for (const TextRange& range : asked.ranges()) {
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
  }
  return std::nullopt;
}

} // namespace velmar::detail
