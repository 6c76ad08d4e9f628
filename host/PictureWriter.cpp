#include "host/PictureWriter.h"

namespace velmar::host {

void PictureWriter::write(TextRange range) {
  painter_.paint(range, [&](std::span<const PaintedRun> runs) {
    for (const PaintedRun& run : runs)
      writeRun(run);
  });
  if (isInLine_)
    endLine();
  isInLine_ = false;
}

void PictureWriter::writeRun(const PaintedRun& run) {
  const std::u16string units = parse_.textFor(run.range);
  std::u16string_view rest = units;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find_first_of(u"\r\n"), rest.size());
    if (end == 0) {
      writeTerminator(rest.front());
      rest.remove_prefix(1);
      continue;
    }
    isBehindCR_ = false;
    if (!isInLine_)
      startLine();
    isInLine_ = true;
    for (const VisibleText::Piece& piece : visible_.next(rest.substr(0, end)))
      writePiece(run, piece);
    rest.remove_prefix(end);
  }
}

void PictureWriter::writeTerminator(char16_t unit) {
  if (unit == u'\n' && isBehindCR_) {
    isBehindCR_ = false;
    return;
  }
  isBehindCR_ = unit == u'\r';
  if (!isInLine_)
    startLine();
  endLine();
  isInLine_ = false;
  visible_.startLine();
}

} // namespace velmar::host
