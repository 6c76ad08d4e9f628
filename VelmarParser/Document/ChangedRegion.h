// The part of a layer in which a query may answer differently after an edit.
//
// A query's answer is a set of things found, each with a range. What an edit can change of it lies
// where the tree changed, where the old tree's matches around that had captured something, and
// where things reach out of there: the region grows until everything found in a range of it lies
// within that range. Outside, all is as it was, only moved.
#pragma once

#include "VelmarParser/Document/LayerChange.h"
#include "VelmarParser/Query/QueryMatch.h"
#include "VelmarParser/Query/SearchRoots.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
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
[[nodiscard]] inline bool isMostlyDirty(const Query& query, const TextRangeSet& dirty,
                                        std::int64_t count) {
  constexpr std::size_t fewRanges = 64;
  constexpr std::int64_t costOfRange = 64; // as many units cost as much to ask about
  std::int64_t units = 0;
  if (dirty.ranges().size() > fewRanges)
    units = costOfRange * static_cast<std::int64_t>(dirty.ranges().size());
  for (const TextRange& range : dirty.ranges())
    units += range.length();
  // Where each pattern has one root, the old tree needn't be asked about all of it, too.
  return units > (query.hasSingleRoots() ? count - count / 8 : count / 3);
}

/// A range of a layer to ask a query about.
struct AskedRange {
  TextRange range;
  /// What of it lies in the tree.
  TextRange searched;
  /// Where to search there; none if nothing can be found.
  std::span<const ParseNode> roots;

  /// Everything below `root`, which must outlive this.
  [[nodiscard]] static AskedRange all(const ParseNode& root) {
    const TextRange range = root.utf16Range();
    return {range, range, {&root, range.isEmpty() ? 0U : 1U}};
  }
};

/// Asks a query about ranges of a tree, in text order as far as can be.
class PiecewiseSearch {
public:
  /// The query and the tree must outlive this.
  PiecewiseSearch(const Query& query, ParseNode root) noexcept
      : roots_(query, root), whole_(root) {}

  /// Good until the next call.
  [[nodiscard]] AskedRange at(TextRange range) {
    const TextRange searched = range.intersection(whole_.utf16Range()).value_or(TextRange(0, 0));
    if (searched.isEmpty())
      return {range, searched, {}};
    if (++count_ <= fewRanges)
      return {range, searched, {&whole_, 1}};
    return {range, searched,
            roots_.around({treeByte(searched.lowerBound), treeByte(searched.upperBound)})};
  }

  /// Whether it takes longer to find the ranges in the tree than to go through all `count` units.
  [[nodiscard]] bool goesTooFar(std::int64_t count) const noexcept {
    constexpr std::int64_t littleWay = 2'048;
    return roots_.passedCount() > std::max(littleWay, count / 4);
  }

private:
  /// Not worth a look for where to begin.
  static constexpr int fewRanges = 8;

  SearchRoots roots_;
  ParseNode whole_;
  int count_ = 0;
};

/// Where `query` may find other things than before, to begin with; absent where everything is to be
/// asked.
///
/// A match of the old tree may have lost its predicates' favour, and nobody can ask these again:
/// the text that they saw is gone. So all that the old matches captured counts. What lies in a
/// dirty range does anyway; a match that captured something elsewhere as well has a root that
/// reaches out of it, so that it is enough to ask at its ends, unless a pattern has several roots.
/// If the new tree has the same nodes it has the same matches, too, and ChangedMatches sees these.
[[nodiscard]] inline std::optional<TextRangeSet>
regionToAsk(const Query& query, const LayerChange& change, std::int64_t count) {
  DirtyPlaces dirty = change.dirtyFor(query);
  if (isMostlyDirty(query, dirty.ranges, count))
    return std::nullopt;
  TextRangeSet region = std::move(dirty.ranges);
  PiecewiseSearch search(query, change.old()->rootNode());
  for (const TextRange& end : dirty.ends.ranges()) {
    if (change.hasSameNodes())
      break;
    const AskedRange asked = search.at(end);
    if (search.goesTooFar(count))
      return std::nullopt;
    for (const ParseNode& root : asked.roots) {
      for (const Query::Match& match : query.matchesStartingAt(root, asked.searched)) {
        for (const auto& capture : match.captures())
          region.insertContentsOf(capture.node().utf16Range());
      }
    }
  }
  region.formIntersection(TextRangeSet({0, count}));
  return region;
}

/// Tells apart the matches of a new tree that an edit can have changed from those that it can't,
/// and adds to the region all that the former capture.
///
/// Where the old tree had the same nodes, it had the same matches. A predicate answers otherwise
/// only if the text of a node that it looks at has changed, and it looks at captures alone.
class ChangedMatches {
public:
  /// Both must outlive it.
  ChangedMatches(const LayerChange& change, TextRangeSet& region)
      : change_(change.hasSameNodes() ? &change : nullptr), region_(&region) {}
  /// All may have changed.
  ChangedMatches() = default;

  /// For QueryMatches: looks at the next match.
  void operator()(const Query::Match& match) {
    if (!change_)
      return;
    mayHaveChanged_ = std::ranges::any_of(match.captures(), [&](const auto& capture) {
      return change_->edited().intersectsContentsOf(capture.node().utf16Range());
    });
    if (mayHaveChanged_) {
      for (const auto& capture : match.captures())
        region_->insertContentsOf(capture.node().utf16Range());
    }
  }

  /// Whether something that the match has found in `found` matters in a range that was asked.
  [[nodiscard]] bool matters(TextRange found, TextRange asked) const {
    return mayHaveChanged_ || found.overlaps(asked) || asked.containsRange(found);
  }

private:
  const LayerChange* change_ = nullptr; // null if it tells nothing
  TextRangeSet* region_ = nullptr;
  bool mayHaveChanged_ = true;
};

/// Grows `region` by what `find(range, found, region)` finds, and by what that adds itself, until
/// nothing reaches out of its range. A match that lies elsewhere is found again there, beside all
/// others of that place, since their order can matter. Absent where `find` gives false or where
/// asking piece by piece isn't worth it, also if there is no region: then the whole layer is to be
/// asked.
template <class Found, class Find>
[[nodiscard]] std::optional<std::vector<RegionPart<Found>>>
settle(std::optional<TextRangeSet> initial, Find find) {
  if (!initial)
    return std::nullopt;
  TextRangeSet region = std::move(*initial);
  const std::size_t mostRanges = 32 + 2 * region.ranges().size();
  constexpr int mostRounds = 16;
  std::vector<RegionPart<Found>> before;
  for (int round = 0; round < mostRounds && region.ranges().size() <= mostRanges; ++round) {
    const TextRangeSet asked = region;
    std::vector<RegionPart<Found>> parts;
    for (const TextRange& range : asked.ranges()) {
      const auto known = std::ranges::partition_point(
          before, [&](const auto& part) { return part.range.lowerBound < range.lowerBound; });
      if (known != before.end() && known->range == range) {
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
