#include "VelmarCore/Text/RegexScanner.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace velmar {

namespace {

using namespace CharacterClasses;
using R = TextRange;

const RegularExpression word("[a-z]+");

TEST(RegexScanner, WalksByCharacters) {
  // An accent that combines, a family, a line break of two units.
  const std::string_view text = "e\u0301👨‍👩‍👧\r\nx";
  RegexScanner scanner(text);
  EXPECT_EQ(scanner.peek(), "e\u0301");
  EXPECT_EQ(scanner.scanCharacter(), "e\u0301");
  EXPECT_EQ(scanner.scanCharacter(), "👨‍👩‍👧");
  EXPECT_TRUE(scanner.peek("\r\n"));
  EXPECT_FALSE(scanner.peek('\r'));
  EXPECT_TRUE(scanner.advance());
  EXPECT_TRUE(scanner.peek('x'));
  EXPECT_TRUE(scanner.advance());
  EXPECT_TRUE(scanner.isAtEnd());
  EXPECT_FALSE(scanner.advance());
  EXPECT_EQ(scanner.peek(), std::nullopt);
  EXPECT_FALSE(scanner.peek('x'));
  EXPECT_EQ(scanner.scanCharacter(), std::nullopt);
  scanner.reset();
  EXPECT_EQ(scanner.currentIndex(), 0);
  EXPECT_EQ(scanner.remaining(), text);
}

TEST(RegexScanner, ScanMovesPastAMatchAndOnlyThen) {
  RegexScanner scanner("abc def");
  EXPECT_FALSE(scanner.scan(RegularExpression("b")));
  EXPECT_FALSE(scanner.scan("abd"));
  EXPECT_FALSE(scanner.scan(digit));
  EXPECT_FALSE(scanner.scan(oneOrMore(digit)));
  EXPECT_EQ(scanner.currentIndex(), 0);
  const auto match = scanner.scan(RegularExpression("a(?<rest>.c)"));
  ASSERT_TRUE(match);
  EXPECT_EQ(match->textOf("rest"), "bc");
  EXPECT_EQ(scanner.currentIndex(), 3);
  EXPECT_EQ(scanner.scan(whitespace), " ");
  EXPECT_EQ(scanner.scan('d'), "d");
  EXPECT_EQ(scanner.scan("ef"), "ef");
  EXPECT_TRUE(scanner.isAtEnd());
}

TEST(RegexScanner, NothingIsScannedAtTheEnd) {
  RegexScanner scanner("");
  EXPECT_FALSE(scanner.scan(RegularExpression("a*")));
  EXPECT_FALSE(scanner.scan(""));
  EXPECT_FALSE(scanner.scan(whitespace));
  EXPECT_FALSE(scanner.scan(oneOrMore(whitespace)));
  EXPECT_FALSE(scanner.scanUpTo(RegularExpression("a*")));
  EXPECT_FALSE(scanner.scanUpTo('a'));
}

TEST(RegexScanner, AnEmptyMatchSucceedsWithoutMoving) {
  RegexScanner scanner("b");
  ASSERT_TRUE(scanner.scan(RegularExpression("a*")));
  EXPECT_EQ(scanner.currentIndex(), 0);
}

TEST(RegexScanner, RangesCountBytesOfTheWholeText) {
  RegexScanner scanner("é=größe;😀x");
  EXPECT_EQ(scanner.scanUpTo(RegularExpression("=")), R(0, 2));
  const auto match = scanner.scan(RegularExpression("=(?<name>\\w+)"));
  ASSERT_TRUE(match);
  EXPECT_EQ(match->range(), R(2, 10));
  EXPECT_EQ(match->groupNamed("name")->range, R(3, 10));
  EXPECT_EQ(match->textOf("name"), "größe");
  EXPECT_EQ(scanner.scan(";"), ";");
  EXPECT_EQ(scanner.scanUpTo(word), R(11, 15));
  EXPECT_EQ(scanner.textIn(R(11, 15)), "😀");
  scanner.setCurrentIndex(2);
  EXPECT_EQ(scanner.scanUpTo(RegularExpression(";")), R(2, 10)) << "back and forth again";
}

template <class Pattern>
void expectScanUpTo(std::string_view text, const Pattern& pattern, std::int64_t from,
                    std::optional<TextRange> passed, std::int64_t end) {
  RegexScanner scanner(text);
  scanner.setCurrentIndex(from);
  EXPECT_EQ(scanner.scanUpTo(pattern), passed);
  EXPECT_EQ(scanner.currentIndex(), end);
}

TEST(RegexScanner, ScanUpToStopsInFrontOfTheMatch) {
  const std::string_view text = "ab;cd";
  expectScanUpTo(text, RegularExpression("[;,]"), 0, R(0, 2), 2);
  expectScanUpTo(text, CharacterClass::anyOf(",;"), 0, R(0, 2), 2);
  expectScanUpTo(text, ';', 0, R(0, 2), 2);
  expectScanUpTo(text, std::string_view(";c"), 1, R(1, 2), 2);
}

TEST(RegexScanner, ScanUpToAMatchRightHerePassesNothing) {
  expectScanUpTo("ab;cd", RegularExpression("[;,]"), 2, std::nullopt, 2);
  expectScanUpTo("ab;cd", CharacterClass::anyOf(",;"), 2, std::nullopt, 2);
  expectScanUpTo("ab;cd", ';', 2, std::nullopt, 2);
}

TEST(RegexScanner, ScanUpToWithoutAMatchGoesToTheEnd) {
  expectScanUpTo("ab;cd", RegularExpression("!"), 1, R(1, 5), 5);
  expectScanUpTo("ab;cd", CharacterClass::anyOf("!"), 1, R(1, 5), 5);
  expectScanUpTo("ab;cd", '!', 1, R(1, 5), 5);
}

TEST(RegexScanner, SeesNothingOutsideItsBounds) {
  const std::string_view text = "xyabcde";
  RegexScanner scanner(text, {2, 4});
  EXPECT_EQ(scanner.remaining(), "ab");
  EXPECT_FALSE(scanner.scan("abc"));
  EXPECT_FALSE(RegexScanner(text, {2, 4}).scan(RegularExpression("(?<=y)a")));
  EXPECT_TRUE(RegexScanner(text, {2, 4}).scan(RegularExpression("^ab$")));
  const auto match = scanner.scan(word);
  ASSERT_TRUE(match);
  EXPECT_EQ(match->range(), R(2, 4));
  EXPECT_TRUE(scanner.isAtEnd());
  EXPECT_FALSE(scanner.advance());
  EXPECT_EQ(scanner.remaining(), "");
  scanner.reset();
  EXPECT_EQ(scanner.currentIndex(), 2);
  EXPECT_EQ(scanner.scan(oneOrMore(letter)), "ab");
}

TEST(RegexScanner, ACopyGoesItsOwnWay) {
  RegexScanner scanner("ab cd");
  EXPECT_TRUE(scanner.scan(word));
  RegexScanner copy = scanner;
  EXPECT_TRUE(copy.scan(' '));
  EXPECT_TRUE(copy.scan(word));
  EXPECT_TRUE(copy.isAtEnd());
  EXPECT_EQ(scanner.currentIndex(), 2);
  EXPECT_EQ(copy.textSince(3), "cd");
}

TEST(RegexScanner, LiteralsAndClassesMatchWholeCharacters) {
  RegexScanner accent("e\u0301e");
  EXPECT_FALSE(accent.scan('e'));
  EXPECT_FALSE(accent.scan(letter));
  EXPECT_FALSE(accent.scan(oneOrMore(letter)));
  EXPECT_EQ(accent.scan(!letter), "e\u0301");
  EXPECT_EQ(accent.scan('e'), "e");
  expectScanUpTo("e\u0301xe", 'e', 0, R(0, 4), 4);
  expectScanUpTo("e\u0301xe", letter, 0, R(0, 3), 3);
  expectScanUpTo("a\r\nb\n", '\n', 0, R(0, 4), 4);
}

TEST(RegexScanner, RunsTakeAllThereIs) {
  RegexScanner scanner("a_1 \t\r\n\u2003é!");
  EXPECT_EQ(scanner.scan(oneOrMore(wordCharacter)), "a_1");
  EXPECT_EQ(scanner.scan(oneOrMore(whitespace)), " \t\r\n\u2003");
  EXPECT_EQ(scanner.scan(oneOrMore(!whitespace)), "é!");
}

struct ClassCase {
  const char* name;
  CharacterClass characters;
  const char* inside; // characters separated by '|'
  const char* outside;
};
class CharacterClassMembers : public testing::TestWithParam<ClassCase> {};

void forEachPart(std::string_view list, const auto& body) {
  for (std::size_t start = 0; start <= list.size();) {
    const std::size_t end = std::min(list.find('|', start), list.size());
    body(list.substr(start, end - start));
    start = end + 1;
  }
}

TEST_P(CharacterClassMembers, AreThese) {
  const ClassCase& row = GetParam();
  forEachPart(row.inside, [&](std::string_view character) {
    EXPECT_TRUE(row.characters.contains(character)) << character;
    EXPECT_FALSE((!row.characters).contains(character)) << character;
  });
  forEachPart(row.outside, [&](std::string_view character) {
    EXPECT_FALSE(row.characters.contains(character)) << character;
    EXPECT_TRUE((!row.characters).contains(character)) << character;
  });
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CharacterClassMembers,
    testing::Values(ClassCase{"BothHalves",
                              CharacterClass::anyOf("\r") | CharacterClass::anyOf("\n"), "\r|\r\n",
                              "a"},
                    ClassCase{"Whitespace", whitespace,
                              " |\t|\n|\r|\r\n|\v|\f|\u0085|\u00A0|\u2028|\u3000",
                              "a|\u200B|\u0001|é"},
                    ClassCase{"LineBreak", lineBreak, "\n|\r|\r\n", "\v|\u2028| "},
                    ClassCase{"OneOfTheTwo", CharacterClass::anyOf("\n"), "\n", "\r|\r\n"},
                    ClassCase{"Digit", digit, "0|9", "/|:|a|٣"},
                    ClassCase{"HexadecimalDigit", hexadecimalDigit, "0|f|F", "g|G|`|@"},
                    ClassCase{"Word", wordCharacter, "a|Z|0|_", "-|[|`|{|é|e\u0301"},
                    ClassCase{"Union", whitespace | !digit, "a| |\u2003|é", "5"},
                    ClassCase{"AllButWhitespace", !whitespace, "a|é|e\u0301|😀", " |\u2003|\r\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(CharacterClass, NoCharacterIsInNoClass) {
  EXPECT_FALSE(whitespace.contains(""));
  EXPECT_FALSE((!whitespace).contains(""));
}

TEST(RegexScanner, LongTextsAreLinear) {
  // Each scan starts anew; if one cost more than its own length, this wouldn't end.
  std::string text;
  for (int line = 0; line < 100'000; ++line)
    text += line % 2 == 0 ? "größe = 3\n" : "x = 4\n";
  RegexScanner scanner(text);
  const RegularExpression breaks("[\\r\\n]+");
  int lines = 0;
  while (!scanner.isAtEnd()) {
    scanner.scanUpTo(breaks);
    lines += scanner.scan(breaks) ? 1 : 0;
  }
  EXPECT_EQ(lines, 100'000);
}

TEST(RegexScannerDeathTest, BoundsAreKept) {
  EXPECT_DEATH(RegexScanner("abc", {1, 4}), "bounds must lie within");
  RegexScanner scanner("abc", {1, 2});
  EXPECT_DEATH(scanner.setCurrentIndex(0), "can't leave its bounds");
  EXPECT_DEATH(scanner.setCurrentIndex(3), "can't leave its bounds");
  EXPECT_DEATH((void)CharacterClass::anyOf("é"), "ASCII characters only");
}

} // namespace

} // namespace velmar
