#include "host/PictureJSON.h"

#include "VelmarParser/Highlight/Highlight.h"
#include "host/JSONWriter.h"

#include <unordered_map>

namespace velmar::host {

namespace {

void writeRange(JSONWriter& writer, TextRange range) {
  writer.beginArray();
  writer.value(range.lowerBound);
  writer.value(range.upperBound);
  writer.endArray();
}

void writeRanges(JSONWriter& writer, std::string_view name, const TextRangeSet& set) {
  writer.key(name);
  writer.beginArray();
  for (const TextRange range : set.ranges())
    writeRange(writer, range);
  writer.endArray();
}

void writeSpans(JSONWriter& writer, const Parse::Layer& layer, TextRange range) {
  writer.key("spans");
  writer.beginArray();
  const HighlightResults results = highlight(layer, range);
  const auto query =
      results.spans().empty() ? nullptr : layer.queryFor(ParseQueryCategory::highlights);
  for (const HighlightResults::Span& span : results.spans()) {
    const auto capture = static_cast<std::size_t>(span.captureIndex);
    writer.beginObject();
    writer.key("range");
    writeRange(writer, span.range);
    writer.member("capture", std::string_view(query->captureNames()[capture]));
    writer.member("selector", std::string_view(results.captureSelectors()[capture]->string()));
    writer.member("priority", span.priority);
    if (span.reset)
      writer.member("reset", true);
    writer.endObject();
  }
  writer.endArray();
}

void writeLayer(JSONWriter& writer, const Parse::Layer& layer, std::optional<std::int64_t> parent,
                TextRange range) {
  writer.beginObject();
  writer.member("language", std::string_view(layer.configuration().id().rawValue));
  writer.member("depth", layer.depth());
  if (parent)
    writer.member("parent", *parent);
  writer.member("combined", layer.isCombined());
  writer.member("resetsHighlights", layer.resetsHighlights());
  writeRanges(writer, "ranges", layer.ranges());
  writeRanges(writer, "languageNameRanges", layer.languageNameRanges());
  writeSpans(writer, layer, range);
  writer.endObject();
}

} // namespace

void writePictureAsJSON(const OpenDocument& document, TextRange range, Output& output) {
  const Parse& parse = document.parse();
  JSONWriter writer(output);
  writer.beginObject();
  writer.member("language", std::string_view(document.language().rawValue));
  writer.member("units", parse.count());
  writer.member("lines", parse.text().lineCount());
  writer.key("range");
  writeRange(writer, range);
  writer.key("layers");
  writer.beginArray();
  std::unordered_map<const void*, std::int64_t> written;
  for (const Parse::Layer& layer : parse.layersIntersecting(range)) {
    const auto parent = layer.parent();
    writeLayer(writer, layer, parent ? std::optional(written.at(parent->identity())) : std::nullopt,
               range);
    written.emplace(layer.identity(), std::ssize(written));
  }
  writer.endArray();
  writer.endObject();
  output.write("\n");
}

} // namespace velmar::host
