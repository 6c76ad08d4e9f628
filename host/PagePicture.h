// Painted text as one HTML page that needs nothing else: no scripts, no files, dark and light as
// the reader's system is. Nested languages show on hover, as titles and by their background.
#pragma once

#include "host/PictureWriter.h"
#include "host/Streams.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar::host {

struct PageOptions {
  std::string_view title;
  /// Of the first line that is written, from 1.
  std::int64_t firstLine = 1;
  /// Whether the backgrounds of nested layers show all the time.
  bool showsLayers = false;
  /// HTML to put in front of the text; empty for nothing.
  std::string outline = {};
  /// What folds at a line, by its number.
  std::map<std::int64_t, std::string> folds = {};
};

/// `text` with the characters escaped that mean something in HTML, in attributes too.
[[nodiscard]] std::string escapedHTML(std::string_view text);

/// Write the head, then the text, then the foot.
class PagePicture final : public PictureWriter {
public:
  PagePicture(const Parse& parse, Painter& painter, const Theme& theme, PageOptions options,
              Output& output)
      : PictureWriter(parse, painter, Tabs::keep), theme_(theme), options_(std::move(options)),
        output_(output) {}

  /// `summary` stands below the title; it is escaped.
  void writeHead(std::string_view summary);
  void writeFoot();

protected:
  void writePiece(const PaintedRun& run, const VisibleText::Piece& piece) override;
  void startLine() override;
  void endLine() override { output_.write("\n"); }

private:
  void enterLayer(std::int32_t layer);
  [[nodiscard]] std::string openingTagOf(std::int32_t layer) const;
  [[nodiscard]] std::string classesOf(const Look& look) const;

  const Theme& theme_;
  PageOptions options_;
  Output& output_;
  /// The layers whose elements are open, from the outermost nested one.
  std::vector<std::int32_t> open_;
};

} // namespace velmar::host
