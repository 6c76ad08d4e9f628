// What kind of token each code unit lies in, kept for every layer after each of its parses.
//
// The rule is told for the whole layer: all captures of its query, sorted, are laid over each other
// in that order. Where no capture reaches across a place, what is in front of it can't matter
// behind it. So after an edit only the captures in a region around it are found and laid again, and
// the region grows until no capture reaches out of it.

#include "VelmarCore/Text/RangeComparator.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Query/QueryMatches.h"

namespace velmar {

using detail::LayerChange;
using detail::LayerEdit;
using detail::LayerImpl;

namespace {

struct ClassifiedRange {
  TextRange range;
  LexicalClass lexicalClass;
};

/// Past these it is cheaper, or at least surer to end, to do the whole layer again.
constexpr std::size_t mostRegionRanges = 32;
constexpr int mostRounds = 16;

/// The captures that are to be laid down in a part of a layer. Gives false if matches were dropped
/// because too many were in progress; what is found then depends on where the search began.
bool findClassified(const std::shared_ptr<const Query>& query, ParseNode root, TextRange part,
                    const DocumentText& text, RegularExpressionPass* pass,
                    std::vector<ClassifiedRange>& found) {
  const QueryMatches matches(query, root, part, text, {}, pass);
  auto match = matches.begin();
  for (; match != matches.end(); ++match) {
    for (const auto& capture : match->captures()) {
      const auto& selector = capture.selector();
      if (selector && selector->lexicalClass())
        found.push_back({capture.node().utf16Range(), *selector->lexicalClass()});
    }
  }
  return !match.hasDroppedMatches();
}

/// Lays the ranges, sorted, over each other: a range that overlaps the one laid before it covers it
/// if its class is another, and is left out with all of its text if its class is the same. `spans`
/// begin at `start`.
void layDown(std::span<const ClassifiedRange> sorted, std::int64_t start, LexicalSpans& spans) {
  const ClassifiedRange* current = nullptr;
  for (const ClassifiedRange& next : sorted) {
    if (current && current->range.overlaps(next.range) &&
        current->lexicalClass == next.lexicalClass)
      continue;
    spans.replaceSubrange({next.range.lowerBound - start, next.range.upperBound - start},
                          next.lexicalClass, next.range.length());
    current = &next;
  }
}

/// The captures around a change, and the region that nothing found reaches out of.
class ChangedSpans {
public:
  ChangedSpans(std::shared_ptr<const Query> query, ParseNode root, const LayerChange& change,
               const DocumentText& text, RegularExpressionPass* pass)
      : query_(std::move(query)), root_(root), text_(text), pass_(pass), region_(change.dirty) {
    for (const TextRange& range : change.dirty.ranges())
      addCapturesOf(change.old->rootNode(), range);
    region_.formIntersection(TextRangeSet({0, text_.count()}));
  }

  /// Grows the region until it holds whole captures alone. False if that is too much to be worth
  /// it.
  bool settle() {
    for (int round = 0; round < mostRounds; ++round) {
      if (region_.ranges().size() > mostRegionRanges)
        return false;
      const TextRangeSet before = region_;
      parts_.clear();
      for (const TextRange& range : before.ranges()) {
        if (!find(range))
          return false;
      }
      if (region_ == before)
        return true;
    }
    return false;
  }

  void layInto(LexicalSpans& spans) {
    for (Part& part : parts_) {
      sortBy(part.found, &ClassifiedRange::range);
      LexicalSpans fresh(std::nullopt, part.range.length());
      layDown(part.found, part.range.lowerBound, fresh);
      spans.replaceSubrangeWithContentsOf(part.range, fresh);
    }
  }

private:
  struct Part {
    TextRange range;
    std::vector<ClassifiedRange> found;
  };

  /// What a match of the tree before had captured may have lost its class, so predicates aren't
  /// asked: the text that they would see is gone.
  void addCapturesOf(ParseNode old, TextRange range) {
    const auto part = range.intersection(old.utf16Range());
    if (!part)
      return;
    for (const Query::Match& match : query_->matchesStartingAt(old, *part)) {
      for (const auto& capture : match.captures())
        region_.insertContentsOf(capture.node().utf16Range());
    }
  }

  /// A match may capture something far from the place by which it was found. That is looked at in
  /// its own place, beside all others that capture it, since their order matters.
  bool find(TextRange range) {
    Part part{range, {}};
    const auto searched = range.intersection(root_.utf16Range());
    if (searched && !searched->isEmpty() &&
        !findClassified(query_, root_, *searched, text_, pass_, part.found))
      return false;
    std::erase_if(part.found, [&](const ClassifiedRange& found) {
      if (range.containsRange(found.range))
        return false;
      region_.insertContentsOf(found.range);
      return true;
    });
    parts_.push_back(std::move(part));
    return true;
  }

  std::shared_ptr<const Query> query_;
  ParseNode root_;
  const DocumentText& text_;
  RegularExpressionPass* pass_;
  TextRangeSet region_;
  std::vector<Part> parts_;
};

} // namespace

void Parse::updateLexicalSpans(LayerImpl& layer, const LayerEdit& edit, const LayerChange& change) {
  const auto query = withErrorHandling([] { return "lexicalSpans"; }, layer.configuration,
                                       [&] { return layer.configuration.lexicalClassesQuery(); });
  if (!query || !layer.tree) {
    layer.lexicalSpans = noLexicalSpans();
    return;
  }

  const ParseNode root = layer.rootNode();
  if (change.old && layer.spansArePiecewise && layer.lexicalSpans.count() > 0) {
    ChangedSpans changed(query, root, change, lines_, edit.pass);
    if (changed.settle()) {
      layer.lexicalSpans.replaceSubrange({edit.range.lowerBound, edit.oldUpperBound()},
                                         std::nullopt, edit.range.length());
      changed.layInto(layer.lexicalSpans);
      return;
    }
  }

  std::vector<ClassifiedRange> found;
  layer.spansArePiecewise =
      findClassified(query, root, root.utf16Range(), lines_, edit.pass, found) &&
      !query->asksForSurroundings();
  layer.lexicalSpans = noLexicalSpans();
  sortBy(found, &ClassifiedRange::range);
  layDown(found, 0, layer.lexicalSpans);
}

} // namespace velmar
