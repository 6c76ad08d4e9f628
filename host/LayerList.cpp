#include "host/LayerList.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::size_t mostShownRanges = 4;

} // namespace

std::string layerTitle(const Parse::Layer& layer) {
  return fmt::format("{}{}{}", layer.configuration().id().rawValue,
                     layer.isCombined() ? ", combined" : "",
                     layer.resetsHighlights() ? ", resets colours" : "");
}

std::string placeOf(const DocumentText& text, TextRange range) {
  const auto places = text.positionsOf(range);
  return fmt::format("{}:{}-{}:{}", places.lowerBound.line + 1, places.lowerBound.column + 1,
                     places.upperBound.line + 1, places.upperBound.column + 1);
}

std::string placesOf(const DocumentText& text, const TextRangeSet& set) {
  std::string places;
  const auto ranges = set.ranges();
  for (const TextRange range : ranges.first(std::min(ranges.size(), mostShownRanges)))
    places += (places.empty() ? "" : ", ") + placeOf(text, range);
  if (ranges.size() > mostShownRanges)
    places += fmt::format(" and {} more", ranges.size() - mostShownRanges);
  return places.empty() ? "nowhere" : places;
}

void writeLayers(const Parse& parse, TextRange range, Output& output) {
  // Parents first, each with all that is in it: a stack keeps what comes later.
  std::vector<Parse::Layer> waiting{parse.rootLayer()};
  while (!waiting.empty()) {
    const Parse::Layer layer = waiting.back();
    waiting.pop_back();
    if (layer.depth() > 0 && !layer.ranges().intersectsContentsOf(range))
      continue;
    output.write(std::string(static_cast<std::size_t>(layer.depth()) * 2, ' '));
    output.write(layerTitle(layer), Style::field);
    output.write(fmt::format("  {}\n", placesOf(parse.text(), layer.ranges())), Style::faint);
    const auto sublayers = layer.sublayers();
    waiting.insert(waiting.end(), sublayers.rbegin(), sublayers.rend());
  }
}

} // namespace velmar::host
