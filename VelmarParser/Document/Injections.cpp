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
#include "VelmarParser/Grammar/TreeChanges.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_map>

namespace velmar {

using detail::indicesIn;
using detail::InjectionPoint;
using detail::KeptSublayers;
using detail::LayerChange;
using detail::LayerEdit;
using detail::LayerImpl;
using detail::MovedSublayer;
using detail::RegionPart;
using detail::treeRange;

namespace {

/// A document is nested no deeper than this: layers at this depth have no sublayers.
constexpr std::int64_t deepestLayer = 64;

using LayerPtr = std::shared_ptr<LayerImpl>;

/// Whether the sublayers at these points, each a simple one, would be found again at an edit that
/// doesn't touch them.
bool areSimple(std::span<const InjectionPoint> points) {
  std::int64_t end = 0;
  return std::ranges::all_of(points, [&](const InjectionPoint& point) {
    const bool isApart = point.range.lowerBound >= end;
    end = point.range.upperBound;
    return isApart && (point.isCombined || point.contentRanges.ranges().size() == 1) &&
           !(point.languageNameRange && point.languageNameRange->isEmpty());
  });
}

bool isAnyCombined(std::span<const InjectionPoint> points) {
  return std::ranges::any_of(points, &InjectionPoint::isCombined);
}

/// Whether combined sublayers, too, would be found again: by their first place, which must not have
/// grown together with the next.
bool areFoundByFirstPlace(std::span<const LayerPtr> sublayers,
                          std::span<const InjectionPoint> points) {
  return std::ranges::all_of(sublayers, [&](const LayerPtr& sublayer) {
    if (!sublayer->isCombined)
      return true;
    const TextRange first = sublayer->ranges.ranges().front();
    const auto point = std::ranges::partition_point(points, [&](const InjectionPoint& each) {
      return each.range.lowerBound < first.lowerBound;
    });
    return point != points.end() && point->range == first;
  });
}

template <class T>
void replaceElements(std::vector<T>& list, std::size_t first, std::size_t last,
                     std::span<const T> replacements) {
  const auto at = list.begin() + static_cast<std::ptrdiff_t>(first);
  const std::size_t common = std::min(last - first, replacements.size());
  std::ranges::copy(replacements.first(common), at);
  const auto rest = at + static_cast<std::ptrdiff_t>(common);
  if (common < last - first)
    list.erase(rest, list.begin() + static_cast<std::ptrdiff_t>(last));
  else
    list.insert(rest, replacements.begin() + static_cast<std::ptrdiff_t>(common),
                replacements.end());
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
  if (change.old && layer->settled && !query->asksForSurroundings()) {
    const auto parts = changedInjections(*layer, edit, change, query);
    if (parts)
      return parseInjectionsIn(*parts, layer, edit);
  }
  return parseAllInjections(layer, edit, query);
}

TextRangeSet Parse::parseAllInjections(const LayerPtr& layer, const LayerEdit& edit,
                                       const std::shared_ptr<const Query>& query) {
  const std::int64_t errorsBefore = errorCount_;
  std::vector<InjectionPoint> points;
  const bool isComplete =
      findInjections(*layer, *edit.pass, query, layer->rootNode().utf16Range(), points);
  sortBy(points, &InjectionPoint::range);

  const std::vector<MovedSublayer> old = movedSublayers(std::exchange(layer->sublayers, {}), edit);
  layer->sublayers = sublayersAt(points, old, layer);
  const bool wouldBeFound = isComplete && errorCount_ == errorsBefore && areSimple(points) &&
                            areFoundByFirstPlace(layer->sublayers, points);
  TextRangeSet changed = reparseSublayers(layer->sublayers, old, edit);
  layer->hasQuietSublayers =
      wouldBeFound && std::ranges::all_of(layer->sublayers, &LayerImpl::isQuiet);
  layer->settled.reset();
  if (layer->hasQuietSublayers && !isAnyCombined(points)) {
    layer->settled.emplace();
    for (const InjectionPoint& point : points)
      layer->settled->push_back(point.range);
  }
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
         !(movesColumns(edit, moved.oldFront.start_point) && dependsOnColumn(*layer.tree->base()));
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
                         const std::shared_ptr<const Query>& query) {
  std::vector<TextRange>& settled = *layer.settled;
  for (TextRange& range : settled)
    range = movedWithEdit(range, edit);
  TextRangeSet region = detail::regionToAsk(*query, change, lines_.count());
  if (edit.edit.old_end_point.column != edit.edit.new_end_point.column) {
    const std::int64_t lineEnd =
        lines_.lineBoundariesFor(edit.range.upperBound, LineAffinity::downstream).end;
    const auto [first, last] = indicesIn(settled, {edit.range.upperBound, lineEnd});
    for (std::size_t index = first; index < last; ++index) {
      if (dependsOnColumn(*layer.sublayers[index]->tree->base()))
        region.insertContentsOf(settled[index]);
    }
  }

  // What goes wrong here is told when all injections are gone through.
  const std::int64_t errorsBefore = errorCount_;
  hidesErrors_ = true;
  auto parts = detail::settle<InjectionPoint>(
      std::move(region),
      [&](TextRange range, std::vector<InjectionPoint>& found, TextRangeSet& asked) {
        const auto [first, last] = indicesIn(settled, range);
        for (std::size_t index = first; index < last; ++index)
          asked.insertContentsOf(settled[index]);
        return findInjections(layer, *edit.pass, query, range, found);
      });
  hidesErrors_ = false;
  if (!parts || errorCount_ != errorsBefore)
    return std::nullopt;
  for (auto& part : *parts) {
    sortBy(part.found, &InjectionPoint::range);
    if (!areSimple(part.found) || isAnyCombined(part.found))
      return std::nullopt;
  }
  return parts;
}

// In each part the old sublayers make room for those that are there now. The others have been moved
// or left where they were, and will see that when somebody looks.
TextRangeSet Parse::parseInjectionsIn(std::span<const RegionPart<InjectionPoint>> parts,
                                      const LayerPtr& layer, const LayerEdit& edit) {
  const std::int64_t errorsBefore = errorCount_;
  std::vector<TextRange>& settled = *layer->settled;
  std::vector<LayerPtr> made;
  std::vector<MovedSublayer> old;
  std::size_t firstTouched = layer->sublayers.size();
  for (const auto& part : parts) {
    const auto [first, last] = indicesIn(settled, part.range);
    if (first == last && part.found.empty())
      continue;
    firstTouched = std::min(firstTouched, first);
    std::vector<MovedSublayer> there =
        movedSublayers(std::span(layer->sublayers).subspan(first, last - first), edit);
    const std::vector<LayerPtr> now = sublayersAt(part.found, there, layer);
    std::vector<TextRange> ranges;
    for (const LayerPtr& sublayer : now)
      ranges.push_back(sublayer->ranges.ranges().front());
    replaceElements<LayerPtr>(layer->sublayers, first, last, now);
    replaceElements<TextRange>(settled, first, last, ranges);
    made.insert(made.end(), now.begin(), now.end());
    std::ranges::move(there, std::back_inserter(old));
  }

  const bool wasCancelled = isCancelled_->load();
  TextRangeSet changed = reparseSublayers(made, old, edit);
  if (isCancelled_->load())
    cancelSublayers(*layer, wasCancelled ? 0 : firstTouched, made);
  if (errorCount_ != errorsBefore || !std::ranges::all_of(made, &LayerImpl::isQuiet))
    unsettle(*layer);
  return changed;
}

// A cancelled edit parses nothing behind the place where it was cancelled, and layers that aren't
// parsed lose what they had.
void Parse::cancelSublayers(LayerImpl& layer, std::size_t first,
                            std::span<const LayerPtr> alreadySeen) {
  unsettle(layer);
  for (const LayerPtr& sublayer : std::span(layer.sublayers).subspan(first)) {
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
