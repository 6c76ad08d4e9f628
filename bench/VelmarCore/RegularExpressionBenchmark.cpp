// What a predicate of a query costs: a question with a pattern to the text of a node, beside the
// bare engine with a matcher of its own that is used again and again. Each iteration asks all the
// words below, of which some match.

#include "VelmarCore/Text/RegularExpression.h"

#include "VelmarCore/Text/RegexScanner.h"
#include "VelmarCore/Text/RegularExpressionMatches.h"
#include "bench/Pair.h"

#include <unicode/uregex.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace velmar {

namespace {

constexpr std::array<std::u16string_view, 8> words = {
    u"self", u"MAX_LENGTH", u"index", u"makeRange", u"else", u"T", u"__init__", u"größe"};

struct RegexDeleter {
  void operator()(URegularExpression* regex) const noexcept { uregex_close(regex); }
};
using RegexPointer = std::unique_ptr<URegularExpression, RegexDeleter>;

RegexPointer open(const char* pattern) {
  UErrorCode status = U_ZERO_ERROR;
  return RegexPointer(uregex_openC(pattern, 0, nullptr, &status));
}

bool bareMatch(URegularExpression* regex, std::u16string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  uregex_setText(regex, text.data(), static_cast<std::int32_t>(text.size()), &status);
  return uregex_find(regex, 0, &status);
}

bench::Side bare(const char* pattern) {
  return [regex = std::shared_ptr<URegularExpression>(open(pattern))](bench::State& state) {
    for (auto _ : state)
      for (const std::u16string_view word : words)
        benchmark::DoNotOptimize(bareMatch(regex.get(), word));
  };
}

bench::Side ours(const char* pattern) {
  return [expression = RegularExpression(pattern)](bench::State& state) {
    RegularExpressionPass pass;
    for (auto _ : state)
      for (const std::u16string_view word : words)
        benchmark::DoNotOptimize(expression.hasMatchIn(word, &pass));
  };
}

void registerPredicate(const char* name, double bound, const char* pattern) {
  bench::registerPair({.name = std::string("regularExpression/hasMatch/") + name,
                       .bound = bound,
                       .floor = bare(pattern),
                       .ours = ours(pattern)});
}

const bool predicates = [] {
  registerPredicate("literal", 1, "init");
  registerPredicate("anchoredLiteral", 1, "^self$");
  registerPredicate("anchoredAlternatives", 1, "^(if|else|while|for|return|break|continue)$");
  registerPredicate("general", 1.2, "^[A-Z][A-Z0-9_]*$");
  registerPredicate("generalUnanchored", 1.2, "[a-z]+_[a-z]+");
  return true;
}();

/// Groups of a match: all their ranges.
constexpr const char* entryPattern = "(?<key>\\w+)\\s*=\\s*(?<value>\\d+)";
const std::u16string entry = u"  lineHeight = 18";

void bareGroups(bench::State& state) {
  const RegexPointer regex = open(entryPattern);
  UErrorCode status = U_ZERO_ERROR;
  for (auto _ : state) {
    benchmark::DoNotOptimize(bareMatch(regex.get(), entry));
    for (std::int32_t group = 0; group <= 2; ++group) {
      benchmark::DoNotOptimize(uregex_start(regex.get(), group, &status));
      benchmark::DoNotOptimize(uregex_end(regex.get(), group, &status));
    }
  }
}

void ourGroups(bench::State& state) {
  const RegularExpression expression(entryPattern);
  for (auto _ : state)
    benchmark::DoNotOptimize(expression.firstMatchIn(entry));
}
VELMAR_PAIR("regularExpression/firstMatch", 1.5, bareGroups, ourGroups);

/// All words of a text of some length.
std::u16string longText(std::int64_t size) {
  std::u16string text;
  while (static_cast<std::int64_t>(text.size()) < size)
    text += u"for (int index = 0; index < count; ++index) total += values[index];\n";
  return text;
}

void bareWords(bench::State& state) {
  const std::u16string text = longText(state.size());
  const RegexPointer regex = open("\\w+");
  for (auto _ : state) {
    UErrorCode status = U_ZERO_ERROR;
    std::int64_t units = 0;
    uregex_setText(regex.get(), text.data(), static_cast<std::int32_t>(text.size()), &status);
    while (uregex_findNext(regex.get(), &status))
      units += uregex_end(regex.get(), 0, &status) - uregex_start(regex.get(), 0, &status);
    benchmark::DoNotOptimize(units);
  }
}

void ourWords(bench::State& state) {
  const std::u16string text = longText(state.size());
  const RegularExpression expression("\\w+");
  for (auto _ : state) {
    std::int64_t units = 0;
    for (const RegularExpression::DocumentMatch& match : expression.matchesIn(text))
      units += match.range().length();
    benchmark::DoNotOptimize(units);
  }
}
VELMAR_PAIR("regularExpression/matches", 2, bareWords, ourWords, 1'000, 100'000);

} // namespace

} // namespace velmar
