#include "VelmarPlatform/Unicode/UTF.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {
namespace {

using namespace std::string_literals;

const std::string fffd = "\xEF\xBF\xBD";

struct RepairCase {
  const char* name;
  std::string bytes;
  std::string repaired;
  std::size_t repairs;
};

void PrintTo(const RepairCase& row, std::ostream* stream) {
  *stream << row.name;
}

class UTF8Repair : public testing::TestWithParam<RepairCase> {};

TEST_P(UTF8Repair, ReplacesEachBadPart) {
  const auto& [name, bytes, repaired, repairs] = GetParam();
  EXPECT_EQ(repairedUTF8(bytes), repaired);
  std::size_t counted = 99;
  EXPECT_EQ(utf8RepairingUTF16(utf16RepairingUTF8(bytes, &counted)), repaired);
  EXPECT_EQ(counted, repairs);
  EXPECT_EQ(isValidUTF8(bytes), repairs == 0);
  EXPECT_EQ(utf16FromUTF8(bytes).has_value(), repairs == 0);
}

TEST_P(UTF8Repair, IsTheSameInsideLongASCII) {
  const auto& [name, bytes, repaired, repairs] = GetParam();
  for (std::size_t before = 0; before < 17; ++before) {
    const std::string head(before, 'a');
    EXPECT_EQ(repairedUTF8(head + bytes + "0123456789"), head + repaired + "0123456789");
    EXPECT_EQ(isValidUTF8(head + bytes + "0123456789"), repairs == 0);
  }
}

// The number of replacements is that of the maximal bad parts, as Unicode's chapter on conformance
// cuts them.
INSTANTIATE_TEST_SUITE_P(
    Valid, UTF8Repair,
    testing::Values(RepairCase{"Empty", "", "", 0}, RepairCase{"NUL", "\0"s, "\0"s, 0},
                    RepairCase{"LastOfOneByte", "\x7F", "\x7F", 0},
                    RepairCase{"FirstOfTwo", "\xC2\x80", "\xC2\x80", 0},
                    RepairCase{"LastOfTwo", "\xDF\xBF", "\xDF\xBF", 0},
                    RepairCase{"FirstOfThree", "\xE0\xA0\x80", "\xE0\xA0\x80", 0},
                    RepairCase{"LastBeforeSurrogates", "\xED\x9F\xBF", "\xED\x9F\xBF", 0},
                    RepairCase{"FirstBehindSurrogates", "\xEE\x80\x80", "\xEE\x80\x80", 0},
                    RepairCase{"LastOfThree", "\xEF\xBF\xBF", "\xEF\xBF\xBF", 0},
                    RepairCase{"FirstOfFour", "\xF0\x90\x80\x80", "\xF0\x90\x80\x80", 0},
                    RepairCase{"LastOfAll", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF", 0}),
    [](const auto& row) { return std::string(row.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Bad, UTF8Repair,
    testing::Values(RepairCase{"StrayContinuation", "\x80", fffd, 1},
                    RepairCase{"TwoStrays", "\xBF\x80", fffd + fffd, 2},
                    RepairCase{"LeadAlone", "\xC3", fffd, 1},
                    RepairCase{"LeadThenASCII", "\xC3 ", fffd + " ", 1},
                    RepairCase{"LeadThenLead", "\xC3\xC3\xA9", fffd + "é", 1},
                    RepairCase{"TwoOfThree", "\xE2\x82", fffd, 1},
                    RepairCase{"TwoOfThreeThenASCII", "\xE2\x82x", fffd + "x", 1},
                    RepairCase{"ThreeOfFour", "\xF0\x9F\x98", fffd, 1},
                    RepairCase{"OverlongTwo", "\xC0\xAF", fffd + fffd, 2},
                    RepairCase{"OverlongTwoHigh", "\xC1\xBF", fffd + fffd, 2},
                    RepairCase{"OverlongThree", "\xE0\x9F\xBF", fffd + fffd + fffd, 3},
                    RepairCase{"OverlongFour", "\xF0\x8F\xBF\xBF", fffd + fffd + fffd + fffd, 4},
                    RepairCase{"FirstSurrogate", "\xED\xA0\x80", fffd + fffd + fffd, 3},
                    RepairCase{"LastSurrogate", "\xED\xBF\xBF", fffd + fffd + fffd, 3},
                    RepairCase{"AboveTheLast", "\xF4\x90\x80\x80", fffd + fffd + fffd + fffd, 4},
                    RepairCase{"LeadOfFiveBytes", "\xF8\x88\x80\x80\x80",
                               fffd + fffd + fffd + fffd + fffd, 5},
                    RepairCase{"NeverALead", "\xFE\xFF", fffd + fffd, 2},
                    RepairCase{"TheStandardsExample",
                               "a\xF1\x80\x80\xE1\x80\xC2"
                               "b\x80"
                               "c\x80\xBF"
                               "d",
                               "a" + fffd + fffd + fffd + "b" + fffd + "c" + fffd + fffd + "d", 6}),
    [](const auto& row) { return std::string(row.param.name); });

struct UTF16Case {
  const char* name;
  std::u16string units;
  std::string repaired;
  bool isValid;
};

void PrintTo(const UTF16Case& row, std::ostream* stream) {
  *stream << row.name;
}

class UTF16Repair : public testing::TestWithParam<UTF16Case> {};

TEST_P(UTF16Repair, ReplacesEachLoneSurrogate) {
  const auto& [name, units, repaired, isValid] = GetParam();
  EXPECT_EQ(utf8RepairingUTF16(units), repaired);
  EXPECT_EQ(isValidUTF16(units), isValid);
  EXPECT_EQ(utf8FromUTF16(units), isValid ? std::optional(repaired) : std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, UTF16Repair,
    testing::Values(UTF16Case{"Empty", u"", "", true}, UTF16Case{"Mixed", u"aé€😀", "aé€😀", true},
                    UTF16Case{"FirstPair", {0xD800, 0xDC00}, "\xF0\x90\x80\x80", true},
                    UTF16Case{"LastPair", {0xDBFF, 0xDFFF}, "\xF4\x8F\xBF\xBF", true},
                    UTF16Case{"LeadAtTheEnd", {u'a', 0xD83D}, "a" + fffd, false},
                    UTF16Case{"LeadBeforeALetter", {0xD83D, u'a'}, fffd + "a", false},
                    UTF16Case{"Trail", {0xDE00}, fffd, false},
                    UTF16Case{"TwoLeads", {0xD83D, 0xD83D, 0xDE00}, fffd + "😀", false},
                    UTF16Case{"WrongWayRound", {0xDE00, 0xD83D}, fffd + fffd, false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(UTF8FromScalar, OfWhatIsNoScalarIsTheReplacement) {
  EXPECT_EQ(utf8FromScalar(U'a'), "a");
  EXPECT_EQ(utf8FromScalar(0x7FF), "\xDF\xBF");
  EXPECT_EQ(utf8FromScalar(0x10FFFF), "\xF4\x8F\xBF\xBF");
  EXPECT_EQ(utf8FromScalar(0xD800), fffd);
  EXPECT_EQ(utf8FromScalar(0xDFFF), fffd);
  EXPECT_EQ(utf8FromScalar(0x110000), fffd);
}

TEST(UTF, EveryScalarSurvivesBothWays) {
  for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
    if (scalar == 0xD800)
      scalar = 0xE000;
    const std::string utf8 = utf8FromScalar(scalar);
    const DecodedScalar fromUTF8 = decodeUTF8(utf8, 0);
    ASSERT_TRUE(fromUTF8.valid && fromUTF8.scalar == scalar && fromUTF8.length == utf8.size())
        << static_cast<unsigned>(scalar);
    const auto utf16 = utf16FromUTF8(utf8);
    ASSERT_TRUE(utf16) << static_cast<unsigned>(scalar);
    const DecodedScalar fromUTF16 = decodeUTF16(*utf16, 0);
    ASSERT_TRUE(fromUTF16.valid && fromUTF16.scalar == scalar && fromUTF16.length == utf16->size())
        << static_cast<unsigned>(scalar);
    ASSERT_EQ(utf8FromUTF16(*utf16), utf8) << static_cast<unsigned>(scalar);
  }
}

// The model: a list of all well-formed byte patterns, one row for each line of Unicode's table,
// tried at every place. A bad part is the longest start of a row that stands there, at least one
// byte.
struct Pattern {
  std::vector<std::pair<unsigned, unsigned>> bytes;
};

const std::vector<Pattern> wellFormed = {
    {{{0x00, 0x7F}}},
    {{{0xC2, 0xDF}, {0x80, 0xBF}}},
    {{{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}}},
    {{{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {{{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}}},
    {{{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {{{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {{{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {{{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}}}};

std::string repairedByTheTable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    std::size_t longest = 1;
    bool isWhole = false;
    for (const Pattern& pattern : wellFormed) {
      std::size_t length = 0;
      while (length < pattern.bytes.size() && length < text.size()) {
        const unsigned byte = static_cast<unsigned char>(text[length]);
        if (byte < pattern.bytes[length].first || byte > pattern.bytes[length].second)
          break;
        ++length;
      }
      isWhole = isWhole || length == pattern.bytes.size();
      longest = std::max(longest, length);
    }
    result += isWhole ? std::string(text.substr(0, longest)) : fffd;
    text.remove_prefix(longest);
  }
  return result;
}

TEST(UTF, RandomBytesAreRepairedByTheTable) {
  const std::string likely =
      "a\x80\x8F\x90\x9F\xA0\xBF\xC0\xC2\xDF\xE0\xE1\xED\xEE\xF0\xF1\xF4\xF5\xFF";
  std::mt19937 random(5);
  for (int step = 0; step < 50'000; ++step) {
    std::string text;
    for (int count = step % 13; count > 0; --count)
      text.push_back(likely[random() % likely.size()]);
    const std::string expected = repairedByTheTable(text);
    SCOPED_TRACE(testing::PrintToString(text));
    ASSERT_EQ(repairedUTF8(text), expected);
    ASSERT_EQ(isValidUTF8(text), expected == text);
    ASSERT_EQ(utf8FromUTF16(utf16RepairingUTF8(text)), expected);
  }
}

TEST(UTF, RandomScalarsMakeTheRoundTrip) {
  std::mt19937 random(6);
  const std::vector<char32_t> limits = {0x80, 0x800, 0xD800, 0x10000, 0x110000};
  for (int step = 0; step < 2'000; ++step) {
    std::string text;
    std::size_t units = 0;
    for (int count = step % 100; count > 0; --count) {
      const char32_t scalar = random() % limits[random() % limits.size()];
      if (scalar >= 0xD800 && scalar < 0xE000)
        continue;
      appendUTF8(text, scalar);
      units += scalar < 0x10000 ? 1 : 2;
    }
    const auto utf16 = utf16FromUTF8(text);
    ASSERT_TRUE(utf16);
    ASSERT_EQ(utf16->size(), units);
    ASSERT_EQ(utf8FromUTF16(*utf16), text);
  }
}

} // namespace
} // namespace velmar
