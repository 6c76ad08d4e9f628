#include "host/Painter.h"

#include "VelmarCore/Text/RunArray.h"
#include "VelmarParser/Highlight/Highlight.h"
#include "VelmarPlatform/Unicode/Characters.h"

#include <algorithm>

namespace velmar::host {

namespace {

/// A piece is painted at once. Large enough for a screen, and small enough that painting in its
/// middle moves little memory.
constexpr std::int64_t pieceLength = 1 << 15;

} // namespace

struct Painter::Cell {
  Look look;
  std::int32_t layer = 0;
  std::int32_t capture = -1;
  bool operator==(const Cell&) const = default;
};

/// The piece that is being painted. Its cells count from its start.
struct Painter::Canvas {
  TextRange range;
  RunArray<Cell> cells;

  /// Changes the cells in the part of `where` that lies in `allowed` and on the canvas.
  template <class Change>
  void change(TextRange where, const TextRangeSet& allowed, Change change) {
    const auto ranges = allowed.ranges();
    auto next = std::ranges::upper_bound(ranges, where.lowerBound, {}, &TextRange::upperBound);
    for (; next != ranges.end() && next->lowerBound < where.upperBound; ++next) {
      const auto inside = where.intersection(*next).value_or(TextRange()).intersection(range);
      if (!inside || inside->isEmpty())
        continue;
      const std::int64_t start = range.lowerBound;
      cells.transformSubrange({inside->lowerBound - start, inside->upperBound - start}, change);
    }
  }
};

Painter::Painter(const Parse& parse, const Theme& theme)
    : parse_(parse), theme_(theme), layers_(parse.layers()) {
  for (const Parse::Layer& layer : layers_)
    layerIndices_.emplace(layer.identity(), static_cast<std::int32_t>(layerIndices_.size()));
}

std::int32_t Painter::indexOf(const Parse::Layer& layer) const {
  return layerIndices_.at(layer.identity());
}

std::int32_t Painter::parentOf(std::int32_t layer) const {
  const auto parent = layers_[static_cast<std::size_t>(layer)].parent();
  return parent ? indexOf(*parent) : -1;
}

void Painter::paint(TextRange range, const std::function<void(std::span<const PaintedRun>)>& runs) {
  std::vector<PaintedRun> painted;
  while (!range.isEmpty()) {
    const TextRange piece(range.lowerBound, endOfPieceFrom(range));
    Canvas canvas{.range = piece, .cells = RunArray<Cell>(Cell{}, piece.length())};
    paintPiece(canvas);
    painted.clear();
    for (const auto& run : canvas.cells.runs())
      painted.push_back({.range = {piece.lowerBound + run.range.lowerBound,
                                   piece.lowerBound + run.range.upperBound},
                         .look = run.value.look,
                         .layer = run.value.layer,
                         .capture = run.value.capture});
    runs(painted);
    range.lowerBound = piece.upperBound;
  }
}

/// Not in the middle of a character, as far as one can be found near the place.
std::int64_t Painter::endOfPieceFrom(TextRange range) const {
  const std::int64_t end = range.lowerBound + pieceLength;
  if (end >= range.upperBound)
    return range.upperBound;
  constexpr std::int64_t margin = 64;
  const std::u16string around = parse_.textFor(TextRange(end - margin, end + 1));
  const std::int64_t back = margin + 1 - previousCharacterBoundary(around, margin + 1);
  return back <= margin / 2 ? end + 1 - back : end;
}

void Painter::paintPiece(Canvas& canvas) {
  for (const Parse::Layer& layer : parse_.layersIntersecting(canvas.range))
    paintLayer(layer, canvas);
}

void Painter::paintLayer(const Parse::Layer& layer, Canvas& canvas) {
  const std::int32_t index = indexOf(layer);
  canvas.change(canvas.range, layer.ranges(), [&](const Cell& below) {
    return layer.resetsHighlights() ? Cell{.look = {}, .layer = index, .capture = -1}
                                    : Cell{.look = below.look, .layer = index, .capture = -1};
  });
  const HighlightResults results = highlight(layer, canvas.range);
  if (results.spans().empty())
    return;
  const auto query = layer.queryFor(ParseQueryCategory::highlights);
  for (const HighlightResults::Span& span : results.spans()) {
    const std::int32_t capture = captureFor(*query, span.captureIndex);
    const std::optional<Look> look = captureLooks_[static_cast<std::size_t>(capture)];
    canvas.change(span.range, layer.ranges(), [&](const Cell& below) {
      Cell cell{.look = span.reset ? Look() : below.look, .layer = index, .capture = capture};
      if (look)
        cell.look = look->over(cell.look);
      return cell;
    });
  }
}

std::int32_t Painter::captureFor(const Query& query, std::int64_t captureID) {
  const auto id = static_cast<std::size_t>(captureID);
  const std::string& name = query.captureNames()[id];
  if (const auto known = captureIndices_.find(name); known != captureIndices_.end())
    return known->second;
  const auto index = static_cast<std::int32_t>(captureNames_.size());
  captureNames_.push_back(name);
  captureLooks_.push_back(theme_.lookFor(*query.captureSelectors()[id]));
  captureIndices_.emplace(name, index);
  return index;
}

} // namespace velmar::host
