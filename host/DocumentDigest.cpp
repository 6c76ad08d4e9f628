#include "host/DocumentDigest.h"

namespace velmar::host {

namespace {

void addRange(Digest& digest, TextRange range) {
  digest.add(range.lowerBound);
  digest.add(range.upperBound);
}

void addSpans(Digest& digest, const LexicalSpans& spans) {
  const auto runs = spans.runs();
  digest.add(static_cast<std::uint64_t>(runs.size()));
  for (const auto& run : runs) {
    addRange(digest, run.range);
    digest.add(run.value ? std::string_view(run.value->rawValue()) : std::string_view());
  }
}

void addNode(Digest& digest, const ParseTreeCursor& cursor, const ParseNode& node) {
  const auto field = cursor.currentFieldID();
  const std::uint64_t flags = (node.isNamed() ? 1U : 0U) | (node.isMissing() ? 2U : 0U) |
                              (node.isExtra() ? 4U : 0U) | (node.isError() ? 8U : 0U);
  digest.add(std::uint64_t{node.symbol().base} | std::uint64_t{field ? field->base : 0U} << 16 |
             flags << 32);
  digest.add(std::uint64_t{node.startByte().value} | std::uint64_t{node.endByte().value} << 32);
}

/// Nodes in pre-order, with a mark for each way up, so that the shape counts too.
std::int64_t addTree(Digest& digest, const ParseNode& root) {
  constexpr std::int64_t wayUp = -1;
  std::int64_t count = 0;
  auto cursor = ParseTreeCursor::startingAt(root);
  for (;;) {
    addNode(digest, cursor, *cursor.currentNode());
    ++count;
    if (cursor.goToFirstChild())
      continue;
    while (!cursor.goToNextSibling()) {
      if (!cursor.goToParent())
        return count;
      digest.add(wayUp);
    }
  }
}

} // namespace

void addTo(Digest& digest, const TextRangeSet& ranges) {
  digest.add(static_cast<std::uint64_t>(ranges.ranges().size()));
  for (const TextRange range : ranges.ranges())
    addRange(digest, range);
}

std::int64_t addTo(Digest& digest, const Parse& parse) {
  std::int64_t nodes = 0;
  digest.add(parse.count());
  for (const Parse::Layer& layer : parse.layers()) {
    digest.add(layer.configuration().id().rawValue);
    digest.add(layer.depth());
    digest.add(std::int64_t{layer.isCombined()} << 1 | std::int64_t{layer.resetsHighlights()});
    addTo(digest, layer.ranges());
    addTo(digest, layer.languageNameRanges());
    for (const TSRange& included : layer.includedRanges())
      digest.add(std::uint64_t{included.start_byte} | std::uint64_t{included.end_byte} << 32);
    addSpans(digest, layer.lexicalSpans());
    if (const auto root = layer.root())
      nodes += addTree(digest, *root);
  }
  return nodes;
}

} // namespace velmar::host
