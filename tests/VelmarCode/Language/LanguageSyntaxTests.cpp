#include "VelmarCode/Language/LanguageSyntax.h"

#include <gtest/gtest.h>

namespace velmar {

namespace {

TEST(BracketPair, TakesTheFirstScalarsOfTexts) {
  EXPECT_EQ(BracketPair::fromStrings("<<", ">>"), (BracketPair{U'<', U'>'}));
  EXPECT_EQ(BracketPair::fromStrings("«", "»"), (BracketPair{U'«', U'»'}));
  EXPECT_EQ(BracketPair::fromStrings("😀x", "a\u0301"), (BracketPair{U'😀', U'a'}));
  EXPECT_EQ(BracketPair::fromStrings("", ">"), std::nullopt);
  EXPECT_EQ(BracketPair::fromStrings("<", ""), std::nullopt);
}

TEST(BracketPair, DescriptionIsTheTwoSideBySide) {
  EXPECT_EQ((BracketPair{U'(', U')'}).description(), "()");
  EXPECT_EQ((BracketPair{U'«', U'»'}).description(), "«»");
}

TEST(LanguageSyntax, IsComparedByItsFacts) {
  const LanguageSyntax syntax = {
      .comments = {.single = "//", .multiline = LanguageSyntax::Comments::Multiline{"/*", "*/"}},
      .bookmarks = LanguageSyntax::Bookmarks{RegularExpression("MARK: (.*)"), 1},
      .identifiers = {.characters = "$"},
      .brackets = {.pairs = {{U'(', U')'}}}};
  LanguageSyntax other = syntax;
  EXPECT_EQ(other, syntax);
  other.bookmarks->regex = RegularExpression("MARK: (.*)");
  EXPECT_EQ(other, syntax);
  other.bookmarks->regex = RegularExpression("TODO: (.*)");
  EXPECT_NE(other, syntax);
}

} // namespace

} // namespace velmar
