// How one edit goes through a layer and, by recursion, through the layers inside it.

#include "VelmarParser/Document/InjectionPoint.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/TreeChanges.h"
#include "VelmarParser/Grammar/TreeDisposal.h"
#include "VelmarParser/Grammar/TreeUnits.h"

namespace velmar {

using detail::LayerEdit;
using detail::LayerImpl;
using detail::treeRange;

namespace {

/// What a new tree changed against the edited old one, also where the runtime reports no difference
/// in structure.
TextRangeSet changedRanges(const ParseTree& tree, const ParseTree& old, const LayerImpl& layer,
                           TextRange edited) {
  TextRangeSet changed;
  const std::vector<TSRange> reported = tree.changedRangesFrom(old);
  for (const TSRange& range : reported)
    changed.insertContentsOf(utf16Range({range.start_byte}, {range.end_byte}));
  if (!reported.empty())
    return changed;
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

/// A new tree shares all nodes with the old one but those in what changed, and only these are freed
/// with it.
void disposeOld(ParseTree old, const TextRangeSet& changed) {
  constexpr std::int64_t muchText = 65'536;
  std::int64_t units = 0;
  for (const TextRange& range : changed.ranges())
    units += range.length();
  if (units > muchText)
    disposeTree(std::move(old));
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
  TextRangeSet changed;
  if (layer->depth == 0 || layer->intersects(edit.range)) {
    if (old)
      changed = changedRanges(*tree, *old, *layer, edit.range);
    else
      changed = layer->depth > 0 ? layer->ranges : TextRangeSet({0, lines_.count()});
  }
  if (old)
    disposeOld(std::move(*old), changed);
  layer->tree = std::move(tree);

  // The layers inside are found and parsed by the new tree, and the spans come last, when all below
  // is complete.
  edit.enter(EditPhase::injections);
  changed.formUnion(parseInjections(layer, edit));
  edit.enter(EditPhase::spans);
  updateLexicalSpans(*layer, edit);
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
  layer.sublayers.clear();
  layer.lexicalSpans = noLexicalSpans();
}

} // namespace velmar
