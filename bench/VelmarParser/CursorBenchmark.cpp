// The brackets and the words of a document, beside a plain scan of its lines that knows neither
// comments nor strings nor layers.

#include "VelmarParser/Cursor/Brackets.h"
#include "VelmarParser/Cursor/Words.h"
#include "bench/Pair.h"
#include "bench/VelmarParser/JavaScriptDocument.h"

#include <array>
#include <string_view>
#include <vector>

namespace velmar {

namespace {

/// For each ASCII unit 1, 2 and 3 for what opens a pair, 4, 5 and 6 for what closes it.
constexpr std::array<std::uint8_t, 128> kinds = [] {
  std::array<std::uint8_t, 128> made{};
  constexpr std::string_view brackets = "([{)]}";
  for (std::size_t index = 0; index < brackets.size(); ++index)
    made[static_cast<unsigned char>(brackets[index])] = static_cast<std::uint8_t>(index + 1);
  return made;
}();

void scanBrackets(const Parse& document) {
  std::vector<std::vector<TextRange>> found(64);
  std::array<std::size_t, 3> depths{};
  std::int64_t offset = 0;
  for (const auto& line : document.lines()) {
    for (const char16_t unit : line.codeUnits()) {
      if (const int kind = unit < 128 ? kinds[unit] : 0; kind > 3) {
        if (std::size_t& depth = depths[static_cast<std::size_t>(kind - 4)]; depth > 0)
          found[--depth].push_back({offset, offset + 1});
      } else if (kind > 0) {
        std::size_t& depth = depths[static_cast<std::size_t>(kind - 1)];
        if (depth < found.size())
          found[depth++].push_back({offset, offset + 1});
      }
      ++offset;
    }
  }
  benchmark::DoNotOptimize(found.data());
}

constexpr bool isWordUnit(char16_t unit) {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
         (unit >= u'0' && unit <= u'9') || unit == u'_' || unit == u'$';
}

void scanWords(const Parse& document) {
  std::vector<TextRange> found;
  std::int64_t offset = 0;
  for (const auto& line : document.lines()) {
    std::int64_t start = offset;
    for (const char16_t unit : line.codeUnits()) {
      if (!isWordUnit(unit)) {
        if (offset - start >= 2)
          found.push_back({start, offset});
        start = offset + 1;
      }
      ++offset;
    }
    if (offset - start >= 2)
      found.push_back({start, offset});
  }
  benchmark::DoNotOptimize(found.data());
}

void findBrackets(const Parse& document) {
  benchmark::DoNotOptimize(bracketDepths(document).data());
}

void findWords(const Parse& document) {
  benchmark::DoNotOptimize(identifierWordsIn(document, {0, document.count()}).size());
}

template <void (*measured)(const Parse&)>
void run(bench::State& state) {
  const Parse& document = javaScriptDocument(state.size());
  for (auto _ : state)
    measured(document);
}

VELMAR_PAIR("cursor/bracketDepths", 0, run<scanBrackets>, run<findBrackets>, 1'000, 100'000);
VELMAR_PAIR("cursor/identifierWords", 0, run<scanWords>, run<findWords>, 1'000, 100'000);

/// As bytes of UTF-8, of which the text has one for each unit.
template <void (*measured)(const Parse&)>
void rate(benchmark::State& state) {
  const Parse& document = javaScriptDocument(10'000);
  for (auto _ : state)
    measured(document);
  state.SetBytesProcessed(state.iterations() * document.count());
}
BENCHMARK(rate<scanBrackets>)->Name("cursor/scan/brackets");
BENCHMARK(rate<findBrackets>)->Name("cursor/bracketDepths");
BENCHMARK(rate<scanWords>)->Name("cursor/scan/words");
BENCHMARK(rate<findWords>)->Name("cursor/identifierWords");

} // namespace

} // namespace velmar
