// What kind of token each code unit lies in, kept for every layer after each of its parses.

#include "VelmarCore/Text/RangeComparator.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Query/QueryMatches.h"

namespace velmar {

namespace {

struct ClassifiedRange {
  TextRange range;
  LexicalClass lexicalClass;
};

/// Lays the ranges, sorted, over each other: a range that overlaps the one laid before it covers it
/// if its class is another, and is left out with all of its text if its class is the same.
void layDown(std::span<const ClassifiedRange> sorted, LexicalSpans& spans) {
  const ClassifiedRange* current = nullptr;
  for (const ClassifiedRange& next : sorted) {
    if (current && current->range.overlaps(next.range) &&
        current->lexicalClass == next.lexicalClass)
      continue;
    spans.replaceSubrange(next.range, next.lexicalClass, next.range.length());
    current = &next;
  }
}

} // namespace

void Parse::updateLexicalSpans(detail::LayerImpl& layer, const detail::LayerEdit& edit) {
  layer.lexicalSpans = noLexicalSpans();
  const auto query = withErrorHandling([] { return "lexicalSpans"; }, layer.configuration,
                                       [&] { return layer.configuration.lexicalClassesQuery(); });
  if (!query || !layer.tree)
    return;

  std::vector<ClassifiedRange> found;
  const ParseNode root = layer.rootNode();
  for (const auto& match : QueryMatches(query, root, root.utf16Range(), lines_, {}, edit.pass)) {
    for (const auto& capture : match.captures()) {
      const auto& selector = capture.selector();
      if (selector && selector->lexicalClass())
        found.push_back({capture.node().utf16Range(), *selector->lexicalClass()});
    }
  }
  sortBy(found, &ClassifiedRange::range);
  layDown(found, layer.lexicalSpans);
}

} // namespace velmar
