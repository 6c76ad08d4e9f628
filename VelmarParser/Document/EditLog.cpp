#include "VelmarParser/Document/EditLog.h"

#include "VelmarParser/Grammar/TreeChanges.h"

namespace velmar::detail {

namespace {

bool samePlace(const TSRange& left, const TSRange& right) {
  return left.start_byte == right.start_byte && left.start_point.row == right.start_point.row &&
         left.start_point.column == right.start_point.column;
}

/// Moves the ranges of `set` that don't lie before `start`.
TextRangeSet moved(const TextRangeSet& set, std::int64_t start, std::int64_t distance) {
  TextRangeSet result;
  for (const TextRange& range : set.ranges()) {
    const std::int64_t own = range.lowerBound < start ? 0 : distance;
    result.insertContentsOf({range.lowerBound + own, range.upperBound + own});
  }
  return result;
}

} // namespace

void EditLog::catchUp(LayerImpl& layer, std::uint64_t upTo) const {
  if (layer.editsSeen >= upTo)
    return;
  precondition(layer.editsSeen >= forgotten_, "A layer has missed an edit.");
  const auto unseen =
      std::span(edits_).subspan(layer.editsSeen - forgotten_, upTo - layer.editsSeen);
  layer.editsSeen = upTo;
  std::int64_t count = layer.lexicalSpans.count();
  precondition(!layer.includedRanges.empty(), "The root sees every edit.");

  const TSRange oldFront = layer.includedRanges.front();
  std::int64_t distance = 0; // bytes
  for (const Edit& edit : unseen) {
    const auto change = static_cast<std::int64_t>(edit.newEnd) - edit.oldEnd;
    count += change / 2;
    // A name stands apart from the text, in front of it as a rule: an edit can lie between them.
    if (change != 0 && !layer.languageNameRanges.isEmpty())
      layer.languageNameRanges = moved(layer.languageNameRanges, edit.oldEnd / 2, change / 2);
    if (layer.includedRanges.front().start_byte < edit.oldEnd)
      continue;
    distance += change;
    const auto move = [&](std::uint32_t& byte, TSPoint& point) {
      byte = static_cast<std::uint32_t>(byte + change);
      if (point.row == edit.oldEndPoint.row)
        point.column = point.column - edit.oldEndPoint.column + edit.newEndPoint.column;
      point.row = point.row - edit.oldEndPoint.row + edit.newEndPoint.row;
    };
    for (TSRange& range : layer.includedRanges) {
      move(range.start_byte, range.start_point);
      move(range.end_byte, range.end_point);
    }
  }
  const std::int64_t oldStart = layer.ranges.ranges().front().lowerBound;
  if (distance != 0)
    layer.ranges = moved(layer.ranges, oldStart, distance / 2);
  moveContents(layer, oldStart, oldFront, count);
}

void moveContents(LayerImpl& layer, std::int64_t oldStart, const TSRange& oldFront,
                  std::int64_t count) {
  const TSRange& front = layer.includedRanges.front();
  if (layer.tree && !samePlace(oldFront, front))
    moveTree(*layer.tree->base(), {oldFront.start_byte}, oldFront.start_point, {front.start_byte},
             front.start_point);

  if (layer.settled)
    layer.settled->moveBy(layer.ranges.ranges().front().lowerBound - oldStart);

  // There are no spans outside the layer's text, so its surroundings are all alike.
  const TextRange text(layer.ranges.ranges().front().lowerBound,
                       layer.ranges.ranges().back().upperBound);
  LexicalSpans& spans = layer.lexicalSpans;
  const std::int64_t oldEnd = oldStart + text.length();
  spans.replaceSubrange({oldEnd, spans.count()}, std::nullopt, count - text.upperBound);
  spans.replaceSubrange({0, oldStart}, std::nullopt, text.lowerBound);
}

} // namespace velmar::detail
