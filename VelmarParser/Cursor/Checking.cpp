#include "VelmarParser/Cursor/Checking.h"

#include "VelmarParser/Structure/ScopingRegions.h"

namespace velmar {

namespace {

std::vector<TextRange> regionsOf(const Parse::Layer& layer,
                                 const std::shared_ptr<const Query>& query, TextRange range) {
  std::vector<TextRange> ranges;
  for (const ScopingRegion& region : scopingRegions(layer, query, range))
    ranges.push_back(region.range);
  return ranges;
}

std::vector<TextRange> commentsIn(const Parse::Layer& layer, TextRange range) {
  std::vector<TextRange> ranges;
  const auto inText = range.intersection({0, layer.parse().count()});
  if (!inText || inText->isEmpty())
    return ranges;
  const auto runs = layer.lexicalSpans().runsIn(*inText);
  for (std::size_t index = 0; index < runs.size(); ++index) {
    if (runs.value(index) == LexicalClass::comment)
      ranges.push_back(runs.range(index));
  }
  return ranges;
}

} // namespace

TextRangeSet textCheckingRangesIntersecting(const Parse::Layer& layer, TextRange range) {
  const auto query = layer.queryFor(ParseQueryCategory::textChecking);
  return TextRangeSet(query ? regionsOf(layer, query, range) : commentsIn(layer, range));
}

std::vector<TextRange> colorCandidatesIn(const Parse::Layer& layer, TextRange range) {
  const auto query = layer.queryFor(ParseQueryCategory::colors);
  return query ? regionsOf(layer, query, range) : std::vector<TextRange>();
}

} // namespace velmar
