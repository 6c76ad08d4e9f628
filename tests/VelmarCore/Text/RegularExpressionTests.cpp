#include "VelmarCore/Text/RegularExpression.h"

#include "VelmarCore/Text/RegularExpressionMatches.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace velmar {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Options = RegularExpressionOptions;

std::optional<TextRange> rangeOf(const auto& match) {
  return match ? std::optional(match->range()) : std::nullopt;
}

struct MatchCase {
  const char* name;
  const char* pattern;
  const char* text;
  const char16_t* documentText;
  // In bytes of `text`, then in units of `documentText`.
  std::optional<TextRange> first, prefix, whole;
  std::optional<TextRange> documentFirst, documentPrefix, documentWhole;
};

MatchCase ascii(const char* name, const char* pattern, const char* text,
                const char16_t* documentText, std::optional<TextRange> first,
                std::optional<TextRange> prefix, std::optional<TextRange> whole) {
  return {name, pattern, text, documentText, first, prefix, whole, first, prefix, whole};
}

class RegularExpressionThreeMatches : public testing::TestWithParam<MatchCase> {};

TEST_P(RegularExpressionThreeMatches, FindTheirRanges) {
  const MatchCase& row = GetParam();
  const RegularExpression expression(row.pattern);
  const std::string_view text = row.text;
  EXPECT_EQ(rangeOf(expression.firstMatchIn(text)), row.first);
  EXPECT_EQ(rangeOf(expression.prefixMatchIn(text)), row.prefix);
  EXPECT_EQ(rangeOf(expression.wholeMatchIn(text)), row.whole);
  EXPECT_EQ(expression.hasMatchIn(text), row.first.has_value());
  const std::u16string_view documentText = row.documentText;
  EXPECT_EQ(rangeOf(expression.firstMatchIn(documentText)), row.documentFirst);
  EXPECT_EQ(rangeOf(expression.prefixMatchIn(documentText)), row.documentPrefix);
  EXPECT_EQ(rangeOf(expression.wholeMatchIn(documentText)), row.documentWhole);
  EXPECT_EQ(expression.hasMatchIn(documentText), row.documentFirst.has_value());
}

constexpr std::nullopt_t none = std::nullopt;
using R = TextRange;

