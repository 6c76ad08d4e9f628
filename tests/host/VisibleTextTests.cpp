#include "host/VisibleText.h"

#include <gtest/gtest.h>

namespace velmar::host {
namespace {

/// Stand-ins in braces.
std::string shown(VisibleText& visible, std::u16string_view units) {
  std::string text;
  for (const auto& piece : visible.next(units))
    text += piece.isStandIn ? "{" + piece.text + "}" : piece.text;
  return text;
}

struct VisibleCase {
  const char* name;
  std::u16string_view units;
  std::string text;
  std::int64_t columns;
};
class VisibleTextCase : public ::testing::TestWithParam<VisibleCase> {};
TEST_P(VisibleTextCase, IsSafeAndCounted) {
  VisibleText visible;
  EXPECT_EQ(shown(visible, GetParam().units), GetParam().text);
  EXPECT_EQ(visible.column(), GetParam().columns);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, VisibleTextCase,
    ::testing::Values(VisibleCase{"Plain", u"let a", "let a", 5}, VisibleCase{"Empty", u"", "", 0},
                      VisibleCase{"Escape", u"\x1b[31m", "{␛}[31m", 5},
                      VisibleCase{"ZeroAndDelete", std::u16string_view(u"\0\x7F", 2), "{␀␡}", 2},
                      VisibleCase{"ControlSequenceIntroducer", u"\u009b1m", "{⟨9b⟩}1m", 6},
                      VisibleCase{"TurnsWriting", u"a\u202eb", "a{⟨202e⟩}b", 8},
                      VisibleCase{"Isolate", u"\u2066", "{⟨2066⟩}", 6},
                      VisibleCase{"Invisible", u"a\u200bb", "a{⟨200b⟩}b", 8},
                      VisibleCase{"LineSeparator", u"\u2028", "{⟨2028⟩}", 6},
                      VisibleCase{"LoneSurrogate", u"\xD83D", "{⟨d83d⟩}", 6},
                      VisibleCase{"Wide", u"日本a", "日本a", 5},
                      VisibleCase{"Combining", u"e\u0301x", "e\u0301x", 2},
                      VisibleCase{"CombiningAlone", u"\u0301x", "\u0301x", 1},
                      VisibleCase{"Emoji", u"😀!", "😀!", 3},
                      VisibleCase{"Family", u"👩\u200d👧", "👩\u200d👧", 2},
                      VisibleCase{"Flag", u"🇩🇪", "🇩🇪", 2},
                      VisibleCase{"PictureOfASign", u"\u2764\ufe0f", "\u2764\ufe0f", 2},
                      VisibleCase{"TabAtStart", u"\ta", "    a", 5},
                      VisibleCase{"TabBehindOne", u"a\tb", "a   b", 5},
                      VisibleCase{"TabBehindWide", u"日\tb", "日  b", 5},
                      VisibleCase{"TabAtStop", u"abcd\te", "abcd    e", 9}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(VisibleText, TheColumnGoesOnThroughALineAndStartsOverInTheNext) {
  VisibleText visible;
  EXPECT_EQ(shown(visible, u"ab"), "ab");
  EXPECT_EQ(shown(visible, u"\tc"), "  c");
  visible.startLine();
  EXPECT_EQ(shown(visible, u"\tc"), "    c");
}

TEST(VisibleText, TabsCanStayButCount) {
  VisibleText visible(Tabs::keep);
  EXPECT_EQ(shown(visible, u"a\tb"), "a\tb");
  EXPECT_EQ(visible.column(), 5);
}

} // namespace
} // namespace velmar::host
