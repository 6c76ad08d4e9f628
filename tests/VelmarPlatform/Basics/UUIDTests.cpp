#include "VelmarPlatform/Basics/UUID.h"

#include <gtest/gtest.h>

#include <set>

namespace velmar {
namespace {

TEST(UUID, IsReadInEitherCaseAndWrittenInUpperCase) {
  const auto uuid = UUID::parse("e621e1f8-C36C-495A-93fc-0c247a3e6e5f");
  ASSERT_TRUE(uuid);
  EXPECT_EQ(uuid->string(), "E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
  for (const char* bad :
       {"", "E621E1F8C36C495A93FC0C247A3E6E5F", "E621E1F8-C36C-495A-93FC-0C247A3E6E5",
        "G621E1F8-C36C-495A-93FC-0C247A3E6E5F", "E621E1F8-C36C-495A-93FC+0C247A3E6E5F"})
    EXPECT_FALSE(UUID::parse(bad)) << bad;
}

TEST(UUID, RandomOnesDifferAndSayTheirVersion) {
  std::set<UUID> seen;
  for (int i = 0; i < 100; ++i) {
    const UUID uuid = UUID::random();
    EXPECT_TRUE(seen.insert(uuid).second);
    EXPECT_EQ(uuid.string()[14], '4');
    EXPECT_NE(std::string("89AB").find(uuid.string()[19]), std::string::npos);
  }
}

} // namespace
} // namespace velmar
