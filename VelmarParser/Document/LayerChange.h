// What an edit did to a layer's tree, for those who keep what their queries have found in it.
#pragma once

#include "VelmarCore/Text/RangeSet.h"
#include "VelmarParser/Grammar/ParseTree.h"
#include "VelmarParser/Grammar/TreeComparison.h"
#include "VelmarParser/Query/Query.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace velmar::detail {

/// Where a query's matches may be others than before.
struct DirtyPlaces {
  /// Touched by each match that is.
  TextRangeSet ranges;
  /// Parts of them, touched by each match of the old tree that captured something outside.
  TextRangeSet ends;
};

/// For one layer and one edit.
class LayerChange {
public:
  /// There was no tree.
  LayerChange() = default;
  /// `old` has been edited along with the text and must outlive this; `edited` is where the new
  /// text stands. O(nodes not shared).
  LayerChange(const ParseTree& old, const ParseTree& tree, TextRange edited);

  /// The tree before, edited so that its offsets are those of the new text; null if there was none.
  [[nodiscard]] const ParseTree* old() const noexcept { return old_; }
  /// Where the runtime says that the structure looks different.
  [[nodiscard]] const TextRangeSet& reported() const noexcept { return reported_; }
  /// Whether the trees have the same nodes, so that nothing but the text within `edited` changed.
  [[nodiscard]] bool hasSameNodes() const noexcept {
    return differences_ && differences_->nodes.empty();
  }
  /// The edit and the tokens whose text it changed, with a unit on either side, and what moved of
  /// the root's ends.
  [[nodiscard]] const TextRangeSet& edited() const noexcept { return edited_; }
  /// Where matches of `query` may have changed. O(nodes that differ).
  [[nodiscard]] DirtyPlaces dirtyFor(const Query& query) const;
  /// Whether the old tree has many nodes that the new one doesn't.
  [[nodiscard]] bool replacesMuch() const noexcept;

private:
  void addDifferences(const Query& query, DirtyPlaces& dirty) const;

  const ParseTree* old_ = nullptr;
  TextRangeSet reported_;
  TextRangeSet edited_;
  /// Absent if there are too many.
  std::optional<TreeDifferences> differences_;
};

} // namespace velmar::detail
