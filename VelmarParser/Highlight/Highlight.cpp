#include "VelmarParser/Highlight/Highlight.h"

#include "VelmarParser/Query/QueryMatches.h"

#include <algorithm>

namespace velmar {

namespace {

constexpr std::string_view priorityKey = "priority";
constexpr std::string_view embeddedName = "embedded";

} // namespace

/// Collects the matches of one call, and sorts their spans at the end.
class HighlightBuilder {
public:
  explicit HighlightBuilder(std::shared_ptr<const Query> query) {
    results_.query_ = std::move(query);
    for (const auto& selector : results_.query_->captureSelectors())
      specificities_.push_back(selector ? selector->specificity() : 0);
    embedded_ = results_.query_->captureIDNamed(embeddedName);
  }

  void add(const QueryMatches::Element& match, TextRange slice) {
    const auto* const priority = match.metadata.valueFor(priorityKey);
    const std::int64_t number = priority ? priority->number() : 0;
    for (const auto& capture : match.captures()) {
      const TextRange range = capture.node().utf16Range();
      results_.captures_.push_back({range, capture.index()});
      if (capture.selector() && range.overlaps(slice))
        results_.spans_.push_back({range, capture.index(), number, capture.index() == embedded_});
    }
    for (const auto& [captureID, key, value] : match.metadata.properties())
      results_.properties_.push_back({captureID, key, value.text()});
    results_.matches_.push_back(
        {match.patternIndex(), results_.captures_.size(), results_.properties_.size()});
  }

  HighlightResults finished() && {
    sortSpans();
    return std::move(results_);
  }

private:
  // Stable, by the place that a span has now. Keys of one word each compare faster than spans do.
  void sortSpans() {
    struct Key {
      std::int64_t lowerBound;
      std::int64_t upperBound;
      std::int64_t priority;
      std::int64_t specificity;
      std::size_t place;
    };
    std::vector<Key> keys;
    keys.reserve(results_.spans_.size());
    for (const HighlightResults::Span& span : results_.spans_)
      keys.push_back({span.range.lowerBound, span.range.upperBound, span.priority,
                      specificities_[static_cast<std::size_t>(span.captureIndex)], keys.size()});
    const auto before = [](const Key& left, const Key& right) {
      if (left.lowerBound != right.lowerBound)
        return left.lowerBound < right.lowerBound;
      if (left.upperBound != right.upperBound)
        return left.upperBound > right.upperBound; // the outer one first
      if (left.priority != right.priority)
        return left.priority < right.priority;
      if (left.specificity != right.specificity)
        return left.specificity < right.specificity;
      return left.place < right.place;
    };
    if (std::ranges::is_sorted(keys, before))
      return;
    std::ranges::sort(keys, before);
    std::vector<HighlightResults::Span> sorted;
    sorted.reserve(keys.size());
    for (const Key& key : keys)
      sorted.push_back(results_.spans_[key.place]);
    results_.spans_ = std::move(sorted);
  }

  HighlightResults results_;
  std::vector<std::int64_t> specificities_; // by capture id
  std::optional<std::int64_t> embedded_;
};

HighlightResults highlight(const Parse::Layer& layer, TextRange range) {
  auto query = layer.queryFor(ParseQueryCategory::highlights);
  if (!query)
    return {};
  HighlightBuilder builder(query);
  RegularExpressionPass pass;
  // A layer that joins the pieces of a long document covers thousands of ranges.
  const auto covered = layer.ranges().ranges();
  auto next = std::ranges::upper_bound(covered, range.lowerBound, {}, &TextRange::upperBound);
  for (; next != covered.end() && next->lowerBound < range.upperBound; ++next) {
    const auto slice = next->intersection(range);
    if (!slice || slice->isEmpty())
      continue;
    for (const auto& match :
         QueryMatches(query, layer.root(), *slice, layer.parse().text(), {}, &pass))
      builder.add(match, *slice);
  }
  return std::move(builder).finished();
}

} // namespace velmar
