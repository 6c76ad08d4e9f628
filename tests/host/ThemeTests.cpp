#include "host/Theme.h"

#include <gtest/gtest.h>

namespace velmar::host {
namespace {

LexicalSelector selector(std::string_view text) {
  return LexicalSelector::fromString(text).value();
}

/// The name of the ink that the theme gives; empty where it gives none.
std::string_view inkOf(std::string_view text) {
  const auto look = Theme::builtIn().lookFor(selector(text));
  return look && look->ink ? Theme::builtIn().inks()[static_cast<std::size_t>(*look->ink)].name
                           : std::string_view();
}

TEST(Theme, TheMostSpecificRuleWins) {
  const Theme theme({}, {{selector("a.b.c"), {.isStruck = true}},
                         {selector("a"), {.isBold = true}},
                         {selector("b.a"), {.isItalic = true}}});
  EXPECT_EQ(theme.lookFor(selector("a")), (Look{.isBold = true}));
  EXPECT_EQ(theme.lookFor(selector("a.x.b")), (Look{.isItalic = true}));
  EXPECT_EQ(theme.lookFor(selector("c.x.b.a")), (Look{.isStruck = true}));
  EXPECT_EQ(theme.lookFor(selector("b.c")), std::nullopt);
}

TEST(Theme, OfTwoEquallySpecificRulesTheLaterWins) {
  const Theme theme({}, {{selector("a"), {.isBold = true}}, {selector("b"), {.isItalic = true}}});
  EXPECT_EQ(theme.lookFor(selector("a.b")), (Look{.isItalic = true}));
}

TEST(Theme, EveryHeadOfThePacksThatIsALookHasARule) {
  for (const char* head : {"attribute",     "character.entity",
                           "comment",       "constant",
                           "function.call", "keyword.control",
                           "label",         "markup.bold",
                           "markup.code",   "markup.heading.level-six",
                           "markup.info",   "markup.link",
                           "markup.list",   "markup.quote",
                           "markup.rule",   "namespace",
                           "number",        "operator",
                           "property",      "punctuation.bracket",
                           "regex",         "selector.universal",
                           "string",        "tag",
                           "type"})
    EXPECT_NE(Theme::builtIn().lookFor(selector(head)), std::nullopt) << head;
}

TEST(Theme, RefinementsDifferFromWhatTheyRefine) {
  EXPECT_EQ(inkOf("string"), "string");
  EXPECT_EQ(inkOf("string.escape"), "escape");
  EXPECT_EQ(inkOf("comment.doc"), "doc");
  EXPECT_EQ(inkOf("variable"), "");
  EXPECT_EQ(inkOf("variable.parameter"), "parameter");
}

TEST(Look, WhatIsBelowShowsThroughWhereItSaysNothing) {
  const Look below{.ink = 3, .isItalic = true};
  EXPECT_EQ((Look{.isBold = true}.over(below)), (Look{.ink = 3, .isBold = true, .isItalic = true}));
  EXPECT_EQ((Look{.ink = 5}.over(below)), (Look{.ink = 5, .isItalic = true}));
}

struct ColorCase {
  const char* name;
  Color color;
  int index;
};
class NearestOf256 : public ::testing::TestWithParam<ColorCase> {};
TEST_P(NearestOf256, IsTheColorOfTheTable) {
  EXPECT_EQ(nearestOf256(GetParam().color), GetParam().index);
}
INSTANTIATE_TEST_SUITE_P(Cases, NearestOf256,
                         ::testing::Values(ColorCase{"Black", {0, 0, 0}, 16},
                                           ColorCase{"White", {255, 255, 255}, 231},
                                           ColorCase{"Red", {255, 0, 0}, 196},
                                           ColorCase{"CubeLevels", {95, 135, 175}, 67},
                                           ColorCase{"DarkestGrey", {9, 8, 8}, 232},
                                           ColorCase{"LightestGrey", {238, 238, 237}, 255},
                                           // 95 is a level of the cube, 98 one of the greys.
                                           ColorCase{"CubeGrey", {95, 95, 95}, 59},
                                           ColorCase{"Grey", {98, 98, 98}, 241}),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar::host
