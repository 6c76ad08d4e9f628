// The last edits of a document, for layers that didn't look when they were made.
//
// An edit in front of a nested language moves it and changes nothing else. A document can have
// thousands of these, so they aren't moved at each key: a layer knows how many edits it has seen,
// and whoever reads it first lets it catch up. Only layers that every edit since has left whole may
// lag behind, which is the business of those who go through the layers at an edit.
#pragma once

#include "VelmarParser/Document/LayerImpl.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmar::detail {

class EditLog {
public:
  void append(const LayerEdit& edit) {
    edits_.push_back({edit.edit.start_byte, edit.edit.old_end_byte, edit.edit.new_end_byte,
                      edit.edit.old_end_point, edit.edit.new_end_point});
  }
  /// How many edits there have been in all.
  [[nodiscard]] std::uint64_t count() const noexcept { return forgotten_ + edits_.size(); }

  /// Moves what `layer` holds to where it lies after the first `upTo` edits. The edits that it
  /// hasn't seen lie outside it. O(edits unseen).
  void catchUp(LayerImpl& layer, std::uint64_t upTo) const;
  void catchUp(LayerImpl& layer) const { catchUp(layer, count()); }

  /// Whether it is time to let all layers catch up and then to `forget`.
  [[nodiscard]] bool isLong() const noexcept { return edits_.size() >= 256; }
  /// What lies outside of the object.
  [[nodiscard]] std::size_t allocatedBytes() const noexcept {
    return edits_.capacity() * sizeof(Edit);
  }
  void forget() noexcept {
    forgotten_ += edits_.size();
    edits_.clear();
  }

private:
  struct Edit {
    std::uint32_t start;
    std::uint32_t oldEnd;
    std::uint32_t newEnd;
    TSPoint oldEndPoint;
    TSPoint newEndPoint;
  };

  std::vector<Edit> edits_;
  std::uint64_t forgotten_ = 0;
};

/// Moves a layer's tree, its spans and the places of its sublayers, when its text lies where
/// `ranges` and `includedRanges` say and lay at `oldStart` and `oldFront` before, in a document
/// that now has `count` units. O(depth) and one pass over the places.
void moveContents(LayerImpl& layer, std::int64_t oldStart, const TSRange& oldFront,
                  std::int64_t count);

} // namespace velmar::detail
