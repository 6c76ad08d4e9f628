// How one edit goes through a layer and, by recursion, through the layers inside it.

#include "VelmarParser/Document/InjectionPoint.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/TreeChanges.h"
#include "VelmarParser/Grammar/TreeComparison.h"
#include "VelmarParser/Grammar/TreeDisposal.h"
#include "VelmarParser/Grammar/TreeUnits.h"

#include <algorithm>

namespace velmar {

using detail::LayerChange;
using detail::LayerEdit;
using detail::LayerImpl;
using detail::treeRange;

namespace {

TextRangeSet reportedRanges(const ParseTree& tree, const ParseTree& old) {
  TextRangeSet ranges;
  for (const TSRange& range : tree.changedRangesFrom(old))
    ranges.insertContentsOf(utf16Range({range.start_byte}, {range.end_byte}));
  return ranges;
}

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

/// The places at which two trees differ, the edit, and what moved. A unit on either side of each
/// makes the nodes that end or begin there count: to the runtime, a token that only begins or ends
/// elsewhere than before is the same.
TextRangeSet dirtyRanges(const TextRangeSet& differences, const ParseTree& old,
                         const ParseTree& tree, TextRange edited) {
  TextRangeSet dirty;
  const auto insertAround = [&](std::int64_t lower, std::int64_t upper) {
    dirty.insertContentsOf({std::max<std::int64_t>(lower - 1, 0), upper + 1});
  };
  for (const TextRange& range : differences.ranges())
    insertAround(range.lowerBound, range.upperBound);
  insertAround(edited.lowerBound, edited.upperBound);
  // A root begins at its first child, so a blank in front moves it.
  const TextRange before = old.rootNode().utf16Range();
  const TextRange after = tree.rootNode().utf16Range();
  if (before.lowerBound != after.lowerBound)
    insertAround(std::min(before.lowerBound, after.lowerBound),
                 std::max(before.lowerBound, after.lowerBound));
  if (before.upperBound != after.upperBound)
    insertAround(std::min(before.upperBound, after.upperBound),
                 std::max(before.upperBound, after.upperBound));
  return dirty;
}

/// What a new tree is to the edited old one.
LayerChange changeOf(const ParseTree& old, const ParseTree& tree, TextRange edited) {
  constexpr std::size_t mostPlaces = 24;
  LayerChange change;
  change.old = &old;
  const auto differences = differencesOf(*old.base(), *tree.base(), mostPlaces);
  change.hasSameNodes = differences && differences->places.empty();
  if (!change.hasSameNodes) // else there is nothing to report
    change.reported = reportedRanges(tree, old);
  if (!differences) {
    change.dirty = dirtyRanges(change.reported, old, tree, edited);
    return change;
  }
  TextRangeSet nodes;
  const auto insert = [&](const Range<TreeByte>& place) {
    const TextRange range = utf16Range(place.lowerBound, place.upperBound);
    nodes.insertContentsOf({range.lowerBound, std::max(range.upperBound, range.lowerBound + 1)});
  };
  std::ranges::for_each(differences->places, insert);
  // A query most likely captures a token that was edited, so it is asked about all of it.
  if (differences->editedTokens)
    insert(*differences->editedTokens);
  change.dirtyNodes = dirtyRanges(nodes, old, tree, edited);
  nodes.formUnion(change.reported);
  change.dirty = dirtyRanges(nodes, old, tree, edited);
  return change;
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
    change = changeOf(*old, *tree, edit.range);
    if (isTouched)
      changed = changedRanges(change.reported, *old, *layer, edit.range);
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
    disposeOld(std::move(*old), change.dirtyNodes ? *change.dirtyNodes : change.dirty);
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
