#include "host/CursorSupport.h"

#include "host/VisibleText.h"

#include <fmt/format.h>

namespace velmar::host {

namespace {

const std::string& onlyOperand(const Arguments& arguments, std::string_view command,
                               std::string_view what) {
  if (arguments.operands.size() != 1)
    throw UsageError(fmt::format("“velmar {}” needs one {}.", command, what));
  return arguments.operands.front();
}

} // namespace

std::unique_ptr<OpenDocument> onlyDocument(const Arguments& arguments, std::string_view command,
                                           Streams& streams) {
  const std::string& path = onlyOperand(arguments, command, "file, or “-” for standard input");
  return OpenDocument::fromFile(path, OpenOptions::from(arguments), streams);
}

DocumentPlace onlyPlace(const Arguments& arguments, std::string_view command, Streams& streams) {
  const NamedPlace place = placeNamed(onlyOperand(arguments, command, "place, “FILE:LINE:COLUMN”"));
  auto document = OpenDocument::fromFile(place.path, OpenOptions::from(arguments), streams);
  const std::int64_t offset = offsetOf(place, document->parse().text());
  return {.document = std::move(document), .offset = offset};
}

std::vector<Parse::Layer> DocumentPlace::layers() const {
  std::vector<Parse::Layer> layers;
  for (std::optional layer = document->parse().deepestLayerContaining(offset); layer;
       layer = layers.back().parent())
    layers.push_back(*layer);
  return layers;
}

std::string shownText(const DocumentText& text, TextRange range) {
  std::string shown;
  VisibleText visible;
  for (const auto& line : text.linesIntersecting(range)) {
    const auto part = line.contentsRange().intersection(range);
    if (line.range().lowerBound > range.lowerBound && line.range().lowerBound < range.upperBound)
      shown += "↵";
    if (!part)
      continue;
    for (const auto& piece : visible.next(text.substringFor(*part)))
      shown += piece.text;
  }
  return shown;
}

} // namespace velmar::host
