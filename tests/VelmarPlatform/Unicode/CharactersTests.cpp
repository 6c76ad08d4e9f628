#include "VelmarPlatform/Unicode/Characters.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unicode/ubrk.h>

#include <iterator>
#include <random>
#include <ranges>
#include <string>
#include <vector>

namespace velmar {
namespace {

using testing::ElementsAre;
using namespace std::string_literals;

static_assert(std::ranges::bidirectional_range<CharacterView>);
static_assert(std::ranges::bidirectional_range<UTF16CharacterView>);

// Each row is a text cut into its characters by hand.
struct CharactersCase {
  const char* name;
  std::vector<std::string> characters;
};

class CharactersOf : public testing::TestWithParam<CharactersCase> {
protected:
  std::string text_ = [] {
    std::string text;
    for (const std::string& character : GetParam().characters)
      text += character;
    return text;
  }();
};

TEST_P(CharactersOf, AreFoundForwards) {
  std::vector<std::string> found;
  for (std::string_view character : CharacterView(text_))
    found.emplace_back(character);
  EXPECT_EQ(found, GetParam().characters);
  EXPECT_EQ(characterCount(text_), std::ssize(GetParam().characters));
}

TEST_P(CharactersOf, AreFoundBackwards) {
  std::vector<std::string> found;
  for (auto index = std::ssize(text_); index > 0;) {
    const std::int64_t start = previousCharacterBoundary(text_, index);
    found.insert(found.begin(), text_.substr(static_cast<std::size_t>(start),
                                             static_cast<std::size_t>(index - start)));
    index = start;
  }
  EXPECT_EQ(found, GetParam().characters);
}

TEST_P(CharactersOf, AreTheSameInUTF16) {
  const std::u16string text = utf16RepairingUTF8(text_);
  std::vector<std::string> found;
  for (std::u16string_view character : UTF16CharacterView(text))
    found.push_back(utf8RepairingUTF16(character));
  EXPECT_EQ(found, GetParam().characters);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, CharactersOf,
    testing::Values(CharactersCase{"Empty", {}}, CharactersCase{"ASCII", {"a", " ", "\n", "b"}},
                    CharactersCase{"CRLFIsOne", {"a", "\r\n", "\n", "\r", "\r\n"}},
                    CharactersCase{"CombiningMarks", {"e\u0301", "x\u0302\u0323", "y"}},
                    CharactersCase{"MarkOnABlank", {" \u0301", " "}},
                    CharactersCase{"NoMarkOnAControl", {"\t", "\u0301", "\n", "\u0301"}},
                    CharactersCase{"Cyrillic", {"П", "р", "и", "й"}},
                    CharactersCase{"HangulSyllables", {"한", "국", "\u1112\u1161\u11AB", "어"}},
                    CharactersCase{"Flags", {"🇩🇪", "🇫🇷", "🇩"}},
                    CharactersCase{"Emoji", {"👍🏽", "👩‍👩‍👧‍👦", "❤️", "😀", "😀"}},
                    CharactersCase{"ZeroWidthJoinerAfterALetter", {"a\u200D", "b", "é\u200D", "ü"}},
                    CharactersCase{"Devanagari", {"न", "म", "स्ते"}},
                    CharactersCase{"PrependedSign",
                                   {"\u0600"
                                    "1",
                                    "2"}},
                    CharactersCase{"NUL", {"\0"s, "a"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Characters, ABadPieceOfUTF8CountsAsOneScalar) {
  // A lead without its continuations, a stray continuation, and a truncated sequence of three.
  const std::string text = "a\xC3"
                           "b\x80\xE2\x82"
                           "c";
  std::vector<std::string> found;
  for (std::string_view character : CharacterView(text))
    found.emplace_back(character);
  EXPECT_THAT(found, ElementsAre("a", "\xC3", "b", "\x80", "\xE2\x82", "c"));
}

TEST(Characters, ALoneSurrogateIsACharacterLikeALetter) {
  const std::u16string text = {u'a', 0xD800, u'\u0301', 0xDC00, u'b'};
  std::vector<std::int64_t> starts;
  const UTF16CharacterView view(text);
  for (auto at = view.begin(); at != view.end(); ++at)
    starts.push_back(at.index());
  EXPECT_THAT(starts, ElementsAre(0, 1, 3, 4));
}

TEST(Characters, TheInsideOfAScalarOrACharacterIsNoBoundary) {
  const std::string text = "e\u0301😀";
  std::vector<std::int64_t> boundaries;
  for (std::int64_t index = 0; index <= std::ssize(text); ++index)
    if (isCharacterBoundary(text, index))
      boundaries.push_back(index);
  EXPECT_THAT(boundaries, ElementsAre(0, 3, 7));
  EXPECT_EQ(previousCharacterBoundary(text, 5), 3);
  EXPECT_EQ(previousCharacterBoundary(text, 2), 0);
}

TEST(Characters, FirstAndLastAreViewsIntoTheText) {
  const std::string text = "🇩🇪 ok\r\n";
  EXPECT_EQ(firstCharacter(text), "🇩🇪");
  EXPECT_EQ(firstCharacter(text).data(), text.data());
  EXPECT_EQ(lastCharacter(text), "\r\n");
  EXPECT_EQ(firstCharacter(std::string_view()), "");
  EXPECT_EQ(lastCharacter(std::u16string_view()), u"");
}

TEST(Characters, AnIteratorGoesBackWhereItCameFrom) {
  const std::string text = "ae\u0301🇩🇪🇫🇷";
  const CharacterView view(text);
  auto at = view.end();
  EXPECT_EQ(*--at, "🇫🇷");
  EXPECT_EQ(*--at, "🇩🇪");
  EXPECT_EQ(*--at, "e\u0301");
  EXPECT_EQ(*++at, "🇩🇪");
  EXPECT_EQ(at.index(), 4);
}

// The whole of Unicode's White_Space.
TEST(Whitespace, IsTheUnicodeProperty) {
  std::vector<char32_t> found;
  for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar)
    if (isWhitespaceScalar(scalar))
      found.push_back(scalar);
  EXPECT_THAT(found, ElementsAre(0x9, 0xA, 0xB, 0xC, 0xD, 0x20, 0x85, 0xA0, 0x1680, 0x2000, 0x2001,
                                 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, 0x2008, 0x2009,
                                 0x200A, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000));
}

TEST(Whitespace, TheFirstScalarDecides) {
  EXPECT_TRUE(isWhitespace("\r\n"));
  EXPECT_TRUE(isWhitespace(" \u0301"));
  EXPECT_TRUE(isWhitespace(u"\u3000"));
  EXPECT_FALSE(isWhitespace("\u200B"));
  EXPECT_FALSE(isWhitespace("\xA0")); // a stray byte, not U+00A0
  EXPECT_FALSE(isWhitespace(""));
  EXPECT_FALSE(isWhitespace(u""));
}

TEST(Newline, IsWhatUnicodeCallsALineBreak) {
  for (const char* newline : {"\n", "\v", "\f", "\r", "\r\n", "\u0085", "\u2028", "\u2029"})
    EXPECT_TRUE(isNewline(newline)) << testing::PrintToString(newline);
  for (const char* other : {"", " ", "\t", "\u00A0", "n"})
    EXPECT_FALSE(isNewline(other)) << testing::PrintToString(other);
}

// ICU's break iterator over the whole text, as the model of ours, which asks it only where pairs
// don't settle.
class ICUModel {
public:
  ICUModel() : iterator_(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status_)) {}
  ~ICUModel() { ubrk_close(iterator_); }
  ICUModel(const ICUModel&) = delete;
  ICUModel& operator=(const ICUModel&) = delete;

  std::vector<std::int64_t> boundariesOf(std::u16string_view text) {
    ubrk_setText(iterator_, text.data(), static_cast<std::int32_t>(text.size()), &status_);
    EXPECT_TRUE(U_SUCCESS(status_));
    std::vector<std::int64_t> boundaries;
    for (std::int32_t at = ubrk_first(iterator_); at != UBRK_DONE; at = ubrk_next(iterator_))
      boundaries.push_back(at);
    return boundaries;
  }

private:
  UErrorCode status_ = U_ZERO_ERROR;
  UBreakIterator* iterator_;
};

void append(std::u16string& text, char32_t scalar) {
  if (scalar > 0xFFFF) {
    text.push_back(static_cast<char16_t>(0xD7C0 + (scalar >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 + (scalar & 0x3FF)));
  } else {
    text.push_back(static_cast<char16_t>(scalar));
  }
}

std::vector<std::int64_t> boundariesOf(std::u16string_view text) {
  std::vector<std::int64_t> boundaries = {0};
  while (boundaries.back() < std::ssize(text))
    boundaries.push_back(nextCharacterBoundary(text, boundaries.back()));
  return boundaries;
}

// In front of each scalar of the two planes in use: a conjunct's beginning, a joined emoji's, a
// letter with its mark, and the scalar itself.
TEST(Characters, EveryScalarJoinsWhatICUJoinsItTo) {
  ICUModel model;
  for (char32_t scalar = 0x80; scalar < 0x20000; ++scalar) {
    std::u16string text = u"\u0915\u094D";
    append(text, scalar);
    text += u"👩\u200D";
    append(text, scalar);
    text += u"a\u0301";
    append(text, scalar);
    append(text, scalar);
    ASSERT_EQ(boundariesOf(text), model.boundariesOf(text)) << static_cast<unsigned>(scalar);
  }
}

TEST(Characters, RandomTextsAreBrokenAsICUBreaksThem) {
  // One or more scalars of every kind that the rules of Unicode tell apart, and lone surrogates.
  const std::vector<char32_t> scalars = {
      U'a',    U'1',    U' ',    U'\r',  U'\n',   U'\t',  0x0,    0x301,  0x200D, 0xFE0F,
      0x1F1E6, 0x1F1E9, 0x1F468, 0x2764, 0x1F3FD, 0xA9,   0x1112, 0x1161, 0x11AB, 0xAC00,
      0xAC01,  0x0915,  0x0937,  0x094D, 0x093C,  0x0903, 0x0600, 0x0E33, 0xD800, 0xDC00,
      0x200B,  0x2028,  0xE0020, 0x0D4E, 0x0BBF,  0x0CB0, 0x0CCD, 0x1100, 0xE9,   0x4E2D};
  ICUModel model;
  std::mt19937 random(20240607);
  std::uniform_int_distribution<std::size_t> pick(0, scalars.size() - 1);
  for (int step = 0; step < 20'000; ++step) {
    std::u16string text;
    const int length = step % 9;
    for (int count = 0; count < length; ++count)
      append(text, scalars[pick(random)]);
    SCOPED_TRACE(testing::Message() << "step " << step << ": " << testing::PrintToString(text));
    const std::vector<std::int64_t> expected = model.boundariesOf(text);
    ASSERT_EQ(boundariesOf(text), expected);
    std::vector<std::int64_t> backwards = {std::ssize(text)};
    while (backwards.front() > 0)
      backwards.insert(backwards.begin(), previousCharacterBoundary(text, backwards.front()));
    ASSERT_EQ(backwards, expected);
    std::vector<std::int64_t> byQuestion;
    for (std::int64_t index = 0; index <= std::ssize(text); ++index)
      if (isCharacterBoundary(text, index))
        byQuestion.push_back(index);
    ASSERT_EQ(byQuestion, expected);

    // The same characters in UTF-8, where surrogates can't stand.
    if (const auto utf8 = utf8FromUTF16(text)) {
      std::vector<std::int64_t> viaUTF8 = {0};
      for (std::string_view character : CharacterView(*utf8))
        viaUTF8.push_back(viaUTF8.back() + std::ssize(utf16FromUTF8(character).value_or(u"")));
      ASSERT_EQ(viaUTF8, expected);
    }
  }
}

TEST(CharactersDeathTest, AnIndexOutsideTheTextStopsTheProcess) {
  const std::string_view text = "abc";
  EXPECT_DEATH((void)nextCharacterBoundary(text, 3), "outside the text");
  EXPECT_DEATH((void)nextCharacterBoundary(text, -1), "outside the text");
  EXPECT_DEATH((void)previousCharacterBoundary(text, 0), "outside the text");
  EXPECT_DEATH((void)previousCharacterBoundary(text, 4), "outside the text");
  EXPECT_DEATH((void)isCharacterBoundary(text, 4), "outside the text");
  EXPECT_DEATH((void)*CharacterView(text).end(), "has no character");
}

} // namespace
} // namespace velmar
