// Painted text for a terminal.
#pragma once

#include "host/PictureWriter.h"
#include "host/Streams.h"

#include <optional>
#include <string>

namespace velmar::host {

enum class ColorDepth { none, xterm256, trueColor };
enum class Background { dark, light };

struct TerminalOptions {
  ColorDepth colors = ColorDepth::none;
  Background background = Background::dark;
  /// Whether nested layers get a background of their own, by depth.
  bool showsLayers = false;
};

/// What the environment says of the terminal: COLORTERM for true colours, TERM for 256, which are
/// also what is left to assume.
[[nodiscard]] ColorDepth terminalColors(const Streams& streams);

/// Each line ends in the terminal's plain style, so that lines can be cut out, as pagers do.
class TerminalPicture final : public PictureWriter {
public:
  TerminalPicture(const Parse& parse, Painter& painter, const Theme& theme,
                  const TerminalOptions& options, Output& output)
      : PictureWriter(parse, painter, Tabs::expand), theme_(theme), options_(options),
        output_(output) {}

protected:
  void writePiece(const PaintedRun& run, const VisibleText::Piece& piece) override;
  void startLine() override {}
  void endLine() override;

private:
  [[nodiscard]] std::string styleOf(const PaintedRun& run, bool isStandIn) const;

  const Theme& theme_;
  TerminalOptions options_;
  Output& output_;
  /// The escape sequence in force; empty for plain text.
  std::string style_;
};

} // namespace velmar::host
