#include "VelmarCore/Text/LineEnding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace velmar {
namespace {

TEST(LineEnding, HasItsCharactersAndItsName) {
  EXPECT_EQ(string(LineEnding::lf), "\n");
  EXPECT_EQ(string(LineEnding::cr), "\r");
  EXPECT_EQ(string(LineEnding::crlf), "\r\n");
  EXPECT_EQ(displayName(LineEnding::lf), "LF");
  EXPECT_EQ(displayName(LineEnding::cr), "CR");
  EXPECT_EQ(displayName(LineEnding::crlf), "CRLF");
}

TEST(LineEnding, OnlyThreeRawValuesAreKnown) {
  EXPECT_EQ(lineEndingFromRawValue(0), LineEnding::lf);
  EXPECT_EQ(lineEndingFromRawValue(1), LineEnding::cr);
  EXPECT_EQ(lineEndingFromRawValue(2), LineEnding::crlf);
  EXPECT_EQ(lineEndingFromRawValue(3), std::nullopt);
  EXPECT_EQ(lineEndingFromRawValue(-1), std::nullopt);
}

struct FindCase {
  const char* name;
  std::string text;
  std::int64_t index;
  std::optional<FoundLineEnding> expected;
};

void PrintTo(const FindCase& row, std::ostream* stream) {
  *stream << row.name;
}

class LineEndingAt : public testing::TestWithParam<FindCase> {};

// All the texts are ASCII, so one index serves every encoding.
TEST_P(LineEndingAt, IsTheSameInEveryEncoding) {
  const auto& [name, text, index, expected] = GetParam();
  EXPECT_EQ(lineEndingAt(text, index), expected);
  EXPECT_EQ(lineEndingAt(std::u16string(text.begin(), text.end()), index), expected);
  EXPECT_EQ(lineEndingAt(std::u32string(text.begin(), text.end()), index), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LineEndingAt,
    testing::Values(FindCase{"EmptyText", "", 0, std::nullopt},
                    FindCase{"BehindTheEnd", "\n", 1, std::nullopt},
                    FindCase{"FarBehindTheEnd", "\n", 100, std::nullopt},
                    FindCase{"ALetter", "a\n", 0, std::nullopt},
                    FindCase{"LFAlone", "\n", 0, FoundLineEnding{LineEnding::lf, {0, 1}}},
                    FindCase{"LFAfterALetter", "a\nb", 1, FoundLineEnding{LineEnding::lf, {1, 2}}},
                    FindCase{"CRAtTheEnd", "\r", 0, FoundLineEnding{LineEnding::cr, {0, 1}}},
                    FindCase{"CRBeforeALetter", "\ra", 0, FoundLineEnding{LineEnding::cr, {0, 1}}},
                    FindCase{"TheCROfAPair", "a\r\n", 1, FoundLineEnding{LineEnding::crlf, {1, 3}}},
                    FindCase{"TheLFOfAPair", "a\r\n", 2, FoundLineEnding{LineEnding::crlf, {1, 3}}},
                    FindCase{"CRBeforeAPair", "\r\r\n", 0, FoundLineEnding{LineEnding::cr, {0, 1}}},
                    FindCase{"LFBehindAPair", "\r\n\n", 2, FoundLineEnding{LineEnding::lf, {2, 3}}},
                    FindCase{"LFThenCR", "\n\r", 1, FoundLineEnding{LineEnding::cr, {1, 2}}},
                    FindCase{"VerticalTabIsNone", "\v", 0, std::nullopt}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(LineEnding, OtherUnicodeLineBreaksEndNoLine) {
  EXPECT_EQ(lineEndingAt(u"\u2028", 0), std::nullopt);
  EXPECT_EQ(lineEndingAt(U"\u0085", 0), std::nullopt);
  // Units whose low byte looks like LF.
  EXPECT_EQ(lineEndingAt(u"\u010A", 0), std::nullopt);
  EXPECT_EQ(lineEndingAt(U"\U0001000A", 0), std::nullopt);
}

// The model cuts the whole text from the left: a CR takes the LF behind it along.
TEST(LineEnding, EveryUnitOfARandomTextAgreesWithACutFromTheLeft) {
  std::mt19937 random(7);
  for (int step = 0; step < 2'000; ++step) {
    std::u16string text;
    for (int count = step % 12; count > 0; --count)
      text.push_back(u"a\r\n"[random() % 3]);
    std::vector<std::optional<FoundLineEnding>> expected;
    while (std::ssize(expected) < std::ssize(text)) {
      const auto at = std::ssize(expected);
      const std::u16string_view rest = std::u16string_view(text).substr(expected.size());
      if (rest.starts_with(u"\r\n"))
        expected.insert(expected.end(), 2, FoundLineEnding{LineEnding::crlf, {at, at + 2}});
      else if (rest.starts_with(u'\n'))
        expected.push_back(FoundLineEnding{LineEnding::lf, {at, at + 1}});
      else if (rest.starts_with(u'\r'))
        expected.push_back(FoundLineEnding{LineEnding::cr, {at, at + 1}});
      else
        expected.push_back(std::nullopt);
    }
    SCOPED_TRACE(testing::PrintToString(text));
    for (std::int64_t index = 0; index < std::ssize(text); ++index)
      ASSERT_EQ(lineEndingAt(text, index), expected[static_cast<std::size_t>(index)]) << index;
  }
}

TEST(LineEndingDeathTest, ANegativeIndexStopsTheProcess) {
  EXPECT_DEATH((void)lineEndingAt("a", -1), "in front of the text");
}

} // namespace
} // namespace velmar
