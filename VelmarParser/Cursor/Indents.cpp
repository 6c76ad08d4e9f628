#include "VelmarParser/Cursor/Indents.h"

#include "VelmarParser/Query/QueryMatches.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace velmar {

namespace {

constexpr std::string_view levelsKey = "indent.levels";
constexpr std::string_view bodyKey = "indent.body";
constexpr std::string_view openKey = "indent.open";

bool isBlank(char16_t unit) {
  return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

/// The line in question and what of the text around it matters.
struct Place {
  Place(const DocumentText& text, std::int64_t offset) {
    const auto at = text.lineBoundariesFor(offset, LineAffinity::downstream);
    line = text.positionOf(at.start).line;
    const std::u16string contents = text.substringFor(at.contentsRange());
    const auto blanks = std::ranges::find_if_not(contents, isBlank) - contents.begin();
    first = at.start + blanks;
    isEmpty = first == at.contentsEnd;
    before = at.start;
    for (std::int64_t start = at.start; start > 0;) {
      const auto previous = text.lineBoundariesFor(start, LineAffinity::upstream);
      std::u16string above = text.substringFor(previous.contentsRange());
      while (!above.empty() && isBlank(above.back()))
        above.pop_back();
      before = previous.start + std::ssize(above);
      if (!above.empty())
        break;
      start = previous.start;
    }
  }

  std::int64_t line = 0;
  /// What the line starts with; its end if it is blank.
  std::int64_t first = 0;
  bool isEmpty = false;
  /// The end of the last thing in front of the line, or the start of the text.
  std::int64_t before = 0;
};

Indents indentsAround(const Parse::Layer& layer, const Place& place,
                      std::shared_ptr<const Query> query) {
  Indents indents;
  const DocumentText& text = layer.parse().text();
  const TextRange range(std::max<std::int64_t>(place.before - 1, 0),
                        std::min(place.first + 1, text.count()));
  for (const auto& match : QueryMatches(std::move(query), layer.root(), range, text)) {
    for (const auto& capture : match.capturesNamed<IndentsCapture>())
      indents.values[capture.name].insert_or_assign(capture.node(), match.metadata);
  }
  return indents;
}

/// Whether the parser made up the last token of `node`.
bool lacksItsEnd(ParseNode node) {
  for (auto count = node.children().count(); count > 0; count = node.children().count()) {
    node = node.children()[count - 1];
    if (node.isMissing())
      return true;
  }
  return false;
}

/// Text whose lines, but for the first, are deeper.
struct IndentRegion {
  ParseNode node;
  IndentsCapture capture;
  TextRange range;
  std::int64_t line; // on which it starts
  std::int64_t levels;
};

/// All that one layer says of a line.
class LayerIndent {
public:
  LayerIndent(const Place& place, const Indents& indents) : place_(place), indents_(indents) {
    addRegions(IndentsCapture::begin);
    addRegions(IndentsCapture::align);
    addBrokenRegions();
    std::ranges::sort(regions_, [](const IndentRegion& left, const IndentRegion& right) {
      return std::pair(left.range.lowerBound, -left.range.upperBound) <
             std::pair(right.range.lowerBound, -right.range.upperBound);
    });
  }

  [[nodiscard]] LineIndent indent() const {
    LineIndent indent;
    indent.isKept = startsInside(IndentsCapture::automatic);
    if (startsWith(IndentsCapture::zero))
      return indent;
    const auto closed = closedNode();
    for (std::size_t index = 0; index < regions_.size(); ++index) {
      const IndentRegion& region = regions_[index];
      const bool isInnermostOfLine =
          index + 1 == regions_.size() || regions_[index + 1].line != region.line;
      if (!isInnermostOfLine || (closed && closesLineOf(*closed, index)))
        continue;
      add(region, indent);
    }
    if (startsInside(IndentsCapture::dedent) || startsWith(IndentsCapture::dedent))
      (indent.alignedWith ? indent.levelsBehindAlignment : indent.levels) -= 1;
    indent.levels = std::max<std::int64_t>(indent.levels, 0);
    indent.levelsBehindAlignment = std::max<std::int64_t>(indent.levelsBehindAlignment, 0);
    return indent;
  }

private:
  [[nodiscard]] bool isIgnored(ParseNode node) const {
    return indents_[IndentsCapture::ignore].contains(node);
  }
  [[nodiscard]] bool startsWith(IndentsCapture capture) const {
    return std::ranges::any_of(indents_[capture], [&](const auto& entry) {
      return entry.first.utf16Range().lowerBound == place_.first && !entry.first.isMissing();
    });
  }
  [[nodiscard]] bool startsInside(IndentsCapture capture) const {
    return std::ranges::any_of(indents_[capture], [&](const auto& entry) {
      const TextRange range = entry.first.utf16Range();
      return range.lowerBound < place_.first && place_.first < range.upperBound &&
             lineOf(entry.first) < place_.line;
    });
  }
  static std::int64_t lineOf(ParseNode node) { return node.textRange().lowerBound.line; }

  void addRegions(IndentsCapture capture) {
    for (const auto& [node, metadata] : indents_[capture]) {
      if (isIgnored(node) || isBrokenToken(node))
        continue;
      TextRange range = node.utf16Range();
      std::int64_t line = lineOf(node);
      if (metadata.valueFor(bodyKey)) {
        line = lineInFrontOf(node);
        range.lowerBound = std::min(range.lowerBound, place_.first - 1);
        if (lineOf(node) == line)
          continue; // its own nodes say how deep it is
      }
      if (place_.isEmpty && range.upperBound <= place_.first && range.upperBound >= place_.before &&
          (metadata.valueFor(openKey) || lacksItsEnd(node)))
        range.upperBound = place_.first + 1;
      addRegion({.node = node,
                 .capture = capture,
                 .range = range,
                 .line = line,
                 .levels = levelsOf(metadata)});
    }
  }

  static std::int64_t levelsOf(const QueryMatchMetadata& metadata) {
    const auto* const levels = metadata.valueFor(levelsKey);
    return levels ? std::clamp<std::int64_t>(levels->number(), 0, 100) : 1;
  }

  void addRegion(const IndentRegion& region) {
    if (region.line < place_.line && region.range.lowerBound < place_.first &&
        place_.first < region.range.upperBound)
      regions_.push_back(region);
  }

  static bool isBrokenToken(ParseNode node) {
    if (node.isNamed())
      return false;
    const auto parent = node.parent();
    return parent && parent->isError();
  }

  /// The line on which what stands in front of `node` in its parent ends.
  static std::int64_t lineInFrontOf(ParseNode node) {
    const TSNode previous = ts_node_prev_sibling(node.base());
    return ts_node_is_null(previous) ? lineOf(node)
                                     : ParseNode(previous).textRange().upperBound.line;
  }

  /// Pairs the tokens that stand in errors, by position.
  void addBrokenRegions() {
    struct Token {
      ParseNode node;
      ParseNode error;
      bool opens;
    };
    std::vector<Token> tokens;
    const auto collect = [&](IndentsCapture capture, bool opens) {
      for (const auto& [node, metadata] : indents_[capture]) {
        if (!isIgnored(node) && isBrokenToken(node) && node.utf16Range().lowerBound <= place_.first)
          tokens.push_back({node, *node.parent(), opens});
      }
    };
    collect(IndentsCapture::begin, true);
    collect(IndentsCapture::end, false);
    std::ranges::sort(tokens, {},
                      [](const Token& token) { return token.node.utf16Range().lowerBound; });
    std::vector<Token> open;
    for (const Token& token : tokens) {
      if (token.opens) {
        open.push_back(token);
        continue;
      }
      if (open.empty() || !(open.back().error == token.error))
        continue;
      if (token.node.utf16Range().lowerBound == place_.first)
        brokenlyClosed_ = open.back().node;
      else
        open.pop_back();
    }
    for (const Token& token : open) {
      const auto around = token.error.parent();
      const std::int64_t end = around && around->parent()
                                   ? around->utf16Range().upperBound
                                   : std::numeric_limits<std::int64_t>::max();
      addRegion({.node = token.node,
                 .capture = IndentsCapture::begin,
                 .range = {token.node.utf16Range().lowerBound, std::max(end, place_.first + 1)},
                 .line = lineOf(token.node),
                 .levels = 1});
    }
  }

  /// The node that what the line starts with closes.
  [[nodiscard]] std::optional<ParseNode> closedNode() const {
    if (brokenlyClosed_)
      return brokenlyClosed_;
    for (const auto capture : {IndentsCapture::branch, IndentsCapture::end}) {
      for (const auto& [node, metadata] : indents_[capture]) {
        if (node.utf16Range().lowerBound == place_.first && !node.isMissing() && !isIgnored(node))
          return node.parent();
      }
    }
    return std::nullopt;
  }

  /// Whether `closed` is among the regions of the line on which the one at `index`, the innermost
  /// of that line, starts.
  [[nodiscard]] bool closesLineOf(ParseNode closed, std::size_t index) const {
    for (std::size_t each = index + 1; each-- > 0 && regions_[each].line == regions_[index].line;) {
      if (regions_[each].node == closed)
        return true;
    }
    return false;
  }

  void add(const IndentRegion& region, LineIndent& indent) const {
    if (region.capture == IndentsCapture::align) {
      if (const auto column = alignmentOf(region.node)) {
        indent.alignedWith = column;
        indent.levelsBehindAlignment = 0;
        indent.levels += 1;
        return;
      }
    }
    indent.levels += region.levels;
    indent.levelsBehindAlignment += indent.alignedWith ? region.levels : 0;
  }

  /// What the lines of `node` are aligned with; absent if its first token ends its line.
  [[nodiscard]] std::optional<std::int64_t> alignmentOf(ParseNode node) const {
    const auto children = node.children();
    if (children.count() == 0 || children[0].isNamed())
      return node.utf16Range().lowerBound;
    if (children.count() == 1)
      return std::nullopt;
    const ParseNode second = children[1];
    if (lineOf(second) != lineOf(node) || second.utf16Range().lowerBound >= place_.first)
      return std::nullopt;
    return second.utf16Range().lowerBound;
  }

  const Place& place_;
  const Indents& indents_;
  std::vector<IndentRegion> regions_; // that hold the line, from the outside in
  std::optional<ParseNode> brokenlyClosed_;
};

LineIndent layerIndent(const Parse::Layer& layer, const Place& place) {
  auto query = layer.queryFor(ParseQueryCategory::indents);
  if (!query || !layer.root())
    return {};
  const Indents indents = indentsAround(layer, place, std::move(query));
  return LayerIndent(place, indents).indent();
}

void checkOffset(const Parse& parse, std::int64_t offset) {
  precondition(offset >= 0 && offset <= parse.count(),
               "An indentation was asked for outside the text.");
}

} // namespace

const Indents::Nodes& Indents::operator[](IndentsCapture capture) const {
  static const Nodes none;
  const auto nodes = values.find(capture);
  return nodes != values.end() ? nodes->second : none;
}

LineIndent lineIndentAt(const Parse::Layer& layer, std::int64_t offset) {
  checkOffset(layer.parse(), offset);
  return layerIndent(layer, Place(layer.parse().text(), offset));
}

LineIndent lineIndentAt(const Parse& parse, std::int64_t offset) {
  checkOffset(parse, offset);
  const Place place(parse.text(), offset);
  LineIndent sum;
  std::vector<Parse::Layer> chain;
  for (auto layer = std::optional(parse.deepestLayerContaining(place.first)); layer;
       layer = layer->parent())
    chain.push_back(*layer);
  for (auto layer = chain.rbegin(); layer != chain.rend(); ++layer) {
    const LineIndent own = layerIndent(*layer, place);
    sum.levels += own.levels;
    sum.isKept = sum.isKept || own.isKept;
    if (own.alignedWith) {
      sum.alignedWith = own.alignedWith;
      sum.levelsBehindAlignment = own.levelsBehindAlignment;
    } else if (sum.alignedWith) {
      sum.levelsBehindAlignment += own.levels;
    }
  }
  return sum;
}

std::int64_t indentAt(const Parse::Layer& layer, std::int64_t offset) {
  return lineIndentAt(layer, offset).levels;
}

} // namespace velmar
