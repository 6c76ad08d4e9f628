#include "VelmarParser/Document/LayerChange.h"

#include "VelmarParser/Grammar/TreeUnits.h"

#include <algorithm>

namespace velmar::detail {

namespace {

/// A unit on either side makes the nodes that end or begin there count: to the runtime, a token
/// that only begins or ends elsewhere than before is the same.
TextRange around(std::int64_t lower, std::int64_t upper) {
  return {std::max<std::int64_t>(lower - 1, 0), upper + 1};
}

TextRangeSet reportedRanges(const ParseTree& tree, const ParseTree& old) {
  TextRangeSet ranges;
  for (const TSRange& range : tree.changedRangesFrom(old))
    ranges.insertContentsOf(utf16Range({range.start_byte}, {range.end_byte}));
  return ranges;
}

/// Parts of a dirty range of which one is touched by each node that reaches out of it.
void insertEndsOf(TextRange dirty, TextRangeSet& ends) {
  constexpr std::int64_t littleText = 64;
  if (dirty.length() <= littleText) {
    ends.insertContentsOf(dirty);
    return;
  }
  ends.insertContentsOf({dirty.lowerBound, dirty.lowerBound + 1});
  ends.insertContentsOf({dirty.upperBound - 1, dirty.upperBound});
}

/// Gathers dirty ranges that come roughly in text order. Gaps of a few lines aren't worth a range
/// of their own.
class DirtyCollector {
public:
  explicit DirtyCollector(DirtyPlaces& places) : places_(places) {}

  void add(TextRange range, bool reachesOut) {
    constexpr std::int64_t smallGap = 256;
    if (!last_ || range.lowerBound < last_->lowerBound ||
        range.lowerBound > last_->upperBound + smallGap) {
      finish();
      last_ = range;
      reachesOut_ = false;
    }
    last_.emplace(last_->lowerBound, std::max(last_->upperBound, range.upperBound));
    reachesOut_ |= reachesOut;
  }

  /// To be called after the last.
  void finish() {
    if (!last_)
      return;
    places_.ranges.insertContentsOf(*last_);
    if (reachesOut_)
      insertEndsOf(*last_, places_.ends);
    last_.reset();
  }

private:
  DirtyPlaces& places_;
  std::optional<TextRange> last_;
  bool reachesOut_ = false;
};

} // namespace

LayerChange::LayerChange(const ParseTree& old, const ParseTree& tree, TextRange edited)
    : old_(&old) {
  constexpr std::size_t mostNodes = 200'000;
  differences_ = differencesOf(*old.base(), *tree.base(), mostNodes);
  if (!hasSameNodes()) // else there is nothing to report
    reported_ = reportedRanges(tree, old);

  edited_.insertContentsOf(around(edited.lowerBound, edited.upperBound));
  // A query most likely captures a token that was edited, so it is asked about all of it.
  if (differences_ && differences_->editedTokens) {
    const auto& [first, end] = *differences_->editedTokens;
    edited_.insertContentsOf(around(utf16Offset(first), utf16Offset(end)));
  }
  // A root begins at its first child, so a blank in front moves it.
  const TextRange before = old.rootNode().utf16Range();
  const TextRange after = tree.rootNode().utf16Range();
  const auto insertBetween = [&](std::int64_t left, std::int64_t right) {
    if (left != right)
      edited_.insertContentsOf(around(std::min(left, right), std::max(left, right)));
  };
  insertBetween(before.lowerBound, after.lowerBound);
  insertBetween(before.upperBound, after.upperBound);
}

DirtyPlaces LayerChange::dirtyFor(const Query& query) const {
  DirtyPlaces dirty;
  dirty.ranges = edited_;
  if (!differences_ || !query.hasSingleRoots()) {
    for (const TextRange& range : reported_.ranges())
      dirty.ranges.insertContentsOf(around(range.lowerBound, range.upperBound));
  }
  for (const TextRange& range : dirty.ranges.ranges())
    insertEndsOf(range, dirty.ends);
  if (differences_)
    addDifferences(query, dirty);
  if (!query.hasSingleRoots()) // a match can reach out though none of its nodes does
    dirty.ends = dirty.ranges;
  return dirty;
}

// A match can be there in one tree alone because of a node that is: if that is the root of the
// match; or if it stands in the way, or is looked for, right below a node that both trees have, of
// which the pattern thus says something.
void LayerChange::addDifferences(const Query& query, DirtyPlaces& dirty) const {
  const auto& [roots, parents] = query.nodeTypes();
  DirtyCollector collector(dirty);
  for (const TreeDifference& node : differences_->nodes) {
    const bool isAny = node.type == TreeDifference::anyType || !query.hasSingleRoots();
    const bool isRoot = isAny || roots.contains(node.type);
    const bool isInParent = isAny || parents.contains(node.parentType);
    if (!isRoot && !isInParent)
      continue;
    // A root that isn't also a parent is all of its match. The children of others are compared by
    // themselves.
    const bool isWholeMatch = isRoot && !isAny && !parents.contains(node.type);
    const bool reachesOut = isInParent || (node.isInOld && !isWholeMatch);
    const bool countsWhole =
        isWholeMatch || !node.hasChildren || node.type == TreeDifference::anyType;
    const auto [start, end] = utf16Range(node.range.lowerBound, node.range.upperBound);
    collector.add(around(start, countsWhole ? end : start), reachesOut);
  }
  collector.finish();
}

bool LayerChange::replacesMuch() const noexcept {
  constexpr std::size_t manyNodes = 2'048;
  return old_ && (!differences_ || differences_->enteredCount > manyNodes);
}

} // namespace velmar::detail
