// Merges what the language layers of a document say about the look of a text into one sequence of
// runs: the painting that the engine leaves to its application.
//
// Layers are painted by depth, the deeper ones on top. Where a layer resets highlights, it starts
// from plain text; elsewhere the colours of the layers above show through. In a layer the spans are
// painted in their order, and a span that resets wipes out what is below it.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Highlight/HighlightResults.h"
#include "host/Theme.h"

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace velmar::host {

/// Text that is painted alike.
struct PaintedRun {
  TextRange range;
  Look look;
  /// The deepest layer here, into `Painter::layers()`.
  std::int32_t layer = 0;
  /// The capture on top, into `Painter::captureNames()`; -1 where there is none.
  std::int32_t capture = -1;
  bool operator==(const PaintedRun&) const = default;
};

/// Borrows the document, which must not change meanwhile, and the theme.
class Painter {
public:
  Painter(const Parse& parse, const Theme& theme);

  /// All of the document's, breadth first.
  [[nodiscard]] const std::vector<Parse::Layer>& layers() const noexcept { return layers_; }
  /// As the queries spell them. Grows while painting goes on.
  [[nodiscard]] const std::vector<std::string>& captureNames() const noexcept {
    return captureNames_;
  }
  /// The index of a layer's parent in `layers()`; -1 for the root.
  [[nodiscard]] std::int32_t parentOf(std::int32_t layer) const;

  /// Hands out runs that cover all of `range`, in order, a few thousand at a time. The memory that
  /// this takes doesn't grow with `range`. Neighbours may be alike where two such pieces meet.
  void paint(TextRange range, const std::function<void(std::span<const PaintedRun>)>& runs);

private:
  struct Cell;
  struct Canvas;

  void paintPiece(Canvas& canvas);
  void paintLayer(const Parse::Layer& layer, Canvas& canvas);
  [[nodiscard]] std::int64_t endOfPieceFrom(TextRange range) const;
  [[nodiscard]] std::int32_t captureFor(const Query& query, std::int64_t captureID);
  [[nodiscard]] std::int32_t indexOf(const Parse::Layer& layer) const;

  const Parse& parse_;
  const Theme& theme_;
  std::vector<Parse::Layer> layers_;
  std::unordered_map<const void*, std::int32_t> layerIndices_;
  std::vector<std::string> captureNames_;
  std::map<std::string, std::int32_t, std::less<>> captureIndices_;
  /// By capture; absent where the theme says nothing.
  std::vector<std::optional<Look>> captureLooks_;
};

} // namespace velmar::host
