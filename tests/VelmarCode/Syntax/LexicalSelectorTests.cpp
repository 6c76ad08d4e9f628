#include "VelmarCode/Syntax/LexicalSelector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace velmar {

namespace {

LexicalSelector selector(std::string_view text) {
  return LexicalSelector::fromString(text).value();
}

struct ReadCase {
  const char* name;
  std::string text;
  std::string string;
  std::int64_t specificity;
  std::optional<LexicalClass> lexicalClass;
};
class LexicalSelectorReads : public testing::TestWithParam<ReadCase> {};

TEST_P(LexicalSelectorReads, NamesInAnyOrder) {
  const auto read = LexicalSelector::fromString(GetParam().text);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->string(), GetParam().string);
  EXPECT_EQ(read->specificity(), GetParam().specificity);
  EXPECT_EQ(read->lexicalClass(), GetParam().lexicalClass);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LexicalSelectorReads,
    testing::Values(
        ReadCase{"OneName", "variable", "variable", 1, std::nullopt},
        ReadCase{"Sorted", "keyword.control", "control.keyword", 2, LexicalClass::keyword},
        ReadCase{"Three", "keyword.control.import", "control.import.keyword", 3,
                 LexicalClass::keyword},
        ReadCase{"UpperCaseSortsFirst", "a.B", "B.a", 2, std::nullopt},
        ReadCase{"Punctuation", "_x.-y", "-y._x", 2, std::nullopt},
        ReadCase{"BlanksAtTheEnds", " \t\u00A0a.b\u3000 ", "a.b", 2, std::nullopt},
        ReadCase{"ANameTwiceCountsOnce", "b.a.b", "a.b.b", 2, std::nullopt},
        ReadCase{"Empty", "", "", 0, std::nullopt},
        ReadCase{"OnlyBlanks", " \t ", "", 0, std::nullopt},
        ReadCase{"Star", " * ", "*", 0, std::nullopt},
        ReadCase{"CommentBeforeString", "string.comment", "comment.string", 2,
                 LexicalClass::comment},
        ReadCase{"KeywordBeforeComment", "comment.keyword", "comment.keyword", 2,
                 LexicalClass::keyword},
        ReadCase{"StringBeforeRegex", "regex.string", "regex.string", 2, LexicalClass::string},
        ReadCase{"Regex", "special.regex", "regex.special", 2, LexicalClass::regex},
        ReadCase{"NoPartOfAName", "keywords", "keywords", 1, std::nullopt}),
    [](const auto& row) { return std::string(row.param.name); });

class LexicalSelectorRefuses : public testing::TestWithParam<const char*> {};

TEST_P(LexicalSelectorRefuses, WhatIsNoSelector) {
  EXPECT_EQ(LexicalSelector::fromString(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Cases, LexicalSelectorRefuses,
                         testing::Values("a..b", ".a", "a.", ".", "**", "a.*", "a b", "h1", "größe",
                                         "a\n", "\na", "a:b", "\x80", "a\xE2\x80", "\xC2"));

TEST(LexicalSelector, TheOrderOfNamesMakesNoDifference) {
  EXPECT_EQ(selector("b.a"), selector("a.b"));
  EXPECT_NE(selector("a.b"), selector("a"));
  EXPECT_NE(selector("a.b"), selector("a-b"));
  EXPECT_EQ(std::hash<LexicalSelector>()(selector("b.a")),
            std::hash<LexicalSelector>()(selector("a.b")));
}

TEST(LexicalSelector, NullAndUniversalHaveNoNames) {
  EXPECT_EQ(selector(""), LexicalSelector::null);
  EXPECT_EQ(selector("*"), LexicalSelector::universal);
  EXPECT_NE(LexicalSelector::null, LexicalSelector::universal);
  EXPECT_TRUE(LexicalSelector::null.components().empty());
  EXPECT_TRUE(LexicalSelector::universal.components().empty());
}

struct MatchCase {
  const char* left;
  const char* right;
  bool matches;
};

TEST(LexicalSelector, MatchesWhatHasAllItsNames) {
  const MatchCase cases[] = {
      {"keyword", "keyword", true},
      {"keyword", "keyword.control", true},
      {"keyword.control", "keyword", false},
      {"control.keyword", "keyword.control.import", true},
      {"keyword.import", "control.import.keyword", true},
      {"a.c", "a.b.d", false},
      {"z", "a.b", false},
      {"keyword", "keywords", false},
      {"*", "a", true},
      {"*", "*", true},
      {"*", "", true},
      {"a", "*", true},
      {"a", "", false},
      {"", "a", false},
      {"", "*", false},
      {"", "", false},
  };
  for (const MatchCase& row : cases)
    EXPECT_EQ(selector(row.left).matches(selector(row.right)), row.matches)
        << row.left << " and " << row.right;
}

TEST(LexicalSelector, MatchesBareNames) {
  const LexicalSelector::ComponentSet names{"a", "b"};
  EXPECT_TRUE(selector("b").matchesComponents(names));
  EXPECT_TRUE(selector("b.a").matchesComponents(names));
  EXPECT_FALSE(selector("a.c").matchesComponents(names));
  EXPECT_FALSE(selector("a").matchesComponents({}));
  EXPECT_TRUE(LexicalSelector::universal.matchesComponents({}));
  EXPECT_FALSE(LexicalSelector::null.matchesComponents(names));

  EXPECT_TRUE(selector("a.b").matchesComponent("b"));
  EXPECT_FALSE(selector("a.b").matchesComponent("c"));
  EXPECT_TRUE(LexicalSelector::universal.matchesComponent("c"));
  EXPECT_FALSE(LexicalSelector::null.matchesComponent("c"));
}

TEST(LexicalSelector, SortsTheMostSpecificLast) {
  std::vector<LexicalSelector> selectors;
  for (const char* text : {"a.b", "c", "*", "a", "", "z.y.x", "a.a"})
    selectors.push_back(selector(text));
  std::ranges::sort(selectors);
  std::vector<std::string> texts;
  for (const LexicalSelector& each : selectors)
    texts.push_back(each.string());
  EXPECT_EQ(texts, (std::vector<std::string>{"", "*", "a", "a.a", "c", "a.b", "x.y.z"}));
}

TEST(LexicalClass, IsKnownByItsText) {
  EXPECT_EQ(LexicalClass("string"), LexicalClass::string);
  EXPECT_EQ(LexicalClass::regex.rawValue(), "regex");
  EXPECT_NE(LexicalClass::keyword, LexicalClass::comment);
  const std::string text = "operator";
  EXPECT_EQ(LexicalClass(text), LexicalClass("operator"));
  EXPECT_NE(LexicalClass(text), LexicalClass("operators"));
  EXPECT_EQ(LexicalClass(text).rawValue(), "operator");
  EXPECT_LT(LexicalClass::comment, LexicalClass::keyword);
}

} // namespace

} // namespace velmar
