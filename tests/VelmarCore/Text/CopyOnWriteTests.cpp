#include "VelmarCore/Text/CopyOnWrite.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace velmar {
namespace {

using Numbers = CopyOnWrite<std::vector<int>>;

TEST(CopyOnWrite, CopiesShareUntilOneWrites) {
  Numbers one;
  EXPECT_TRUE(one.read().empty());
  one.write() = {1, 2, 3};
  Numbers two = one;
  EXPECT_EQ(&one.read(), &two.read());
  EXPECT_TRUE(one.isShared());
  two.write().push_back(4);
  EXPECT_EQ(one.read().size(), 3U);
  EXPECT_EQ(two.read().size(), 4U);
  EXPECT_FALSE(one.isShared());
}

TEST(CopyOnWrite, AnOwnerAloneWritesInPlace) {
  Numbers one;
  one.write() = {1, 2, 3};
  const int* const place = one.read().data();
  {
    Numbers passing;
    passing = one;
    EXPECT_TRUE(one.isShared());
  }
  one.write()[0] = 9;
  EXPECT_EQ(one.read().data(), place);
}

TEST(CopyOnWrite, AMovedFromObjectReadsAsEmpty) {
  Numbers one;
  one.write() = {1};
  Numbers two = std::move(one);
  EXPECT_TRUE(one.read().empty()); // NOLINT(bugprone-use-after-move, clang-analyzer-cplusplus.Move)
  one = two;
  EXPECT_EQ(one.read(), std::vector{1});
}

} // namespace
} // namespace velmar
