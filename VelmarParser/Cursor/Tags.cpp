#include "VelmarParser/Cursor/Tags.h"

#include "VelmarParser/Query/QueryMatches.h"

namespace velmar {

namespace {

using RangesByName = std::array<std::optional<TextRange>, 4>;

RangesByName rangesOf(const QueryMatches::Element& match) {
  RangesByName ranges;
  for (const auto& capture : match.capturesNamed<TagMatchingCapture>())
    ranges[static_cast<std::size_t>(capture.name)] = capture.node().utf16Range();
  return ranges;
}

std::optional<Tag> tagOf(const std::optional<TextRange>& whole,
                         const std::optional<TextRange>& name) {
  const auto range = whole ? whole : name;
  return range ? std::optional(Tag{.range = *range, .nameRange = name}) : std::nullopt;
}

} // namespace

std::vector<Tag> matchingTagsAt(const Parse::Layer& layer, std::int64_t offset) {
  const Parse& parse = layer.parse();
  precondition(offset >= 0 && offset <= parse.count(), "Tags were asked for outside the text.");
  if (parse.isEmpty())
    return {};
  auto query = layer.queryFor(ParseQueryCategory::tagMatching);
  if (!query)
    return {};
  const std::int64_t start = offset == parse.count() ? offset - 1 : offset;
  for (const auto& match :
       QueryMatches(std::move(query), layer.root(), {start, start + 1}, parse.text())) {
    const auto [whole, name, endWhole, endName] = rangesOf(match);
    const auto opening = tagOf(whole, name);
    const auto closing = tagOf(endWhole, endName);
    if (opening && closing)
      return {*opening, *closing};
  }
  return {};
}

} // namespace velmar
