// What writers of painted text have in common: runs come in, in pieces and across lines, and go out
// line by line, made visible.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "host/Painter.h"
#include "host/VisibleText.h"

#include <span>
#include <string_view>

namespace velmar::host {

/// Borrows the painter, its document and the output.
class PictureWriter {
public:
  PictureWriter(const Parse& parse, Painter& painter, Tabs tabs)
      : parse_(parse), painter_(painter), visible_(tabs) {}
  PictureWriter(const PictureWriter&) = delete;
  PictureWriter& operator=(const PictureWriter&) = delete;
  virtual ~PictureWriter() = default;

  /// Paints and writes the text in `range`, whole lines.
  void write(TextRange range);

protected:
  [[nodiscard]] const Parse& parse() const noexcept { return parse_; }
  [[nodiscard]] const Painter& painter() const noexcept { return painter_; }

  /// Text of one run that lies in one line.
  virtual void writePiece(const PaintedRun& run, const VisibleText::Piece& piece) = 0;
  virtual void startLine() = 0;
  virtual void endLine() = 0;

private:
  void writeRun(const PaintedRun& run);
  void writeTerminator(char16_t unit);

  const Parse& parse_;
  Painter& painter_;
  VisibleText visible_;
  bool isInLine_ = false;
  /// The text so far ends in a CR, with which an LF would be one terminator.
  bool isBehindCR_ = false;
};

} // namespace velmar::host
