#include "VelmarCore/Text/UnicodeScalar.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace velmar {
namespace {

using Found = std::optional<FoundUnicodeScalar>;

TEST(UnicodeScalarAt, EitherHalfOfAPairGivesThePair) {
  const std::u16string text = u"a😀b";
  EXPECT_EQ(unicodeScalarAt(text, 0), (Found{{U'a', {0, 1}}}));
  EXPECT_EQ(unicodeScalarAt(text, 1), (Found{{U'😀', {1, 3}}}));
  EXPECT_EQ(unicodeScalarAt(text, 2), (Found{{U'😀', {1, 3}}}));
  EXPECT_EQ(unicodeScalarAt(text, 3), (Found{{U'b', {3, 4}}}));
}

TEST(UnicodeScalarAt, ALoneSurrogateIsNoScalar) {
  const std::u16string leadAtTheEnd = {u'a', 0xD83D};
  EXPECT_EQ(unicodeScalarAt(leadAtTheEnd, 1), std::nullopt);
  const std::u16string trailAtTheStart = {0xDE00, u'a'};
  EXPECT_EQ(unicodeScalarAt(trailAtTheStart, 0), std::nullopt);
  const std::u16string twoLeads = {0xD83D, 0xD83D, 0xDE00};
  EXPECT_EQ(unicodeScalarAt(twoLeads, 0), std::nullopt);
  EXPECT_EQ(unicodeScalarAt(twoLeads, 1), (Found{{U'😀', {1, 3}}}));
  const std::u16string twoTrails = {0xD83D, 0xDE00, 0xDE00};
  EXPECT_EQ(unicodeScalarAt(twoTrails, 2), std::nullopt);
  const std::u16string leadBeforeALetter = {0xD83D, u'a'};
  EXPECT_EQ(unicodeScalarAt(leadBeforeALetter, 0), std::nullopt);
}

TEST(UnicodeScalarOfPair, IsWorkedOutFromBothHalves) {
  EXPECT_EQ(unicodeScalar(0xD800, 0xDC00), U'\U00010000');
  EXPECT_EQ(unicodeScalar(0xD83D, 0xDE00), U'\U0001F600');
  EXPECT_EQ(unicodeScalar(0xDBFF, 0xDFFF), U'\U0010FFFF');
  EXPECT_EQ(unicodeScalar(0xDC00, 0xDC00), std::nullopt); // 0x110000
}

TEST(UnicodeScalarDeathTest, MisuseStopsTheProcess) {
  EXPECT_DEATH((void)unicodeScalarAt(u"a", 1), "outside the text");
  EXPECT_DEATH((void)unicodeScalarAt(u"a", -1), "outside the text");
  EXPECT_DEATH((void)unicodeScalar(u'a', 0xDC00), "surrogates");
  EXPECT_DEATH((void)unicodeScalar(0xD800, 0xDBFF), "surrogates");
}

} // namespace
} // namespace velmar
