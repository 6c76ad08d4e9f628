// Keeping, making and dropping sublayers for the languages inside a layer after its parse.
//
// The rule is told for all places of a layer's injections at once: they are gone through in order,
// and each takes the old sublayer that stands there or gets a new one. That is
// `parseAllInjections`. As long as the sublayers are settled (LayerImpl.h), what the rule does away
// from a change is known beforehand: every sublayer is found again, moved. So at most edits only a
// region around the change is gone through, and the sublayers elsewhere aren't even looked at.

#include "VelmarCore/Text/RangeComparator.h"
#include "VelmarParser/Document/ChangedRegion.h"
#include "VelmarParser/Document/InjectionPoint.h"
#include "VelmarParser/Document/KeptSublayers.h"
#include "VelmarParser/Document/Parse.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <unordered_map>
#include <utility>

namespace velmar {

using detail::InjectionPoint;
using detail::KeptSublayers;
using detail::LayerChange;
using detail::LayerEdit;
using detail::LayerImpl;
using detail::MovedSublayer;
using detail::RegionPart;
using detail::SettledPlaces;
using detail::treeRange;

namespace {

/// A document is nested no deeper than this: layers at this depth have no sublayers.
constexpr std::int64_t deepestLayer = 64;

using LayerPtr = std::shared_ptr<LayerImpl>;

/// Whether the sublayers at these points would be found again at an edit that doesn't touch them:
/// the points are apart, simple sublayers have one range of text, and a combined one hasn't grown
/// beyond its first place.
bool wouldBeFoundAgain(std::span<const LayerPtr> sublayers,
                       std::span<const InjectionPoint> points) {
  std::int64_t end = 0;
  const bool areApart = std::ranges::all_of(points, [&](const InjectionPoint& point) {
    const bool isApart = point.range.lowerBound >= end;
    end = point.range.upperBound;
    return isApart && (point.isCombined || point.contentRanges.ranges().size() == 1) &&
           !(point.languageNameRange && point.languageNameRange->isEmpty());
  });
  return areApart && std::ranges::all_of(sublayers, [&](const LayerPtr& sublayer) {
           if (!sublayer->isCombined)
             return true;
           const TextRange first = sublayer->ranges.ranges().front();
           const auto point = std::ranges::partition_point(points, [&](const InjectionPoint& each) {
             return each.range.lowerBound < first.lowerBound;
           });
           return point != points.end() && point->range == first;
         });
}

/// A layer that left the document keeps what it last was.
void retire(LayerImpl& layer) {
  layer.editsSeen = LayerImpl::isRetired;
  for (const LayerPtr& sublayer : layer.sublayers)
    retire(*sublayer);
}

void unsettle(LayerImpl& layer) {
  layer.hasQuietSublayers = false;
  layer.settled.reset();
}

/// Whether an edit moves the columns of a place behind it, which some grammars look at.
bool movesColumns(const LayerEdit& edit, TSPoint place) {
  return place.row == edit.edit.old_end_point.row &&
         edit.edit.old_end_point.column != edit.edit.new_end_point.column;
}

} // namespace

TextRangeSet Parse::parseInjections(const LayerPtr& layer, const LayerEdit& edit,
                                    const LayerChange& change) {
  const auto query = queryFor(ParseQueryCategory::injections, layer->configuration);
  if (!query || !layer->tree || layer->depth >= deepestLayer) {
    dropSublayers(*layer);
    layer->hasQuietSublayers = true;
    layer->settled.emplace();
    return {};
  }
  if (change.old() && layer->settled && !query->asksForSurroundings()) {
    if (const auto region = detail::regionToAsk(*query, change, lines_.count())) {
      if (const auto parts = changedInjections(*layer, edit, change, query, *region))
        return parseInjectionsIn(*parts, layer, edit);
    }
  }
  return parseAllInjections(layer, edit, query);
}

TextRangeSet Parse::parseAllInjections(const LayerPtr& layer, const LayerEdit& edit,
                                       const std::shared_ptr<const Query>& query) {
  const std::int64_t errorsBefore = errorCount_;
  std::vector<InjectionPoint> points;
  const ParseNode root = layer->rootNode();
  const bool isComplete =
      findInjections(*layer, *edit.pass, query, detail::AskedRange::all(root), {}, points);
  sortBy(points, &InjectionPoint::range);

  const std::vector<MovedSublayer> old = movedSublayers(std::exchange(layer->sublayers, {}), edit);
  layer->sublayers = sublayersAt(points, old, layer);
  const bool isSteady =
      isComplete && errorCount_ == errorsBefore && wouldBeFoundAgain(layer->sublayers, points);
  TextRangeSet changed = reparseSublayers(layer->sublayers, old, edit);
  layer->hasQuietSublayers = isSteady && std::ranges::all_of(layer->sublayers, &LayerImpl::isQuiet);
  layer->settled =
      layer->hasQuietSublayers ? SettledPlaces::of(points, layer->sublayers) : std::nullopt;
  layer->columnsMatter = std::ranges::any_of(layer->sublayers, &LayerImpl::columnsMatter);
  return changed;
}

// Those sublayers that the edit moved and nothing else are carried along; the others are parsed.
TextRangeSet Parse::reparseSublayers(std::span<const LayerPtr> now,
                                     std::span<const MovedSublayer> old, const LayerEdit& edit) {
  std::unordered_map<const LayerImpl*, const MovedSublayer*> dropped;
  for (const MovedSublayer& moved : old)
    dropped.emplace(moved.layer.get(), &moved);
  std::vector<const MovedSublayer*> kept; // by index in `now`, null for new ones
  for (const LayerPtr& sublayer : now) {
    const auto found = dropped.find(sublayer.get());
    kept.push_back(found != dropped.end() ? found->second : nullptr);
    if (found != dropped.end())
      dropped.erase(found);
  }

  // What a dropped sublayer covered gets painted again.
  TextRangeSet changed;
  for (const auto& [sublayer, moved] : dropped) {
    changed.formUnion(moved->affected);
    retire(*moved->layer);
  }
  for (std::size_t index = 0; index < now.size(); ++index) {
    if (kept[index] && canCarry(*kept[index], edit)) {
      carry(*kept[index]);
    } else {
      changed.formUnion(reparse(now[index], edit));
      edit.enter(EditPhase::injections);
    }
  }
  return changed;
}

bool Parse::canCarry(const MovedSublayer& moved, const LayerEdit& edit) const {
  const LayerImpl& layer = *moved.layer;
  return moved.isApart && layer.isQuiet && layer.ranges == moved.ranges &&
         layer.languageNameRanges == moved.languageNameRanges &&
         !(movesColumns(edit, moved.oldFront.start_point) && layer.columnsMatter);
}

void Parse::carry(const MovedSublayer& moved) {
  LayerImpl& layer = *moved.layer;
  layer.editsSeen = log_.count();
  if (isCancelled_->load()) // as if its parse had been begun
    giveUpParse(layer, std::exchange(layer.tree, std::nullopt));
  else
    moveContents(layer, moved.oldStart, moved.oldFront, lines_.count());
}

std::vector<MovedSublayer> Parse::movedSublayers(std::span<const LayerPtr> sublayers,
                                                 const LayerEdit& edit) const {
  std::vector<MovedSublayer> moved;
  moved.reserve(sublayers.size());
  for (const LayerPtr& sublayer : sublayers) {
    log_.catchUp(*sublayer, log_.count() - 1);
    moved.emplace_back(sublayer, edit);
  }
  return moved;
}

// One sublayer for each point, or for all points of a language that asks to be combined, in the
// order of the points.
std::vector<Parse::LayerPtr> Parse::sublayersAt(std::span<const InjectionPoint> points,
                                                std::span<const MovedSublayer> old,
                                                const LayerPtr& layer) {
  std::vector<LayerPtr> sublayers;
  std::map<LanguageID, LayerPtr> combined;
  KeptSublayers keptSublayers(old);
  for (const InjectionPoint& point : points) {
    LayerPtr sublayer;
    if (point.isCombined) {
      if (const auto found = combined.find(point.configuration.id()); found != combined.end())
        sublayer = found->second;
    }
    if (!sublayer) {
      sublayer = keptSublayers.take(point);
      if (!sublayer) {
        sublayer = withErrorHandling(
            [] { return "injections"; }, layer->configuration,
            [&] { return std::make_shared<LayerImpl>(point.configuration, layer, isCancelled_); });
      }
      if (!sublayer)
        continue;
      sublayer->isCombined = point.isCombined;
      sublayer->resetsHighlights = point.resetsHighlights;
      sublayers.push_back(sublayer);
      if (point.isCombined)
        combined.emplace(point.configuration.id(), sublayer);
    }
    sublayer->ranges.formUnion(point.contentRanges);
    for (const TextRange& range : point.contentRanges.ranges())
      sublayer->includedRanges.push_back(treeRange(range, lines_));
    if (point.languageNameRange)
      sublayer->languageNameRanges.insertContentsOf(*point.languageNameRange);
  }
  return sublayers;
}

// The injections that may be others than before; absent if all have to be gone through.
std::optional<std::vector<RegionPart<InjectionPoint>>>
Parse::changedInjections(LayerImpl& layer, const LayerEdit& edit, const LayerChange& change,
                         const std::shared_ptr<const Query>& query, TextRangeSet region) {
  SettledPlaces& settled = *layer.settled;
  settled.moveWith(edit);
  if (edit.edit.old_end_point.column != edit.edit.new_end_point.column) {
    const std::int64_t lineEnd =
        lines_.lineBoundariesFor(edit.range.upperBound, LineAffinity::downstream).end;
    const auto [first, last] = settled.indicesIn({edit.range.upperBound, lineEnd});
    for (std::size_t place = first; place < last; ++place) {
      if (!settled.combinedAt(place) &&
          layer.sublayers[settled.sublayerIndexAt(place)]->columnsMatter)
        region.insertContentsOf(settled.ranges()[place]);
    }
  }

  const auto insertPlacesIn = [&](TextRange range, TextRangeSet& asked) {
    const auto [first, last] = settled.indicesIn(range);
    for (std::size_t place = first; place < last; ++place)
      asked.insertContentsOf(settled.ranges()[place]);
  };
  const TextRangeSet changed = region;
  for (const TextRange& range : changed.ranges())
    insertPlacesIn(range, region);

  // What goes wrong here is told when all injections are gone through.
  const std::int64_t errorsBefore = errorCount_;
  hidesErrors_ = true;
  detail::PiecewiseSearch search(*query, layer.rootNode());
  auto parts = detail::settle<InjectionPoint>(
      std::move(region),
      [&](TextRange range, std::vector<InjectionPoint>& found, TextRangeSet& asked) {
        insertPlacesIn(range, asked);
        const detail::AskedRange place = search.at(range);
        return !search.goesTooFar(lines_.count()) &&
               findInjections(layer, *edit.pass, query, place, {change, asked}, found);
      });
  hidesErrors_ = false;
  if (!parts || errorCount_ != errorsBefore)
    return std::nullopt;
  for (auto& part : *parts) {
    sortBy(part.found, &InjectionPoint::range);
    if (!settled.canReplace(settled.indicesIn(part.range), part.found))
      return std::nullopt;
  }
  return parts;
}

// In each part the old sublayers make room for those that are there now. The others have been moved
// or left where they were, and will see that when somebody looks.
TextRangeSet Parse::parseInjectionsIn(std::span<const RegionPart<InjectionPoint>> parts,
                                      const LayerPtr& layer, const LayerEdit& edit) {
  const std::int64_t errorsBefore = errorCount_;
  SettledPlaces& settled = *layer->settled;
  std::vector<std::pair<std::size_t, LayerPtr>> made; // by the place where each begins
  std::vector<MovedSublayer> old;
  std::vector<bool> isTouched(settled.combined().size());
  std::size_t missing = 0; // sublayers that couldn't be made for their places
  for (const auto& part : parts) {
    const Range<std::size_t> places = settled.indicesIn(part.range);
    if (places.isEmpty() && part.found.empty())
      continue;
    for (std::size_t place = places.lowerBound; place < places.upperBound; ++place) {
      if (const auto combined = settled.combinedAt(place))
        isTouched[*combined] = true;
    }
    const std::size_t first = settled.sublayerIndexAt(places.lowerBound) - missing;
    const std::size_t last = settled.sublayerIndexAt(places.upperBound) - missing;
    std::vector<MovedSublayer> there =
        movedSublayers(std::span(layer->sublayers).subspan(first, last - first), edit);
    std::vector<InjectionPoint> simple;
    std::ranges::copy_if(part.found, std::back_inserter(simple),
                         std::not_fn(&InjectionPoint::isCombined));
    const std::vector<LayerPtr> now = sublayersAt(simple, there, layer);
    std::ranges::move(there, std::back_inserter(old));

    missing += simple.size() - now.size();
    settled.replace(places, part.found);
    const auto begin = layer->sublayers.begin();
    const auto gap = layer->sublayers.erase(begin + static_cast<std::ptrdiff_t>(first),
                                            begin + static_cast<std::ptrdiff_t>(last));
    layer->sublayers.insert(gap, now.begin(), now.end());
    auto next = now.begin();
    for (std::size_t index = 0; index < part.found.size(); ++index) {
      const std::size_t place = places.lowerBound + index;
      if (const auto combined = settled.combinedAt(place))
        isTouched[*combined] = true;
      else if (next != now.end())
        made.emplace_back(place, *next++);
    }
  }
  for (std::size_t combined = 0; combined < isTouched.size(); ++combined) {
    if (auto moved = rejoinCombined(settled, combined, isTouched[combined], edit)) {
      made.emplace_back(settled.placesOfCombined(combined).front(), moved->layer);
      old.push_back(std::move(*moved));
    }
  }
  std::ranges::sort(made, {}, &std::pair<std::size_t, LayerPtr>::first);
  std::vector<LayerPtr> sublayers;
  for (auto& [place, sublayer] : made)
    sublayers.push_back(std::move(sublayer));

  const bool wasCancelled = isCancelled_->load();
  TextRangeSet changed = reparseSublayers(sublayers, old, edit);
  if (isCancelled_->load())
    cancelSublayers(*layer,
                    wasCancelled        ? nullptr
                    : sublayers.empty() ? nullptr
                                        : sublayers.front(),
                    sublayers);
  layer->columnsMatter |= std::ranges::any_of(sublayers, &LayerImpl::columnsMatter);
  if (errorCount_ != errorsBefore || !std::ranges::all_of(sublayers, &LayerImpl::isQuiet) ||
      !(layer->settled && layer->settled->isStillSettled()))
    unsettle(*layer);
  return changed;
}

// A combined sublayer takes part in each edit that isn't apart from all of its text, with the
// places that it has now. Absent if it need not.
std::optional<MovedSublayer> Parse::rejoinCombined(const SettledPlaces& settled,
                                                   std::size_t combined, bool isTouched,
                                                   const LayerEdit& edit) const {
  const std::vector<std::size_t> places = settled.placesOfCombined(combined);
  const LayerPtr& sublayer = settled.combined()[combined];
  const TextRange hull(settled.ranges()[places.front()].lowerBound,
                       settled.ranges()[places.back()].upperBound);
  const bool isApart =
      hull.upperBound < edit.range.lowerBound || hull.lowerBound > edit.range.upperBound;
  const bool isColumnMoved = sublayer->columnsMatter &&
                             edit.edit.old_end_point.column != edit.edit.new_end_point.column &&
                             lines_.positionOf(hull.lowerBound).line == edit.edit.new_end_point.row;
  if (!isTouched && isApart && !isColumnMoved)
    return std::nullopt;

  log_.catchUp(*sublayer, log_.count() - 1);
  MovedSublayer moved(sublayer, edit);
  sublayer->ranges = {};
  sublayer->includedRanges.clear();
  for (const std::size_t place : places) {
    sublayer->ranges.insertContentsOf(settled.ranges()[place]);
    sublayer->includedRanges.push_back(treeRange(settled.ranges()[place], lines_));
  }
  return moved;
}

// A cancelled edit parses nothing behind the place where it was cancelled, and layers that aren't
// parsed lose what they had.
void Parse::cancelSublayers(LayerImpl& layer, const LayerPtr& first,
                            std::span<const LayerPtr> alreadySeen) {
  unsettle(layer);
  const auto start = first ? std::ranges::find(layer.sublayers, first) : layer.sublayers.begin();
  for (const LayerPtr& sublayer : std::ranges::subrange(start, layer.sublayers.end())) {
    if (std::ranges::find(alreadySeen, sublayer) != alreadySeen.end())
      continue;
    log_.catchUp(*sublayer);
    giveUpParse(*sublayer, std::exchange(sublayer->tree, std::nullopt));
  }
}

void Parse::dropSublayers(LayerImpl& layer) {
  for (const LayerPtr& sublayer : layer.sublayers)
    retire(*sublayer);
  layer.sublayers.clear();
}

} // namespace velmar
