#include "host/PatternText.h"

#include <gmock/gmock.h>

namespace velmar::host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(PatternText, PredicatesStandInTheirOrder) {
  EXPECT_THAT(predicatesIn("((identifier) @a (#eq? @a \"x\") (#set! \"priority\" \"1\"))"),
              ElementsAre("(#eq? @a \"x\")", "(#set! \"priority\" \"1\")"));
}

TEST(PatternText, StringsAreLeftAsTheyAre) {
  EXPECT_THAT(predicatesIn(R"(("(#" @a (#match? @a "^\\)  \"(#;")))"),
              ElementsAre(R"((#match? @a "^\\)  \"(#;"))"));
}

TEST(PatternText, BlanksAndCommentsOutsideStringsShrink) {
  EXPECT_THAT(predicatesIn("((a) @b\n  (#eq? @b ; (#not-this)\n     \"c\"\n  ))"),
              ElementsAre("(#eq? @b \"c\" )"));
}

TEST(PatternText, WhatIsCutOffGivesNone) {
  EXPECT_THAT(predicatesIn("(a) @b"), IsEmpty());
  EXPECT_THAT(predicatesIn("((a) (#eq? @b \"c"), IsEmpty());
  EXPECT_THAT(predicatesIn(""), IsEmpty());
}

} // namespace
} // namespace velmar::host
