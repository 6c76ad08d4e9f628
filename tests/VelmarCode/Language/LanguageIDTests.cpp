#include "VelmarCode/Language/LanguageID.h"

#include "VelmarCode/Language/LanguageCategory.h"

#include <gtest/gtest.h>

#include <unordered_map>

namespace velmar {

namespace {

TEST(LanguageID, UnknownLanguagesCompareAndHashByTheirText) {
  std::unordered_map<LanguageID, int> servers;
  servers[LanguageID("zig")] = 1;
  servers[LanguageID::python] = 2;
  EXPECT_EQ(servers.at(LanguageID("zig")), 1);
  EXPECT_EQ(servers.at(LanguageID("python")), 2);
  EXPECT_NE(LanguageID("zig"), LanguageID("Zig"));
  EXPECT_LT(LanguageID("a"), LanguageID("b"));
}

TEST(LanguageCategory, NamesGoBothWays) {
  for (const LanguageCategory category : allLanguageCategories)
    EXPECT_EQ(languageCategoryNamed(descriptionOf(category)), category);
  EXPECT_EQ(descriptionOf(LanguageCategory::stylesheet), "stylesheet");
  EXPECT_EQ(languageCategoryNamed("Markup"), std::nullopt);
}

} // namespace

} // namespace velmar
