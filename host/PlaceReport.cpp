#include "host/PlaceReport.h"

#include "VelmarParser/Query/QueryMatches.h"
#include "host/LayerList.h"
#include "host/Painter.h"
#include "host/PatternText.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// One node under one name.
struct FoundCapture {
  TextRange range;
  std::string name;
  /// As the pattern sets it; empty if it doesn't.
  std::string priority;
  std::int64_t specificity = 0;
  bool isPainted = false;
  std::int64_t pattern = 0;
  /// When it was found, which decides where nothing else does.
  std::int64_t order = 0;
};

std::int64_t numberIn(const std::string& text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, failure] = std::from_chars(text.data(), end, number);
  return failure == std::errc() && stop == end ? number : 0;
}

/// The captures at the place, in the order of painting: that of HighlightResults.
std::vector<FoundCapture> capturesAt(const Parse& parse, const Parse::Layer& layer,
                                     const std::shared_ptr<const Query>& query,
                                     std::int64_t offset) {
  std::vector<FoundCapture> found;
  const QueryMatches matches(query, layer.root(), {offset, offset + 1}, parse.text());
  for (const QueryMatches::Element& match : matches) {
    const QueryPropertyValue* const priority = match.metadata.valueFor("priority");
    for (const Query::Match::Capture capture : match.captures()) {
      const TextRange range = capture.node().utf16Range();
      if (!range.contains(offset))
        continue;
      const auto& selector = capture.selector();
      found.push_back({.range = range,
                       .name = capture.name(),
                       .priority = priority ? priority->text() : std::string(),
                       .specificity = selector ? selector->specificity() : 0,
                       .isPainted = selector.has_value(),
                       .pattern = match.patternIndex(),
                       .order = std::ssize(found)});
    }
  }
  std::ranges::sort(found, {}, [](const FoundCapture& capture) {
    return std::tuple(capture.range.lowerBound, -capture.range.upperBound, // the outer one first
                      numberIn(capture.priority), capture.specificity, capture.order);
  });
  return found;
}

class Report {
public:
  Report(const OpenDocument& document, std::int64_t offset, Output& output)
      : document_(document), parse_(document.parse()), offset_(offset), output_(output) {}

  void writeLayer(const Parse::Layer& layer) {
    output_.write(layerTitle(layer), Style::heading);
    line(fmt::format("  depth {}, {}", layer.depth(), placesOf(parse_.text(), layer.ranges())));
    if (!layer.languageNameRanges().isEmpty())
      line("  named at " + placesOf(parse_.text(), layer.languageNameRanges()));
    if (const auto root = layer.root())
      writePath(*root);
    else
      line("  no tree");
    writeCaptures(layer, ParseQueryCategory::highlights);
    writeCaptures(layer, ParseQueryCategory::injections);
  }

  void writeResult() {
    Painter painter(parse_, Theme::builtIn());
    painter.paint({offset_, offset_ + 1}, [&](std::span<const PaintedRun> runs) {
      const PaintedRun& run = runs.front();
      output_.write("Painted as ");
      output_.write(run.capture < 0 ? "plain text"
                                    : painter.captureNames()[static_cast<std::size_t>(run.capture)],
                    Style::heading);
      line(run.look.ink
               ? fmt::format(", in the ink of {}.",
                             Theme::builtIn().inks()[static_cast<std::size_t>(*run.look.ink)].name)
               : ", in no ink of its own.");
    });
  }

private:
  void line(std::string_view text) {
    output_.write(text);
    output_.write("\n");
  }

  /// From the root down to the smallest node at the place.
  void writePath(ParseNode root) {
    auto cursor = ParseTreeCursor::startingAt(root);
    for (std::size_t depth = 1;; ++depth) {
      const ParseNode node = *cursor.currentNode();
      const TextRange range = node.utf16Range();
      if (depth > 1 && !range.contains(offset_))
        return;
      writeNode(cursor, node, depth);
      if (!range.contains(offset_) || !cursor.goToFirstChildForByte(offset_ * 2))
        return;
    }
  }

  void writeNode(const ParseTreeCursor& cursor, const ParseNode& node, std::size_t depth) {
    constexpr std::size_t deepestIndentation = 40;
    output_.write(std::string(2 * std::min(depth, deepestIndentation), ' '));
    if (const auto field = cursor.currentFieldName())
      output_.write(fmt::format("{}: ", *field), Style::field);
    const std::string_view type = node.type().value_or("");
    output_.write(node.isNamed() ? std::string(type) : fmt::format("\"{}\"", type),
                  node.isError() ? Style::error : Style::plain);
    output_.write(fmt::format(" {}\n", placeOf(parse_.text(), node.utf16Range())), Style::faint);
  }

  void writeCaptures(const Parse::Layer& layer, ParseQueryCategory category) {
    const auto query = layer.queryFor(category);
    if (!query)
      return;
    const auto captures = capturesAt(parse_, layer, query, offset_);
    if (captures.empty())
      return;
    // The text as the query got it: patterns tell their places in it.
    const auto text = document_.languages().textFor(category, layer.configuration());
    line(fmt::format("  {}:", rawValueOf(category)));
    for (const FoundCapture& capture : captures)
      writeCapture(capture, *query, *text);
  }

  void writeCapture(const FoundCapture& capture, const Query& query, const PackText& text) {
    output_.write(fmt::format("    @{}", capture.name),
                  capture.isPainted ? Style::heading : Style::plain);
    const auto pattern = query.patterns()[capture.pattern].byteRange();
    const PackText::Place place = text.placeOf(pattern.lowerBound);
    line(fmt::format(" {}{}  {}:{}", placeOf(parse_.text(), capture.range),
                     capture.priority.empty() ? std::string()
                                              : fmt::format(", priority {}", capture.priority),
                     place.file, place.line));
    const std::string_view patternText = std::string_view(text.text).substr(
        static_cast<std::size_t>(pattern.lowerBound), static_cast<std::size_t>(pattern.length()));
    for (const std::string& predicate : predicatesIn(patternText)) {
      output_.write(fmt::format("        {}\n", predicate), Style::faint);
    }
  }

  const OpenDocument& document_;
  const Parse& parse_;
  std::int64_t offset_;
  Output& output_;
};

} // namespace

void writePlaceReport(const OpenDocument& document, std::int64_t offset, Output& output) {
  const Parse& parse = document.parse();
  Report report(document, offset, output);
  if (offset == parse.count()) {
    output.write("This is the end of the text.\n");
    return;
  }
  for (const Parse::Layer& layer : parse.layersIntersecting({offset, offset + 1})) {
    report.writeLayer(layer);
    output.write("\n");
  }
  report.writeResult();
}

} // namespace velmar::host
