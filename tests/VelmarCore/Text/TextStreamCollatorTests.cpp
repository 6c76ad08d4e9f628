#include "VelmarCore/Text/TextStreamCollator.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

namespace velmar {
namespace {

using enum TextStreamCollator::Delivery;

TEST(TextStreamCollator, KeepsAnUnfinishedLineUntilItEnds) {
  TextStreamCollator collator;
  EXPECT_EQ(collator.append("ab"), std::nullopt);
  EXPECT_EQ(collator.append("c\nd"), "abc\n");
  EXPECT_EQ(charactersOf(collator.buffer()), "d");
  EXPECT_EQ(collator.flush(), "d");
  EXPECT_EQ(collator.flush(), std::nullopt);
}

TEST(TextStreamCollator, DeliversAllCompleteLinesAtOnce) {
  TextStreamCollator collator;
  EXPECT_EQ(collator.append("a\n\nb\r\nc"), "a\n\nb\r\n");
  EXPECT_EQ(collator.append("\n"), "c\n");
  EXPECT_TRUE(collator.buffer().empty());
}

TEST(TextStreamCollator, ACarriageReturnAloneEndsNoDelivery) {
  TextStreamCollator collator;
  EXPECT_EQ(collator.append("10 %\r20 %"), std::nullopt);
  EXPECT_EQ(collator.append("\r", everything), "10 %\r20 %\r");
}

TEST(TextStreamCollator, AskedForEverythingItDeliversTheRestToo) {
  TextStreamCollator collator;
  EXPECT_EQ(collator.append("", everything), std::nullopt);
  EXPECT_EQ(collator.append("a\nb"), "a\n");
  EXPECT_EQ(collator.append("c\nd", everything), "bc\nd");
  EXPECT_EQ(collator.append("", everything), std::nullopt);
}

TEST(TextStreamCollator, ACharacterInTwoPiecesStaysWhole) {
  TextStreamCollator collator;
  EXPECT_EQ(collator.append("x\n\xE2\x82"), "x\n");
  EXPECT_EQ(collator.append("\xAC\n"), "€\n");
}

TEST(TextStreamCollator, WhatIsNoUTF8IsRepaired) {
  TextStreamCollator collator;
  EXPECT_EQ(collator.append("\xFF\n"), "\uFFFD\n");
  EXPECT_EQ(collator.append("a\xE2\x82", everything), "a\uFFFD");
  // The bytes that come later are no part of a character any more.
  EXPECT_EQ(collator.append("\xAC", everything), "\uFFFD");
}

TEST(TextStreamCollator, ANULIsAByteLikeAnyOther) {
  TextStreamCollator collator;
  const std::string text("a\0b\n", 4);
  EXPECT_EQ(collator.append(bytesOf(text)), text);
}

// However a stream is cut, without a barrier its deliveries are the repaired stream, in order, cut
// at line ends.
TEST(TextStreamCollator, AnyCutOfAStreamDeliversTheSameText) {
  const std::string alphabet = "ab\n\r\xC3\xA9\xE2\x82\xAC\xFF";
  std::mt19937 random(11);
  for (int step = 0; step < 2'000; ++step) {
    std::string stream;
    for (int count = step % 60; count > 0; --count)
      stream.push_back(alphabet[random() % alphabet.size()]);
    SCOPED_TRACE(testing::PrintToString(stream));
    TextStreamCollator collator;
    std::string delivered;
    for (std::size_t at = 0; at < stream.size();) {
      const std::size_t length = 1 + random() % 9;
      if (const auto lines = collator.append(stream.substr(at, length))) {
        ASSERT_TRUE(lines->ends_with('\n'));
        delivered += *lines;
      }
      at += length;
      const std::size_t lineFeed = std::string_view(stream).substr(0, at).rfind('\n');
      ASSERT_EQ(delivered, repairedUTF8(stream.substr(0, lineFeed + 1)));
    }
    delivered += collator.flush().value_or("");
    ASSERT_EQ(delivered, repairedUTF8(stream));
  }
}

} // namespace
} // namespace velmar
