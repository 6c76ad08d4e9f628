#include "VelmarParser/Cursor/Brackets.h"

#include "VelmarParser/Cursor/PlainRuns.h"

#include <array>
#include <cstdint>
#include <map>

namespace velmar {

namespace {

/// By depth, in the order in which they are found: what a sublayer has may stand in front of what
/// its parent had.
using Found = std::vector<std::vector<TextRange>>;

/// The brackets of one layer.
class LayerBrackets {
public:
  explicit LayerBrackets(const LanguageSyntax::Brackets& brackets) {
    for (const BracketPair& pair : brackets.pairs) {
      if (pair.open == pair.close || pair.open > 0xFFFF || pair.close > 0xFFFF)
        continue;
      const auto open = static_cast<char16_t>(pair.open);
      const auto close = static_cast<char16_t>(pair.close);
      const std::size_t kind = kinds_.try_emplace(open, kinds_.size()).first->second;
      closing_.insert_or_assign(close, kind);
      mark(open);
      mark(close);
    }
    depths_.resize(kinds_.size());
  }

  [[nodiscard]] bool isEmpty() const noexcept { return kinds_.empty(); }

  void read(std::u16string_view text, std::int64_t offset, Found& found) {
    for (const char16_t unit : text) {
      if (marks_[unit & 0xFF])
        add(unit, {offset, offset + 1}, found);
      ++offset;
    }
  }

private:
  void mark(char16_t unit) { marks_[unit & 0xFF] = true; }

  void add(char16_t unit, TextRange range, Found& found) {
    if (const auto kind = kinds_.find(unit); kind != kinds_.end()) {
      std::size_t& depth = depths_[kind->second];
      if (found.size() == depth)
        found.emplace_back();
      found[depth++].push_back(range);
    } else if (const auto closed = closing_.find(unit); closed != closing_.end()) {
      std::size_t& depth = depths_[closed->second];
      if (depth > 0)
        found[--depth].push_back(range);
    }
  }

  std::map<char16_t, std::size_t> kinds_; // by the side that opens
  std::map<char16_t, std::size_t> closing_;
  std::vector<std::size_t> depths_;
  std::array<bool, 256> marks_{}; // by low byte: whether to look closer
};

} // namespace

std::vector<TextRangeSet> bracketDepths(const Parse& parse) {
  Found found;
  for (const Parse::Layer& layer : parse.layers()) {
    LayerBrackets brackets(layer.configuration().syntax().brackets);
    if (brackets.isEmpty())
      continue;
    detail::forEachPlainRun(layer, [&](std::u16string_view text, std::int64_t offset) {
      brackets.read(text, offset, found);
    });
  }
  std::vector<TextRangeSet> depths;
  depths.reserve(found.size());
  for (const auto& ranges : found)
    depths.emplace_back(ranges);
  return depths;
}

} // namespace velmar
