// How one edit goes through a layer and, by recursion, through the layers inside it.

#include "VelmarParser/Document/InjectionPoint.h"
#include "VelmarParser/Document/LayerChange.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/TreeChanges.h"
#include "VelmarParser/Grammar/TreeDisposal.h"
#include "VelmarParser/Grammar/TreeUnits.h"

#include <algorithm>

namespace velmar {

using detail::LayerChange;
using detail::LayerEdit;
using detail::LayerImpl;
using detail::treeRange;

namespace {

/// What a new tree changed against the edited old one, also where the runtime has reported no
/// difference in structure.
TextRangeSet changedRanges(const TextRangeSet& reported, const ParseTree& old,
                           const LayerImpl& layer, TextRange edited) {
  if (!reported.isEmpty())
    return reported;
  TextRangeSet changed;
  const ParseNode root = old.rootNode();
  if (root.hasChanges()) {
    if (const auto extent = editedExtentOf(*old.base()))
      changed.insertContentsOf(utf16Range(extent->lowerBound, extent->upperBound));
    return changed;
  }
  changed.insertContentsOf(edited);
  if (layer.depth > 0)
    changed.formIntersection(layer.ranges);
  return changed;
}

} // namespace

bool LayerImpl::intersects(TextRange range) const {
  if (!range.isEmpty())
    return ranges.intersectsContentsOf(range) || languageNameRanges.intersectsContentsOf(range);
  const auto touches = [&](const TextRangeSet& set) {
    return std::ranges::any_of(set.ranges(), [&](const TextRange& covered) {
      return covered.lowerBound <= range.lowerBound && range.lowerBound <= covered.upperBound;
    });
  };
  return touches(ranges) || touches(languageNameRanges);
}

TextRangeSet Parse::reparse(const LayerPtr& layer, const LayerEdit& edit) {
  edit.enter(EditPhase::treeEdit);
  const std::int64_t errorsBefore = errorCount_;
  layer->editsSeen = log_.count();
  std::optional<ParseTree> old = std::exchange(layer->tree, std::nullopt);
  if (old)
    ts_tree_edit(old->base(), &edit.edit);

  edit.enter(EditPhase::parse);
  layer->parser.reset(); // A cancelled parse would go on where it stopped.
  setIncludedRanges(*layer);
  ParseInput input(lines_, isCancelled_.get());
  std::optional<ParseTree> tree = layer->parser.parse(old ? &*old : nullptr, input.input());
  if (!tree) {
    giveUpParse(*layer, std::move(old));
    return {};
  }

  edit.enter(EditPhase::changes);
  LayerChange change;
  TextRangeSet changed;
  const bool isTouched = layer->depth == 0 || layer->intersects(edit.range);
  if (old) {
    change = LayerChange(*old, *tree, edit.range);
    if (isTouched)
      changed = changedRanges(change.reported(), *old, *layer, edit.range);
  } else if (isTouched) {
    changed = layer->depth > 0 ? layer->ranges : TextRangeSet({0, lines_.count()});
  }
  layer->tree = std::move(tree);

  // The layers inside are found and parsed by the new tree, and the spans come last, when all below
  // is complete.
  edit.enter(EditPhase::injections);
  changed.formUnion(parseInjections(layer, edit, change));
  edit.enter(EditPhase::spans);
  updateLexicalSpans(*layer, edit, change);
  layer->columnsMatter |= dependsOnColumn(*layer->tree->base());
  layer->isQuiet = layer->hasQuietSublayers && errorCount_ == errorsBefore;
  if (old) {
    edit.enter(EditPhase::changes);
    // It shares all nodes with the new one but these, and only they are freed with it.
    if (change.replacesMuch())
      disposeTree(*std::exchange(old, std::nullopt));
  }
  return changed;
}

// Places that are combined may overlap, for a query can find one twice. The runtime refuses such a
// list; it then gets the same text as a set.
void Parse::setIncludedRanges(LayerImpl& layer) const {
  if (layer.parser.setIncludedRanges(layer.includedRanges))
    return;
  std::vector<TSRange> ranges;
  for (const TextRange& range : layer.ranges.ranges())
    ranges.push_back(treeRange(range, lines_));
  const bool accepted = layer.parser.setIncludedRanges(ranges);
  precondition(accepted, "A set's ranges are in order.");
}

// Nothing of a layer survives a cancelled parse; the next edit finds no old tree and reports
// everything.
void Parse::giveUpParse(LayerImpl& layer, std::optional<ParseTree> old) {
  if (old)
    disposeTree(std::move(*old));
  dropSublayers(layer);
  layer.hasQuietSublayers = false;
  layer.settled.reset();
  layer.isQuiet = false;
  layer.lexicalSpans = noLexicalSpans();
}

} // namespace velmar
