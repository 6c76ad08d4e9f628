#include "VelmarPlatform/Unicode/CaseMapping.h"

#include <gtest/gtest.h>

namespace velmar {

namespace {

TEST(CaseMapping, FollowsUnicodesFullRules) {
  EXPECT_EQ(uppercased(u"größe 7 ǆ ﬁ"), u"GRÖSSE 7 Ǆ FI");
  EXPECT_EQ(lowercased(u"GRÖSSE 7 Ǆ"), u"grösse 7 ǆ");
  EXPECT_EQ(lowercased(u"ΟΔΟΣ"), u"οδος"); // the last sigma has a form of its own
  EXPECT_EQ(lowercased(u"\u0130"), u"i\u0307");
  EXPECT_EQ(uppercased(u"i"), u"I");
}

TEST(CaseMapping, TakesWhatIsNoScalar) {
  EXPECT_EQ(uppercased(u""), u"");
  const char16_t text[] = {u'a', 0xD800, u'b', 0xDC00, 0};
  const char16_t upper[] = {u'A', 0xD800, u'B', 0xDC00, 0};
  EXPECT_EQ(uppercased(text), upper);
  EXPECT_EQ(uppercased(u"𐐨"), u"𐐀");
}

} // namespace

} // namespace velmar
