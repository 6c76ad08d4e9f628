#include "tests/Support/Oracle.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "tests/Support/Trees.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace velmar::testing {

namespace {

std::string shown(const Parse::Layer& layer) {
  std::ostringstream text;
  text << layer.configuration().id().rawValue << ' ' << layer.ranges() << ' '
       << layer.languageNameRanges() << ' ' << layer.isCombined() << layer.resetsHighlights();
  return text.str();
}

bool sameSpans(const LexicalSpans& left, const LexicalSpans& right) {
  // By value, not by run: runs may be cut in different places.
  std::int64_t at = 0;
  while (at < left.count()) {
    const auto a = left.runContaining(at);
    const auto b = right.runContaining(at);
    if (a.value != b.value)
      return false;
    at = std::min(a.range.upperBound, b.range.upperBound);
  }
  return left.count() == right.count();
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const OracleCounts& counts) {
  return stream << counts.edits << " edits, " << counts.layers << " layers compared, "
                << counts.freshParses << " fresh parses (" << counts.otherTrees
                << " with other trees), " << counts.notLoadable << " states that can't be loaded";
}

void CheckedParse::edit(TextRange range, const std::u16string& text) {
  const TextRangeSet changed = document_.replaceSubrange(range, text);
  reference_.edit(range, text, changed);
  ++counts_.edits;
  counts_.layers += reference_.layerCount();
  if (freshEvery_ != 0 && counts_.edits % freshEvery_ == 0)
    compareWithFreshParse();
}

void CheckedParse::compareWithFreshParse() {
  UTF16LineArray<NoLineStorage> lines;
  lines.replaceSubrange({0, 0}, text());
  bool sameLines = lines.lineCount() == document_.text().lineCount();
  for (std::int64_t line = 0; sameLines && line < lines.lineCount(); ++line)
    sameLines = lines.rangeOfLine(line) == document_.text().rangeOfLine(line);
  if (!sameLines || !isValidUTF16(text())) {
    ++counts_.notLoadable;
    return;
  }
  ++counts_.freshParses;
  Parse fresh(configuration_);
  fresh.replaceSubrange({0, 0}, text());
  bool otherTrees = false;
  // Where the runtime's two trees of a layer differ, what follows from them may, too.
  std::vector<std::pair<Parse::Layer, Parse::Layer>> pairs{
      {document_.rootLayer(), fresh.rootLayer()}};
  while (!pairs.empty()) {
    const auto [mine, other] = pairs.back();
    pairs.pop_back();
    if (shown(mine) != shown(other))
      throw std::runtime_error("A fresh parse has another layer.\n  incremental: " + shown(mine) +
                               "\n  fresh:       " + shown(other));
    if (!treeDifference(mine.root()->base(), other.root()->base()).empty()) {
      otherTrees = true;
      continue;
    }
    if (!sameSpans(mine.lexicalSpans(), other.lexicalSpans()))
      throw std::runtime_error("A fresh parse has other lexical spans in " + shown(mine));
    const auto mySublayers = mine.sublayers();
    const auto otherSublayers = other.sublayers();
    if (mySublayers.size() != otherSublayers.size())
      throw std::runtime_error("A fresh parse has another number of layers in " + shown(mine));
    for (std::size_t index = 0; index < mySublayers.size(); ++index)
      pairs.emplace_back(mySublayers[index], otherSublayers[index]);
  }
  counts_.otherTrees += otherTrees ? 1 : 0;
}

std::string documentDifference(const Parse& left, const Parse& right) {
  const std::vector<Parse::Layer> mine = left.layers();
  const std::vector<Parse::Layer> others = right.layers();
  if (mine.size() != others.size())
    return "one has " + std::to_string(mine.size()) + " layers, the other " +
           std::to_string(others.size());
  for (std::size_t index = 0; index < mine.size(); ++index) {
    const Parse::Layer& a = mine[index];
    const Parse::Layer& b = others[index];
    if (shown(a) != shown(b))
      return shown(a) + " against " + shown(b);
    if (a.root().has_value() != b.root().has_value())
      return "one tree is missing in " + shown(a);
    if (a.root()) {
      if (const auto difference = treeDifference(a.root()->base(), b.root()->base());
          !difference.empty())
        return difference + " in " + shown(a);
    }
    if (!sameSpans(a.lexicalSpans(), b.lexicalSpans()))
      return "the lexical spans differ in " + shown(a);
  }
  return {};
}

RandomEdit RandomTyping::next(const std::u16string& text) {
  const auto count = static_cast<std::int64_t>(text.size());
  if (below(12) == 0)
    place_ = below(count + 1); // somewhere else
  const std::int64_t start = std::clamp<std::int64_t>(place_ + below(5) - 2, 0, count);
  const std::int64_t rest = count - start;
  std::int64_t removed = 0;
  if (below(3) == 0)
    removed = std::min(rest, below(40) == 0 ? below(300) : below(6));
  std::u16string inserted;
  if (below(5) != 0)
    inserted =
        inserts_[static_cast<std::size_t>(below(static_cast<std::int64_t>(inserts_.size())))];
  else if (below(8) == 0 && count > 0) {
    const std::int64_t from = below(count);
    inserted = text.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(below(60)));
  }
  place_ = start + static_cast<std::int64_t>(inserted.size());
  return {{start, start + removed}, std::move(inserted)};
}

} // namespace velmar::testing
