// The sublayers that a layer had before an edit, on their way into the new text.
#pragma once

#include "VelmarParser/Document/InjectionPoint.h"
#include "VelmarParser/Document/LayerImpl.h"

#include <memory>
#include <optional>
#include <span>

namespace velmar::detail {

/// Where a range lies after an edit; absent if the edit touched it.
[[nodiscard]] std::optional<TextRange> movedUntouched(TextRange range, const LayerEdit& edit);
/// The same, but a range that was touched takes the edit in.
[[nodiscard]] TextRange movedWithEdit(TextRange range, const LayerEdit& edit);

/// A sublayer that was there before the edit, moved along with the text, before it is known whether
/// it stays.
struct MovedSublayer {
  /// Moves the ranges and names of `layer`, which has seen all edits before; those that the edit
  /// touched go.
  MovedSublayer(std::shared_ptr<LayerImpl> sublayer, const LayerEdit& edit);

  std::shared_ptr<LayerImpl> layer;
  /// Where its text began before.
  std::int64_t oldStart;
  TSRange oldFront;
  /// What it covered, in the new text, with the edit where that touched one of its ranges.
  TextRangeSet affected;
  /// Those of its ranges and names that the edit didn't touch.
  TextRangeSet ranges;
  TextRangeSet languageNameRanges;
  /// Whether the edit lies in front of all that or behind it, and doesn't even border on it.
  bool isApart;
};

/// Searches the old sublayers for those that can be kept, forward only: points and sublayers are
/// both in text order.
class KeptSublayers {
public:
  explicit KeptSublayers(std::span<const MovedSublayer> old) : old_(old) {}

  /// The old sublayer that stands where `point` is, emptied; null if there is none.
  [[nodiscard]] std::shared_ptr<LayerImpl> take(const InjectionPoint& point);

private:
  std::span<const MovedSublayer> old_;
  std::size_t cursor_ = 0;
};

} // namespace velmar::detail
