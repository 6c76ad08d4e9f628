#include "VelmarCore/Text/TranscodedText.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>
#include <vector>

namespace velmar {

namespace {

TEST(TranscodedText, OffsetsGoBothWays) {
  const std::vector<std::string> pieces = {"a", "b", "é", "日", "😀"};
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    // The model: the offsets of each character, noted while the text is put together.
    std::string text;
    std::vector<std::pair<std::int64_t, std::int64_t>> starts; // byte, unit
    std::int64_t unit = 0;
    for (std::size_t count = random() % 300; count > 0; --count) {
      const std::string& piece = pieces[random() % (round % 4 == 0 ? 2 : pieces.size())];
      starts.emplace_back(text.size(), unit);
      text += piece;
      unit += piece.size() == 4 ? 2 : 1;
    }
    starts.emplace_back(text.size(), unit);

    const TranscodedText transcoded(text);
    ASSERT_EQ(transcoded.units(), utf16FromUTF8(text));
    for (std::size_t i = 0; i < starts.size(); ++i) {
      const auto [byteStart, unitStart] = starts[i];
      ASSERT_EQ(transcoded.byteOffset(unitStart), byteStart);
      ASSERT_EQ(transcoded.unitOffset(byteStart), unitStart);
      if (i + 1 < starts.size() && starts[i + 1].second == unitStart + 2) {
        ASSERT_EQ(transcoded.byteOffset(unitStart + 1), std::nullopt);
        ASSERT_EQ(transcoded.unitOffset(byteStart + 1), unitStart + 2);
      }
    }
  }
}

TEST(TranscodedText, BytesThatAreNotUTF8AreReplaced) {
  const std::string text = "a\xFF\xE2\x82z";
  const TranscodedText transcoded(text);
  EXPECT_EQ(transcoded.units(), u"a\uFFFD\uFFFDz");
  EXPECT_EQ(transcoded.byteOffset(3), 4);
  EXPECT_EQ(transcoded.unitOffset(4), 3);
}

} // namespace

} // namespace velmar
