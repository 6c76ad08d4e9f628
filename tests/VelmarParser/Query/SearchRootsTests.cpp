// Searches that begin near their place, against searches of the whole tree.

#include "VelmarParser/Query/SearchRoots.h"

#include "VelmarParser/Query/QueryMatch.h"
#include "tests/VelmarParser/Grammar/ParsedSource.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace velmar {
namespace {

using testing::ParsedSource;

struct Sample {
  const char* name;
  Grammar::BuiltIn language;
  std::u16string text;
  std::vector<const char*> queries;
};

void addMatches(const Query& query, ParseNode node, TextRange range, std::string& result) {
  for (const Query::Match& match : query.matchesStartingAt(node, range)) {
    result += std::to_string(match.patternIndex()) + ":";
    for (const auto& capture : match.captures())
      result += " " + capture.name() + std::to_string(capture.node().startByte().value) + "-" +
                std::to_string(capture.node().endByte().value);
    result += "\n";
  }
}

class SearchesFromRoots : public ::testing::TestWithParam<Sample> {};

TEST_P(SearchesFromRoots, FindTheSameInTheSameOrder) {
  const ParsedSource source(GetParam().language, GetParam().text);
  const ParseNode root = source.tree->rootNode();
  const TextRange all = root.utf16Range();
  std::mt19937 random(3);
  const auto below = [&](std::int64_t bound) {
    return std::uniform_int_distribution<std::int64_t>(0, bound - 1)(random);
  };
  for (const char* text : GetParam().queries) {
    const Query query(text, Grammar::fromBuiltIn(GetParam().language));
    for (int round = 0; round < 20; ++round) {
      SearchRoots roots(query, root);
      std::int64_t place = all.lowerBound;
      while (place < all.upperBound) {
        const bool goesBack = below(16) == 0;
        const std::int64_t lower =
            goesBack ? all.lowerBound + below(all.length()) : place + below(30);
        const std::int64_t upper = lower + 1 + below(below(8) == 0 ? 200 : 5);
        const auto range = TextRange(lower, upper).intersection(all);
        if (!range || range->isEmpty())
          break;
        std::string expected;
        addMatches(query, root, *range, expected);
        std::string found;
        for (const ParseNode& node :
             roots.around({treeByte(range->lowerBound), treeByte(range->upperBound)}))
          addMatches(query, node, *range, found);
        ASSERT_EQ(found, expected) << text << " in " << *range;
        place = goesBack ? place : upper + below(3);
      }
    }
  }
}

std::u16string repeated(std::u16string_view text, int count) {
  std::u16string result;
  for (int copy = 0; copy < count; ++copy)
    result += text;
  return result;
}

const std::vector<const char*> javascriptQueries = {
    "(identifier) @a (call_expression function: (identifier) @b) @c (number) @d",
    "(call_expression function: (_) @a arguments: (arguments (string)? @b)) @c \"(\" @d",
    "(ERROR) @a (identifier) @b",
    "(program (_) @a) (comment) @b",
    "function: (identifier) @a",
    "(expression) @a",
    "(primary_expression/identifier) @a (identifier) @b",
    "(_ (number) @a) @b",
    "((identifier) @a . (identifier) @b)",
    "[(string) \"{\" \"}\" (statement_block (_)* @a)] @b (comment)+ @c",
    "(MISSING) @a (identifier) @b",
};

INSTANTIATE_TEST_SUITE_P(
    Samples, SearchesFromRoots,
    ::testing::Values(
        Sample{"Javascript", Grammar::BuiltIn::javascript,
               repeated(u"// c\nf(1, \"s\");\nfunction g() { if (a) { h(b, 2) } }\n", 12),
               javascriptQueries},
        Sample{"BrokenJavascript", Grammar::BuiltIn::javascript,
               u"x = { ( [ `\n" + repeated(u"f(1, \"s\"; // c\n}) g(h {2 = a b\n", 12),
               javascriptQueries},
        Sample{"JSON",
               Grammar::BuiltIn::json,
               u"[" + repeated(u"1, {\"a\": [2, null]}, \"s\",", 12),
               {"(number) @a \",\" @b", "(array (number) @a) @b (string) @c",
                "(pair key: (_) @a value: (_) @b) @c", "(ERROR (_) @a)"}}),
    [](const auto& row) { return row.param.name; });

TEST(SearchRoots, PassesTheChildrenOfAWideNodeOnce) {
  constexpr int count = 2'000;
  const ParsedSource source(Grammar::BuiltIn::json, u"[" + repeated(u"1,", count));
  const auto passedFor = [&](const char* text) {
    const Query query(text, Grammar::fromBuiltIn(Grammar::BuiltIn::json));
    SearchRoots roots(query, source.tree->rootNode());
    for (std::uint32_t place = 1; place < count; place += 10)
      EXPECT_GE(roots.around({treeByte(place), treeByte(place + 1)}).size(), 1U);
    return roots.passedCount();
  };
  EXPECT_LE(passedFor("(number) @a"), 2 * count);
  EXPECT_GT(passedFor("(document) @a (ERROR) @b"), 20 * count);
}

} // namespace
} // namespace velmar
