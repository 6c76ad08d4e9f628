// What kind of token each code unit lies in, kept for every layer after each of its parses.
//
// The rule is told for the whole layer: all captures of its query, sorted, are laid over each other
// in that order. Where no capture reaches across a place, what is in front of it can't matter
// behind it. So after an edit only a region around it is asked and laid again (ChangedRegion.h).

#include "VelmarCore/Text/RangeComparator.h"
#include "VelmarParser/Document/ChangedRegion.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Query/QueryMatches.h"

namespace velmar {

using detail::AskedRange;
using detail::ChangedMatches;
using detail::LayerChange;
using detail::LayerEdit;
using detail::LayerImpl;
using detail::PiecewiseSearch;
using detail::regionToAsk;
using detail::settle;

namespace {

struct ClassifiedRange {
  TextRange range;
  LexicalClass lexicalClass;
};

/// The captures in a part of a layer that are to be laid down. Leaves out those elsewhere that
/// can't have changed. Gives false if matches were dropped because too many were in progress; what
/// is found then depends on where the search began.
bool findClassified(const std::shared_ptr<const Query>& query, const AskedRange& asked,
                    const DocumentText& text, RegularExpressionPass* pass, ChangedMatches& changed,
                    std::vector<ClassifiedRange>& found) {
  for (const ParseNode& root : asked.roots) {
    const QueryMatches matches =
        QueryMatches(query, root, asked.searched, text, {}, pass).seenBy(changed);
    auto match = matches.begin();
    for (; match != matches.end(); ++match) {
      for (const auto& capture : match->captures()) {
        const auto& selector = capture.selector();
        if (selector && selector->lexicalClass() &&
            changed.matters(capture.node().utf16Range(), asked.range))
          found.push_back({capture.node().utf16Range(), *selector->lexicalClass()});
      }
    }
    if (match.hasDroppedMatches())
      return false;
  }
  return true;
}

/// The spans of `range` when `found`, all of which lie in it, are laid over each other in the order
/// of their ranges: one that overlaps the one laid before it covers it if its class is another, and
/// is left out with all of its text if its class is the same.
LexicalSpans laidDown(TextRange range, std::vector<ClassifiedRange> found) {
  sortBy(found, &ClassifiedRange::range);
  LexicalSpans spans(std::nullopt, range.length());
  const ClassifiedRange* current = nullptr;
  for (const ClassifiedRange& next : found) {
    if (current && current->range.overlaps(next.range) &&
        current->lexicalClass == next.lexicalClass)
      continue;
    spans.replaceSubrange(
        {next.range.lowerBound - range.lowerBound, next.range.upperBound - range.lowerBound},
        next.lexicalClass, next.range.length());
    current = &next;
  }
  return spans;
}

} // namespace

void Parse::updateLexicalSpans(LayerImpl& layer, const LayerEdit& edit, const LayerChange& change) {
  const auto query = withErrorHandling([] { return "lexicalSpans"; }, layer.configuration,
                                       [&] { return layer.configuration.lexicalClassesQuery(); });
  if (!query || !layer.tree) {
    layer.lexicalSpans = noLexicalSpans();
    return;
  }

  const ParseNode root = layer.rootNode();
  const auto find = [&](const AskedRange& asked, ChangedMatches changed,
                        std::vector<ClassifiedRange>& found) {
    return findClassified(query, asked, lines_, edit.pass, changed, found);
  };
  if (change.old() && layer.spansArePiecewise) {
    PiecewiseSearch search(*query, root);
    const auto parts = settle<ClassifiedRange>(
        regionToAsk(*query, change, lines_.count()),
        [&](TextRange range, auto& found, TextRangeSet& region) {
          const AskedRange asked = search.at(range);
          return !search.goesTooFar(lines_.count()) && find(asked, {change, region}, found);
        });
    if (parts) {
      layer.lexicalSpans.replaceSubrange({edit.range.lowerBound, edit.oldUpperBound()},
                                         std::nullopt, edit.range.length());
      for (const auto& part : *parts)
        layer.lexicalSpans.replaceSubrangeWithContentsOf(part.range,
                                                         laidDown(part.range, part.found));
      return;
    }
  }

  std::vector<ClassifiedRange> found;
  layer.spansArePiecewise = find(AskedRange::all(root), {}, found) && !query->asksForSurroundings();
  layer.lexicalSpans = laidDown({0, lines_.count()}, std::move(found));
}

} // namespace velmar
