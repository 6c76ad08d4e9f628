#include "VelmarParser/Document/SettledPlaces.h"

#include "VelmarParser/Document/InjectionPoint.h"
#include "VelmarParser/Document/KeptSublayers.h"

#include <algorithm>
#include <ranges>

namespace velmar::detail {

namespace {

/// Whether each point would find its sublayer again if it is alone with its language.
bool areSimple(std::span<const InjectionPoint> points) {
  std::int64_t end = 0;
  return std::ranges::all_of(points, [&](const InjectionPoint& point) {
    const bool isApart = point.range.lowerBound >= end;
    end = point.range.upperBound;
    if (!isApart || point.contentRanges.ranges().size() != 1)
      return false;
    return !point.languageNameRange || (!point.isCombined && !point.languageNameRange->isEmpty());
  });
}

template <class T>
void replaceElements(std::vector<T>& list, Range<std::size_t> elements, std::span<const T> by) {
  const auto at = list.begin() + static_cast<std::ptrdiff_t>(elements.lowerBound);
  const std::size_t count = elements.upperBound - elements.lowerBound;
  const std::size_t common = std::min(count, by.size());
  std::ranges::copy(by.first(common), at);
  const auto rest = at + static_cast<std::ptrdiff_t>(common);
  if (common < count)
    list.erase(rest, list.begin() + static_cast<std::ptrdiff_t>(elements.upperBound));
  else
    list.insert(rest, by.begin() + static_cast<std::ptrdiff_t>(common), by.end());
}

} // namespace

std::optional<SettledPlaces> SettledPlaces::of(std::span<const InjectionPoint> points,
                                               std::span<const LayerPtr> sublayers) {
  if (!areSimple(points))
    return std::nullopt;
  SettledPlaces places;
  std::size_t next = 0; // the sublayer that begins next
  for (const InjectionPoint& point : points) {
    Kind kind = simple;
    if (const auto combined = places.combinedFor(point)) {
      kind = furtherOf(*combined);
    } else {
      if (next == sublayers.size() || sublayers[next]->ranges.ranges().front() != point.range)
        return std::nullopt; // it has grown together with its next place
      if (point.isCombined) {
        if (places.combined_.size() == mostCombined)
          return std::nullopt;
        kind = firstOf(places.combined_.size());
        places.combined_.push_back(sublayers[next]);
      }
      ++next;
    }
    places.ranges_.push_back(point.range);
    places.kinds_.push_back(kind);
  }
  if (places.combined_.empty())
    places.kinds_.clear();
  return places;
}

std::optional<std::size_t> SettledPlaces::combinedFor(const InjectionPoint& point) const {
  if (!point.isCombined)
    return std::nullopt;
  const auto found = std::ranges::find_if(combined_, [&](const LayerPtr& layer) {
    return layer->configuration.id() == point.configuration.id();
  });
  return found != combined_.end()
             ? std::optional(static_cast<std::size_t>(found - combined_.begin()))
             : std::nullopt;
}

Range<std::size_t> SettledPlaces::indicesIn(TextRange range) const {
  const auto first = std::ranges::partition_point(
      ranges_, [&](const TextRange& each) { return each.upperBound <= range.lowerBound; });
  const auto last = std::find_if(first, ranges_.end(), [&](const TextRange& each) {
    return each.lowerBound >= range.upperBound;
  });
  return {static_cast<std::size_t>(first - ranges_.begin()),
          static_cast<std::size_t>(last - ranges_.begin())};
}

void SettledPlaces::moveWith(const LayerEdit& edit) {
  auto range = std::ranges::partition_point(
      ranges_, [&](const TextRange& each) { return each.upperBound <= edit.range.lowerBound; });
  for (; range != ranges_.end() && range->lowerBound < edit.oldUpperBound(); ++range) {
    *range = movedWithEdit(*range, edit);
    if (range->isEmpty()) // gone; a unit beside it makes it count among the places there
      *range = range->lowerBound > 0 ? TextRange(range->lowerBound - 1, range->lowerBound)
                                     : TextRange(0, 1);
  }
  for (; range != ranges_.end(); ++range) {
    range->lowerBound += edit.changeInLength;
    range->upperBound += edit.changeInLength;
  }
}

void SettledPlaces::moveBy(std::int64_t distance) {
  for (TextRange& range : ranges_)
    range = {range.lowerBound + distance, range.upperBound + distance};
}

std::size_t SettledPlaces::sublayerIndexAt(std::size_t place) const {
  const auto before = std::span(kinds_).first(kinds_.empty() ? 0 : place);
  return place - static_cast<std::size_t>(std::ranges::count_if(before, isFurther));
}

std::vector<std::size_t> SettledPlaces::sublayerIndicesAt(Range<std::size_t> places) const {
  std::vector<std::size_t> indices;
  std::size_t index = sublayerIndexAt(places.lowerBound);
  for (std::size_t place = places.lowerBound; place < places.upperBound; ++place) {
    if (isFurther(kindAt(place))) {
      const auto first = std::ranges::find(kinds_, static_cast<Kind>(kindAt(place) - 1));
      indices.push_back(sublayerIndexAt(static_cast<std::size_t>(first - kinds_.begin())));
    } else {
      indices.push_back(index++);
    }
  }
  std::ranges::sort(indices);
  indices.erase(std::ranges::unique(indices).begin(), indices.end());
  return indices;
}

std::vector<std::size_t> SettledPlaces::placesOfCombined(std::size_t combined) const {
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < kinds_.size(); ++place) {
    if (kinds_[place] == firstOf(combined) || kinds_[place] == furtherOf(combined))
      places.push_back(place);
  }
  return places;
}

std::optional<std::size_t> SettledPlaces::combinedAt(std::size_t place) const {
  const Kind kind = kindAt(place);
  return kind == simple ? std::nullopt : std::optional<std::size_t>((kind - 1) / 2);
}

bool SettledPlaces::canReplace(Range<std::size_t> places,
                               std::span<const InjectionPoint> points) const {
  if (!areSimple(points))
    return false;
  for (std::size_t place = places.lowerBound; place < places.upperBound; ++place) {
    if (isFirst(kindAt(place)))
      return false;
  }
  return std::ranges::all_of(points, [&](const InjectionPoint& point) {
    if (!point.isCombined)
      return true;
    const auto combined = combinedFor(point);
    return combined && std::ranges::find(kinds_, firstOf(*combined)) - kinds_.begin() <
                           static_cast<std::ptrdiff_t>(places.lowerBound);
  });
}

bool SettledPlaces::isStillSettled() const {
  for (std::size_t combined = 0; combined < combined_.size(); ++combined) {
    const auto first = std::ranges::find(kinds_, firstOf(combined)) - kinds_.begin();
    const TextRange grown = combined_[combined]->ranges.ranges().front();
    // One that lags behind was apart from the edit and has the places that it had.
    if (grown.length() != ranges_[static_cast<std::size_t>(first)].length())
      return false;
  }
  return true;
}

void SettledPlaces::replace(Range<std::size_t> places, std::span<const InjectionPoint> points) {
  std::vector<TextRange> ranges;
  std::vector<Kind> kinds;
  for (const InjectionPoint& point : points) {
    ranges.push_back(point.range);
    const auto combined = combinedFor(point);
    kinds.push_back(combined ? furtherOf(*combined) : simple);
  }
  replaceElements<TextRange>(ranges_, places, ranges);
  if (!kinds_.empty())
    replaceElements<Kind>(kinds_, places, kinds);
}

} // namespace velmar::detail
