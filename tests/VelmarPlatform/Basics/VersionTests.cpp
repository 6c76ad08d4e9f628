#include "VelmarPlatform/Basics/Version.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace velmar {
namespace {

struct ParseCase {
  const char* text;
  const char* description; // null: no version
};

class VersionParse : public testing::TestWithParam<ParseCase> {};

TEST_P(VersionParse, TakesVersionsOnly) {
  const auto version = Version::parse(GetParam().text);
  const auto found = version ? std::optional(version->description()) : std::nullopt;
  const auto expected =
      GetParam().description ? std::optional(std::string(GetParam().description)) : std::nullopt;
  EXPECT_EQ(found, expected) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Whole, VersionParse,
    testing::Values(ParseCase{"1.2.3", "1.2.3"}, ParseCase{"0.0.0", "0.0.0"},
                    ParseCase{"1.10", "1.10.0"}, ParseCase{"7", "7.0.0"},
                    ParseCase{"v2.1", "2.1.0"}, ParseCase{"1.0-beta", "1.0.0-beta"},
                    ParseCase{"1.2.3-beta.2+linux.x64", "1.2.3-beta.2+linux.x64"},
                    ParseCase{"1+build", "1.0.0+build"}, ParseCase{"1.0.0+001", "1.0.0+001"},
                    ParseCase{"1.0.0--", "1.0.0--"}, ParseCase{"1.0.0-0a", "1.0.0-0a"},
                    ParseCase{"1.0.0-a-b.c", "1.0.0-a-b.c"},
                    ParseCase{"9223372036854775807.0.0", "9223372036854775807.0.0"},
                    ParseCase{"1.0.0-123456789012345678901234567890",
                              "1.0.0-123456789012345678901234567890"}));

INSTANTIATE_TEST_SUITE_P(
    None, VersionParse,
    testing::Values(ParseCase{"", nullptr}, ParseCase{"v", nullptr}, ParseCase{"latest", nullptr},
                    ParseCase{"1.", nullptr}, ParseCase{".1", nullptr}, ParseCase{"1..2", nullptr},
                    ParseCase{"1.2.3.4", nullptr}, ParseCase{"01.2.3", nullptr},
                    ParseCase{"1.2.3-", nullptr}, ParseCase{"1.2.3+", nullptr},
                    ParseCase{"1.2.3-a..b", nullptr}, ParseCase{"1.2.3-a.", nullptr},
                    ParseCase{"1.2.3-01", nullptr}, ParseCase{"1.2.3-ä", nullptr},
                    ParseCase{"1.2.3+a+b", nullptr}, ParseCase{" 1.2.3", nullptr},
                    ParseCase{"1.2.3 ", nullptr}, ParseCase{"-1.2.3", nullptr},
                    ParseCase{"+1.2.3", nullptr}, ParseCase{"1.0rc1", nullptr},
                    ParseCase{"vv1", nullptr}, ParseCase{"9223372036854775808.0.0", nullptr}));

TEST(Version, KeepsItsPartsApart) {
  const auto version = Version::parse("1.2.3-beta.2+linux.x64");
  ASSERT_TRUE(version);
  EXPECT_EQ(version->major, 1);
  EXPECT_EQ(version->minor, 2);
  EXPECT_EQ(version->patch, 3);
  EXPECT_THAT(version->preRelease, testing::ElementsAre("beta", "2"));
  EXPECT_THAT(version->build, testing::ElementsAre("linux", "x64"));
}

// Each comes before all that follow it.
TEST(Version, OrdersByPrecedence) {
  std::istringstream texts(
      "0.9.9 1.0.0-1 1.0.0-2 1.0.0-10 1.0.0-99999999999999999999 1.0.0-100000000000000000000 "
      "1.0.0-- 1.0.0-Beta 1.0.0-alpha 1.0.0-alpha.1 1.0.0-alpha.1.x 1.0.0-alpha.beta 1.0.0-beta "
      "1.0.0-beta.2 1.0.0-beta.11 1.0.0-rc.1 1.0.0 1.0.1-a 1.0.1 1.9 1.10 2");
  const std::vector<std::string> ascending(std::istream_iterator<std::string>(texts), {});
  for (std::size_t left = 0; left < ascending.size(); ++left)
    for (std::size_t right = 0; right < ascending.size(); ++right)
      EXPECT_EQ(*Version::parse(ascending[left]) <=> *Version::parse(ascending[right]),
                left <=> right)
          << ascending[left] << " and " << ascending[right];
}

TEST(Version, BuildMetadataCountForNothing) {
  const Version left = *Version::parse("1.0.0+a");
  const Version right = *Version::parse("1.0+b.2");
  EXPECT_EQ(left, right);
  EXPECT_EQ(std::hash<Version>()(left), std::hash<Version>()(right));
  EXPECT_NE(left.description(), right.description());
}

TEST(Version, IsMadeFromThreeNumbers) {
  EXPECT_EQ(Version(0, 25, 6).description(), "0.25.6");
}

} // namespace
} // namespace velmar
