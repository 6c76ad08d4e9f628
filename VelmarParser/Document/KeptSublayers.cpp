#include "VelmarParser/Document/KeptSublayers.h"

namespace velmar::detail {

namespace {

bool liesApart(const LayerImpl& layer, const LayerEdit& edit) {
  TextRangeSet all = layer.ranges;
  all.formUnion(layer.languageNameRanges);
  return all.ranges().back().upperBound < edit.range.lowerBound ||
         all.ranges().front().lowerBound > edit.oldUpperBound();
}

bool fits(const LayerImpl& layer, TextRange first, const InjectionPoint& point) {
  if (point.range != first)
    return false;
  const auto names = layer.languageNameRanges.ranges();
  return names.empty() ? !point.languageNameRange : point.languageNameRange == names.front();
}

} // namespace

std::optional<TextRange> movedUntouched(TextRange range, const LayerEdit& edit) {
  if (range.upperBound <= edit.range.lowerBound)
    return range;
  if (range.lowerBound >= edit.oldUpperBound())
    return TextRange(range.lowerBound + edit.changeInLength,
                     range.upperBound + edit.changeInLength);
  return std::nullopt;
}

TextRange movedWithEdit(TextRange range, const LayerEdit& edit) {
  return movedUntouched(range, edit)
      .value_or(TextRange(std::min(range.lowerBound, edit.range.lowerBound),
                          std::max(range.upperBound, edit.oldUpperBound()) + edit.changeInLength));
}

MovedSublayer::MovedSublayer(std::shared_ptr<LayerImpl> sublayer, const LayerEdit& edit)
    : layer(std::move(sublayer)), oldStart(layer->ranges.ranges().front().lowerBound),
      oldFront(layer->includedRanges.front()), isApart(liesApart(*layer, edit)) {
  for (const TextRange& range : layer->ranges.ranges()) {
    affected.insertContentsOf(movedWithEdit(range, edit));
    if (const auto moved = movedUntouched(range, edit))
      ranges.insertContentsOf(*moved);
  }
  for (const TextRange& range : layer->languageNameRanges.ranges()) {
    if (const auto moved = movedUntouched(range, edit))
      languageNameRanges.insertContentsOf(*moved);
  }
  layer->ranges = ranges;
  layer->languageNameRanges = languageNameRanges;
}

std::shared_ptr<LayerImpl> KeptSublayers::take(const InjectionPoint& point) {
  std::size_t index = cursor_;
  for (; index < old_.size(); ++index) {
    LayerImpl& layer = *old_[index].layer;
    if (layer.ranges.isEmpty())
      continue;
    const TextRange first = layer.ranges.ranges().front();
    if (fits(layer, first, point)) {
      if (layer.configuration.id() != point.configuration.id())
        continue;
      cursor_ = index;
      layer.ranges = {};
      layer.includedRanges.clear();
      layer.languageNameRanges = {};
      return old_[index].layer;
    }
    if (point.range.containsRange(first) || first.lowerBound >= point.range.upperBound)
      break;
  }
  if (index > cursor_)
    cursor_ = index - 1; // the last one passed: another language at the same place may want it
  return nullptr;
}

} // namespace velmar::detail
