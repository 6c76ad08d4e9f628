#include "VelmarParser/Grammar/ParseInput.h"

#include "tests/Support/Trees.h"
#include "tests/VelmarParser/Grammar/ParsedSource.h"

#include <gtest/gtest.h>

#include <cstring>

namespace velmar {
namespace {

using testing::ParsedSource;

struct WholeCase {
  const char* name;
  Grammar::BuiltIn grammar;
  std::u16string text;
  /// What the runtime is to see in one piece: `text` with LF for each lone CR.
  std::u16string seen;
};

class ParseInputWhole : public ::testing::TestWithParam<WholeCase> {};

TEST_P(ParseInputWhole, GivesTheTreeOfTheTextInOnePiece) {
  const ParsedSource parsed(GetParam().grammar, GetParam().text);
  const ParseTree whole = testing::parseInOnePiece(GetParam().grammar, GetParam().seen);
  EXPECT_EQ(testing::treeDifference(parsed.root().base(), whole.rootNode().base()), "");
  EXPECT_EQ(parsed.root().hasError(), whole.rootNode().hasError());
}

/// A JavaScript line of `count` units: "x + x + … + x;".
std::u16string longLine(std::size_t count) {
  std::u16string line = u"x";
  while (line.size() + 4 < count)
    line += u" + x";
  line.append(count - 1 - line.size(), u' ');
  return line + u";";
}

using enum Grammar::BuiltIn;
INSTANTIATE_TEST_SUITE_P(
    Cases, ParseInputWhole,
    ::testing::Values(WholeCase{"Empty", json, u"", u""},
                      WholeCase{"OnlyALineFeed", json, u"\n", u"\n"},
                      WholeCase{"CRLF", python, u"if a:\r\n  b\r\nc\r\n", u"if a:\r\n  b\r\nc\r\n"},
                      WholeCase{"LoneCR", python, u"if a:\r  b\rc\r", u"if a:\n  b\nc\n"},
                      WholeCase{"CRAtTheEndOfALineComment", javascript, u"// a\rb()\r\n// c\r",
                                u"// a\nb()\r\n// c\n"},
                      WholeCase{"MixedTerminators", javascript, u"a;\rb;\r\nc;\n\r\n\rd;",
                                u"a;\nb;\r\nc;\n\r\n\nd;"},
                      WholeCase{"ALineOfOneRead", javascript, longLine(1024), longLine(1024)},
                      WholeCase{"ALineOfOneUnitMore", javascript, longLine(1025), longLine(1025)},
                      WholeCase{"ALineFeedBehindOneRead", javascript, longLine(1024) + u"\ny;",
                                longLine(1024) + u"\ny;"},
                      WholeCase{"ACRAsLastUnitOfARead", javascript, longLine(1023) + u"\ry;",
                                longLine(1023) + u"\ny;"},
                      WholeCase{"ACRAsFirstUnitOfARead", javascript, longLine(1024) + u"\ry;",
                                longLine(1024) + u"\ny;"},
                      WholeCase{"APairCutByTheEndOfARead", javascript, longLine(1023) + u"\r\ny;",
                                longLine(1023) + u"\r\ny;"},
                      WholeCase{"ManyReads", javascript, longLine(50'000) + u"\nz;",
                                longLine(50'000) + u"\nz;"},
                      WholeCase{"Surrogates", javascript, u"a = '\U0001F600' + \"\U00020000\";",
                                u"a = '\U0001F600' + \"\U00020000\";"},
                      WholeCase{"APairOfSurrogatesCutByTheEndOfARead", javascript,
                                u"'" + std::u16string(1022, u'x') + u"\U0001F600'",
                                u"'" + std::u16string(1022, u'x') + u"\U0001F600'"},
                      WholeCase{"LoneSurrogates", javascript, u"a = '\xD800';\nb = '\xDC00\xDC00';",
                                u"a = '\xD800';\nb = '\xDC00\xDC00';"},
                      WholeCase{"NUL", javascript, std::u16string(u"a\0b;\nc", 6),
                                std::u16string(u"a\0b;\nc", 6)}),
    [](const auto& row) { return std::string(row.param.name); });

/// One read of the input handler.
struct Read {
  std::u16string units;
  bool isNull = false;
};

Read readAt(ParseInput& input, TSPoint point) {
  const TSInput record = input.input();
  std::uint32_t bytes = 99;
  const char* const data = record.read(record.payload, 0, point, &bytes);
  if (!data)
    return {.units = {}, .isNull = bytes == 0};
  return {.units = {reinterpret_cast<const char16_t*>(data), bytes / 2}, .isNull = false};
}

TEST(ParseInput, AReadNeverCrossesALine) {
  DocumentText text;
  text.replaceSubrange({0, 0}, u"one\r\ntwo");
  ParseInput input(text);
  EXPECT_EQ(readAt(input, {0, 0}).units, u"one\r\n");
  EXPECT_EQ(readAt(input, {0, 2 * 2}).units, u"e\r\n");
  EXPECT_EQ(readAt(input, {1, 0}).units, u"two");
}

TEST(ParseInput, AReadGivesAThousandAndTwentyFourUnitsAtMost) {
  DocumentText text;
  text.replaceSubrange({0, 0}, std::u16string(2500, u'x'));
  ParseInput input(text);
  EXPECT_EQ(readAt(input, {0, 0}).units.size(), 1024U);
  EXPECT_EQ(readAt(input, {0, 2048 * 2}).units.size(), 452U);
}

TEST(ParseInput, ALoneCRReadsAsLF) {
  DocumentText text;
  text.replaceSubrange({0, 0}, u"a\rb");
  ParseInput input(text);
  EXPECT_EQ(readAt(input, {0, 0}).units, u"a\n");
  EXPECT_EQ(readAt(input, {0, 1 * 2}).units, u"\n");
  EXPECT_EQ(text.substringFor({0, 3}), u"a\rb");
}

TEST(ParseInput, HalfACharacterAtTheEndOfTheTextIsNotMadeWholeByWhatStoodBehindIt) {
  DocumentText text;
  text.replaceSubrange({0, 0}, u"'\U0001F600");
  text.replaceSubrange({2, 3}, u""); // the line's memory still holds the other half
  ParseInput input(text);
  const TSInput runtime = input.input();
  std::uint32_t count = 0;
  const char* const bytes = runtime.read(runtime.payload, 0, {0, 0}, &count);
  ASSERT_EQ(count, 4U);
  char16_t units[3];
  std::memcpy(units, bytes, sizeof units); // as the runtime does: one unit more
  EXPECT_EQ(units[1], u'\xD83D');
  EXPECT_EQ(units[2], u'\0');
}

TEST(ParseInput, ThereIsNothingAtOrBehindTheEndOfALine) {
  DocumentText text;
  text.replaceSubrange({0, 0}, u"ab\ncd");
  ParseInput input(text);
  EXPECT_TRUE(readAt(input, {0, 3 * 2}).isNull);
  EXPECT_TRUE(readAt(input, {1, 2 * 2}).isNull);
  EXPECT_TRUE(readAt(input, {1, 9 * 2}).isNull);
  EXPECT_TRUE(readAt(input, {2, 0}).isNull);
}

TEST(ParseInput, AnEmptyTextEndsAtOnce) {
  const DocumentText text;
  ParseInput input(text);
  EXPECT_TRUE(readAt(input, {0, 0}).isNull);
}

} // namespace
} // namespace velmar