INSTANTIATE_TEST_SUITE_P(
    Cases, RegularExpressionThreeMatches,
    testing::Values(
        ascii("InTheMiddle", "b+", "abbc", u"abbc", R(1, 3), none, none),
        ascii("AtTheStart", "a+", "aab", u"aab", R(0, 2), R(0, 2), none),
        ascii("AllOfIt", "[ab]+", "aab", u"aab", R(0, 3), R(0, 3), R(0, 3)),
        ascii("NoSecondTryForTheWhole", "a|ab", "ab", u"ab", R(0, 1), R(0, 1), none),
        ascii("AnchoredAlternativesAreTried", "(?:a|ab)$", "ab", u"ab", R(0, 2), R(0, 2), R(0, 2)),
        ascii("NothingInEmptyText", "a", "", u"", none, none, none),
        ascii("EmptyMatchOfEmptyText", "a*", "", u"", R(0, 0), R(0, 0), R(0, 0)),
        ascii("EndInFrontOfALastLineBreak", "^(?:if|else)$", "if\r\n", u"if\r\n", R(0, 2), R(0, 2),
              none),
        ascii("LiteralInTheMiddle", "foo", "a foo", u"a foo", R(2, 5), none, none),
        ascii("LiteralAtTheEnd", "foo$", "foofoo\n", u"foofoo\n", R(3, 6), none, none),
        ascii("DotStopsAtLineBreaks", ".+", "ab\ncd", u"ab\ncd", R(0, 2), R(0, 2), none),
        MatchCase{"CountsBytesOrUnits", "\\d+", "é😀12", u"é😀12", R(6, 8), none, none, R(3, 5),
                  none, none},
        MatchCase{"LiteralsBehindOtherScripts", "日", "é日", u"é日", R(2, 5), none, none, R(1, 2),
                  none, none},
        MatchCase{"OneEmojiIsOneCharacter", "^.$", "😀", u"😀", R(0, 4), R(0, 4), R(0, 4), R(0, 2),
                  R(0, 2), R(0, 2)}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(RegularExpression, GroupsThatTookNoPartAreEmptyButCount) {
  const RegularExpression expression("(a)|(?<second>b)|(c)");
  const auto match = expression.firstMatchIn("xb");
  ASSERT_TRUE(match);
  EXPECT_EQ(match->count(), 4);
  EXPECT_EQ(match->substring(), "b");
  EXPECT_EQ((*match)[1], RegularExpression::Match::Element());
  EXPECT_EQ((*match)[2].substring, "b");
  EXPECT_EQ((*match)[2].range, R(1, 2));
  EXPECT_EQ((*match)[3].range, none);
  EXPECT_EQ((*match)[4], RegularExpression::Match::Element());
  EXPECT_EQ((*match)[-1], RegularExpression::Match::Element());
}

TEST(RegularExpression, GroupsAreReadByName) {
  const RegularExpression expression("(?<key>\\w+)=(?<value>\\w+)?");
  const auto match = expression.firstMatchIn(u"  größe=");
  ASSERT_TRUE(match);
  ASSERT_TRUE(match->groupNamed("key"));
  EXPECT_EQ(match->groupNamed("key")->substring, u"größe");
  EXPECT_EQ(match->groupNamed("key")->range, R(2, 7));
  EXPECT_FALSE(match->groupNamed("value")) << "took no part";
  EXPECT_FALSE(match->groupNamed("other")) << "isn't there";
  EXPECT_FALSE(match->groupNamed(""));
  EXPECT_EQ(match->textOf("key"), u"größe");
  EXPECT_EQ(match->textOf("value"), u"");
}

TEST(RegularExpression, ALiteralsGroupHasTheRangeOfTheMatch) {
  const auto match = RegularExpression("^(?<word>if|else)$").firstMatchIn(u"else");
  ASSERT_TRUE(match);
  EXPECT_EQ(match->count(), 2);
  EXPECT_EQ(match->groupNamed("word")->range, R(0, 4));
}

struct OptionCase {
  const char* name;
  const char* pattern;
  std::uint32_t options;
  const char* text;
  std::optional<TextRange> first;
};
class RegularExpressionOptionBits : public testing::TestWithParam<OptionCase> {};

TEST_P(RegularExpressionOptionBits, ChangeTheMatch) {
  const OptionCase& row = GetParam();
  EXPECT_EQ(rangeOf(RegularExpression(row.pattern, Options(row.options)).firstMatchIn(row.text)),
            row.first);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RegularExpressionOptionBits,
    testing::Values(OptionCase{"CaseCounts", "ab", 0, "AB", none},
                    OptionCase{"CaseInsensitive", "ab", 1, "AB", R(0, 2)},
                    OptionCase{"CaseInsensitiveBeyondASCII", "^ä$", 1, "Ä", R(0, 2)},
                    OptionCase{"BlanksCount", "a b # c", 0, "ab", none},
                    OptionCase{"CommentsAndBlanks", "a b # c", 2, "ab", R(0, 2)},
                    OptionCase{"LiteralMetacharacters", "^a.(", 4, "x^a.(", R(1, 5)},
                    OptionCase{"LiteralsKeepBlanks", "a b", 2 | 4, "a b", R(0, 3)},
                    OptionCase{"LiteralsWithoutCase", "A.", 1 | 4, "ba.", R(1, 3)},
                    OptionCase{"DotMatchesLineBreaks", "a.b", 8, "a\nb", R(0, 3)},
                    OptionCase{"AnchorsMatchTheText", "^b$", 0, "a\nb\nc", none},
                    OptionCase{"AnchorsMatchLines", "^b$", 16, "a\nb\nc", R(2, 3)},
                    OptionCase{"UnnamedBitsDoNothing", "ab", 1 << 20, "ab", R(0, 2)}),
    [](const auto& row) { return std::string(row.param.name); });

struct ErrorCase {
  const char* name;
  const char* pattern;
  const char* message;
  std::int64_t offset;
};
class RegularExpressionErrors : public testing::TestWithParam<ErrorCase> {};

TEST_P(RegularExpressionErrors, TellWhatIsWrongAndWhere) {
  const ErrorCase& row = GetParam();
  try {
    const RegularExpression expression(row.pattern);
    FAIL() << "compiled";
  } catch (const RegularExpressionError& error) {
    EXPECT_EQ(error.message(), row.message);
    EXPECT_EQ(error.offset(), row.offset);
  }
  const auto result = RegularExpression::compile(row.pattern);
  ASSERT_FALSE(result.hasValue());
  EXPECT_EQ(result.error().offset(), row.offset);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RegularExpressionErrors,
    testing::Values(
        ErrorCase{"Empty", "",
                  "The regular expression isn't valid: the pattern is empty at offset 0.", 0},
        ErrorCase{"Interval", "a{x",
                  "The regular expression isn't valid: an interval in braces is malformed at "
                  "offset 3.",
                  3},
        ErrorCase{"OffsetsCountBytes", "😀é**",
                  "The regular expression isn't valid: the syntax is wrong at offset 8.", 8},
        ErrorCase{"OffsetsCountOverLines", "a\r\nb\nc**",
                  "The regular expression isn't valid: the syntax is wrong at offset 8.", 8},
        ErrorCase{"GroupName", "(?<a_b>x)",
                  "The regular expression isn't valid: a group's name is malformed or used twice "
                  "at offset 5.",
                  5}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(RegularExpression, DeepNestingIsAnErrorAndNoOverflow) {
  std::string pattern(200'000, '(');
  pattern.append(200'000, ')');
  EXPECT_FALSE(RegularExpression::compile(pattern).hasValue());
  EXPECT_FALSE(RegularExpression::compile(std::string(200'000, '[')).hasValue());
}

TEST(RegularExpression, CaptureNamesSkipEscapedParentheses) {
  EXPECT_THAT(RegularExpression(R"(\(?<no>(?<yes>x))").captureNames(), UnorderedElementsAre("yes"));
  EXPECT_THAT(RegularExpression(R"(\\(?<a>x)(?<b2>(?<c>y)))").captureNames(),
              UnorderedElementsAre("a", "b2", "c"));
  EXPECT_THAT(RegularExpression("(?<=a)(?<!b)(?:c)(d)").captureNames(), IsEmpty());
  EXPECT_THAT(RegularExpression("a\\\\").captureNames(), IsEmpty());
}

TEST(RegularExpression, EqualityIsThatOfPatternAndOptions) {
  const RegularExpression expression("a+", Options::caseInsensitive);
  EXPECT_EQ(expression, RegularExpression("a+", Options::caseInsensitive));
  EXPECT_NE(expression, RegularExpression("a+"));
  EXPECT_NE(expression, RegularExpression("a*", Options::caseInsensitive));
  EXPECT_EQ(expression, RegularExpression(expression));
}

template <class Unit>
std::vector<TextRange> rangesOf(const RegularExpressionMatches<Unit>& matches) {
  std::vector<TextRange> ranges;
  for (const auto& match : matches)
    ranges.push_back(match.range());
  return ranges;
}

TEST(RegularExpressionMatches, FollowEachOther) {
  EXPECT_THAT(rangesOf(RegularExpression("a+").matchesIn("aabacaaa")),
              ElementsAre(R(0, 2), R(3, 4), R(5, 8)));
  EXPECT_THAT(rangesOf(RegularExpression("é.").matchesIn("éaxéb")), ElementsAre(R(0, 3), R(4, 7)));
  EXPECT_THAT(rangesOf(RegularExpression("é.").matchesIn(u"éaxéb")), ElementsAre(R(0, 2), R(3, 5)));
  EXPECT_THAT(rangesOf(RegularExpression("ab").matchesIn("xabab")), ElementsAre(R(1, 3), R(3, 5)));
}

TEST(RegularExpressionMatches, StepOverEmptyMatchesByOneCharacter) {
  EXPECT_THAT(rangesOf(RegularExpression("a*").matchesIn(u"baac")),
              ElementsAre(R(0, 0), R(1, 3), R(3, 3)));
  EXPECT_THAT(rangesOf(RegularExpression("x*").matchesIn(u"😀b")), ElementsAre(R(0, 0), R(2, 2)));
  EXPECT_THAT(rangesOf(RegularExpression("x*").matchesIn("😀b")), ElementsAre(R(0, 0), R(4, 4)));
  EXPECT_THAT(rangesOf(RegularExpression("(?=b)").matchesIn(u"abab")),
              ElementsAre(R(1, 1), R(3, 3)));
  EXPECT_THAT(rangesOf(RegularExpression("$").matchesIn(u"ab")), ElementsAre(R(2, 2)));
  EXPECT_THAT(rangesOf(RegularExpression("a*").matchesIn(u"")), IsEmpty());
}

TEST(RegularExpressionMatches, SeeWhatLiesInFrontOfEachSearch) {
  EXPECT_THAT(rangesOf(RegularExpression("^a").matchesIn(u"aaa")), ElementsAre(R(0, 1)));
  EXPECT_THAT(rangesOf(RegularExpression("^[a]").matchesIn(u"aaa")), ElementsAre(R(0, 1)));
  EXPECT_THAT(rangesOf(RegularExpression("(?<=a)a").matchesIn(u"aaa")),
              ElementsAre(R(1, 2), R(2, 3)));
  EXPECT_THAT(rangesOf(RegularExpression("^[a]", Options::anchorsMatchLines).matchesIn(u"aa\nab")),
              ElementsAre(R(0, 1), R(3, 4)));
}

TEST(RegularExpressionMatches, AnchoredOnesTouch) {
  EXPECT_THAT(rangesOf(RegularExpression("[ab]").matchesIn(
                  u"abxa", {.start = CompiledPattern::Start::anchored})),
              ElementsAre(R(0, 1), R(1, 2)));
}

TEST(RegularExpressionMatches, GiveTheirGroups) {
  const std::string text = "größe=3, höhe = 4";
  std::vector<std::pair<std::string, std::string>> found;
  for (const auto& match : RegularExpression(R"((?<key>\w+)\s*=\s*(?<value>\d))").matchesIn(text))
    found.emplace_back(match.textOf("key"), match.textOf("value"));
  EXPECT_THAT(found, ElementsAre(std::pair("größe", "3"), std::pair("höhe", "4")));
}

struct ReplacementCase {
  const char* name;
  const char* pattern;
  const char* replacement;
  const char* result;
};
class RegularExpressionReplacement : public testing::TestWithParam<ReplacementCase> {};

TEST_P(RegularExpressionReplacement, FillsInTheGroups) {
  const ReplacementCase& row = GetParam();
  const RegularExpression expression(row.pattern);
  const auto match = expression.firstMatchIn("-größe=3-");
  ASSERT_TRUE(match);
  EXPECT_EQ(expression.replacementFor(*match, row.replacement), row.result);
}

constexpr const char* twoGroups = "(?<key>\\w+)=(\\d)";
constexpr const char* tenGroups = "(g)(r)(ö)(ß)(e)(=)(3)(-)($)(x)?";

INSTANTIATE_TEST_SUITE_P(
    Cases, RegularExpressionReplacement,
    testing::Values(ReplacementCase{"Groups", twoGroups, "<$2|$1>", "<3|größe>"},
                    ReplacementCase{"WholeMatch", twoGroups, "[$0]", "[größe=3]"},
                    ReplacementCase{"NamedGroup", twoGroups, "${key}!", "größe!"},
                    ReplacementCase{"UnknownName", twoGroups, "${nokey} ${", "${nokey} ${"},
                    ReplacementCase{"Escapes", twoGroups, R"(\$1\\$2\n)", R"($1\3n)"},
                    ReplacementCase{"LoneDollarAndBackslash", twoGroups, "$ $x \\", "$ $x \\"},
                    ReplacementCase{"MoreDigitsThanGroups", twoGroups, "$10", "größe0"},
                    ReplacementCase{"TwoDigits", tenGroups, "$10$01$3", "gö"},
                    ReplacementCase{"NumberBeyondTheGroups", twoGroups, "a$7b", "ab"},
                    ReplacementCase{"GroupWithoutPart", "(x)?3", "a$1b", "ab"},
                    ReplacementCase{"LettersBeyondASCII", twoGroups, "→ $2 😀", "→ 3 😀"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(RegularExpression, ReplacementsInDocumentText) {
  const RegularExpression expression("(?<key>\\w+)=(\\d)");
  const auto match = expression.firstMatchIn(u"größe=3");
  ASSERT_TRUE(match);
  EXPECT_EQ(expression.replacementFor(*match, u"$2 ${key} → \\😀"), u"3 größe → 😀");
}

TEST(RegularExpression, LoneSurrogatesAreCharactersOfTheirOwn) {
  const std::u16string lead = {u'a', 0xD83D};
  const std::u16string trail = {0xDE00, u'a'};
  const std::u16string reversed = {0xDE00, 0xD83D};
  EXPECT_EQ(rangeOf(RegularExpression("a.").firstMatchIn(lead)), R(0, 2));
  EXPECT_EQ(rangeOf(RegularExpression("[^x]+").firstMatchIn(reversed)), R(0, 2));
  EXPECT_EQ(rangeOf(RegularExpression("a").firstMatchIn(trail)), R(1, 2));
  EXPECT_FALSE(RegularExpression("😀").hasMatchIn(lead));
  EXPECT_FALSE(RegularExpression("[😀]").hasMatchIn(reversed));
  EXPECT_THAT(rangesOf(RegularExpression("x*").matchesIn(reversed)), ElementsAre(R(0, 0), R(1, 1)));
  EXPECT_EQ(rangeOf(RegularExpression("\\b").firstMatchIn(lead)), R(0, 0));
}

TEST(RegularExpression, AMatchOfHalfACharacterIsNoMatchInAString) {
  const RegularExpression half("x\\uD83D");
  EXPECT_EQ(rangeOf(half.firstMatchIn(std::u16string{u'x', 0xD83D})), R(0, 2));
  EXPECT_FALSE(half.firstMatchIn("x😀"));
  EXPECT_THAT(rangesOf(half.matchesIn("x😀x😀")), IsEmpty());
  EXPECT_FALSE(half.firstMatchIn("x\xED\xA0\xBD")) << "a surrogate isn't UTF-8";
}

TEST(RegularExpression, NullCharactersAreOrdinary) {
  using namespace std::string_view_literals;
  EXPECT_EQ(rangeOf(RegularExpression("b").firstMatchIn("a\0b"sv)), R(2, 3));
  EXPECT_EQ(rangeOf(RegularExpression("[b]").firstMatchIn(u"a\0b"sv)), R(2, 3));
  EXPECT_EQ(rangeOf(RegularExpression(std::string("\0b"sv)).firstMatchIn(u"a\0b"sv)), R(1, 3));
}

/// A pass with so little time that runaway patterns are stopped at once.
RegularExpressionPass hurriedPass() {
  return RegularExpressionPass(
      {.perSearch = std::chrono::milliseconds(5), .perPattern = std::chrono::seconds(1)});
}

struct RunawayCase {
  const char* name;
  const char* pattern;
  std::u16string text;
};
class RegularExpressionRunaway : public testing::TestWithParam<RunawayCase> {};

TEST_P(RegularExpressionRunaway, IsStoppedAndOffForTheRestOfThePass) {
  const RunawayCase& row = GetParam();
  const RegularExpression expression(row.pattern);
  RegularExpressionPass pass = hurriedPass();
  EXPECT_FALSE(expression.hasMatchIn(row.text, &pass));
  EXPECT_TRUE(pass.isOff(expression));
  EXPECT_THAT(pass.patternsOff(), ElementsAre(row.pattern));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RegularExpressionRunaway,
    testing::Values(
        RunawayCase{"NestedRepetition", "(a+)+$", std::u16string(40, u'a') + u'b'},
        RunawayCase{"OverlappingAlternatives", "^(?:a|aa)+$", std::u16string(80, u'a') + u'b'},
        RunawayCase{"OptionalThenRequired", "^(?:a?){40}a{40}b", std::u16string(40, u'a')},
        RunawayCase{"SquareOfTheLength", ".*.*=", std::u16string(100'000, u'a')},
        RunawayCase{"AtomicAtEachPlace", "(?>[^x]*)q", std::u16string(1'000'000, u'a')}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(RegularExpression, ARunawayPatternReturnsAfterHalfASecondAndNotBefore) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(RegularExpression("(a+)+$").hasMatchIn(std::string(40, 'a') + "b"));
  const auto time = std::chrono::steady_clock::now() - start;
  EXPECT_GE(time, std::chrono::milliseconds(450));
}

TEST(RegularExpression, MoreToRememberThanAllowedIsNoMatch) {
  // Each round keeps a place to go back to, and the last character is the only one that ends the
  // search.
  const std::u16string text = std::u16string(8'000'000, u'a') + u'c';
  const RegularExpression expression("^(?:a|b)*c");
  RegularExpressionPass pass({.perSearch = std::chrono::hours(1)});
  EXPECT_FALSE(expression.hasMatchIn(text, &pass));
  EXPECT_TRUE(pass.isOff(expression));
  EXPECT_TRUE(expression.hasMatchIn(u"abac")) << "the expression itself is as good as new";
}

TEST(RegularExpressionPass, AnOffPatternMatchesNothingUntilThePassIsOver) {
  const RegularExpression runaway("(a+)+$");
  const RegularExpression other("a");
  RegularExpression copy = other;
  copy = runaway;
  RegularExpressionPass pass = hurriedPass();
  EXPECT_TRUE(runaway.hasMatchIn(u"aaa", &pass));
  EXPECT_FALSE(pass.isOff(runaway));
  EXPECT_FALSE(runaway.hasMatchIn(std::u16string(40, u'a') + u'b', &pass));
  EXPECT_FALSE(runaway.hasMatchIn(u"aaa", &pass));
  EXPECT_FALSE(copy.firstMatchIn(u"aaa", &pass)) << "copies count as one";
  EXPECT_FALSE(copy.firstMatchIn("aaa", &pass));
  EXPECT_TRUE(other.hasMatchIn(u"aaa", &pass));
  EXPECT_TRUE(runaway.hasMatchIn(u"aaa")) << "outside the pass";
  RegularExpressionPass next = hurriedPass();
  EXPECT_TRUE(runaway.hasMatchIn(u"aaa", &next));
}

TEST(RegularExpressionPass, SlowSearchesAddUp) {
  const RegularExpression expression("(a+)+$");
  // Some 2^20 steps each: slow, but far from an hour.
  const std::u16string text = std::u16string(18, u'a') + u'b';
  RegularExpressionPass pass(
      {.perSearch = std::chrono::hours(1), .perPattern = std::chrono::milliseconds(20)});
  int searches = 0;
  while (!pass.isOff(expression) && ++searches < 10'000)
    EXPECT_FALSE(expression.hasMatchIn(text, &pass));
  EXPECT_LT(searches, 10'000);
  EXPECT_THAT(pass.patternsOff(), ElementsAre("(a+)+$"));
}

TEST(RegularExpression, ThreadsShareOneValue) {
  const RegularExpression word("\\b(?<word>[a-z]+)(\\d+)\\b");
  const RegularExpression literal("^(?:if|else)$");
  constexpr int threadCount = 12; // more than a pattern keeps matchers for
  std::vector<int> failures(threadCount, 0);
  {
    std::vector<std::jthread> threads;
    threads.reserve(threadCount);
    for (int thread = 0; thread < threadCount; ++thread)
      threads.emplace_back([&, thread] {
        const std::u16string digits(static_cast<std::size_t>(thread + 1), u'7');
        const std::u16string text = u"- abc" + digits + u" -";
        for (int round = 0; round < 2'000; ++round) {
          const auto match = word.firstMatchIn(text);
          const bool isRight = match && (*match)[2].substring == std::u16string_view(digits) &&
                               match->textOf("word") == u"abc" && literal.hasMatchIn(u"else");
          failures[static_cast<std::size_t>(thread)] += isRight ? 0 : 1;
        }
      });
  }
  EXPECT_THAT(failures, testing::Each(0));
}

TEST(RegularExpressionDeathTest, NothingIsReadBehindTheLastMatch) {
  const RegularExpression expression("a");
  const auto matches = expression.matchesIn(u"b");
  EXPECT_DEATH((void)matches.begin()->range(), "no match behind the last");
}

TEST(RegularExpressionDeathTest, ASearchMustBeginInsideTheText) {
  const auto pattern = CompiledPattern::compile("a", Options::none);
  EXPECT_DEATH((void)(*pattern)->search(u"a", 2, CompiledPattern::Start::anywhere,
                                        std::chrono::seconds(1), nullptr),
               "behind the end");
}

} // namespace

} // namespace velmar
