#include "VelmarPlatform/Concurrency/Task.h"

#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <gtest/gtest.h>

namespace velmar {
namespace {

Task<int> answer() {
  co_return 42;
}

TEST(Task, GivesItsValue) {
  EXPECT_EQ(mainExecutor().run([] { return answer(); }), 42);
}

} // namespace
} // namespace velmar
