#include "VelmarCore/Concurrency/CancellationToken.h"

#include "VelmarPlatform/Concurrency/Cancellation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace velmar {
namespace {

TEST(CancellationToken, TellsWhetherItWasCancelledBefore) {
  const CancellationToken token;
  EXPECT_FALSE(token.isCancelled());
  EXPECT_NO_THROW(token.checkCancellation());
  EXPECT_FALSE(token.cancel());
  EXPECT_TRUE(token.cancel());
  EXPECT_TRUE(token.isCancelled());
  EXPECT_THROW(token.checkCancellation(), CancellationError);
}

TEST(CancellationToken, CallsHandlersOnceInOrder) {
  const CancellationToken token;
  std::string trace;
  token.onCancellation([&] { trace += "a"; });
  token.onCancellation([&] { trace += "b"; });
  EXPECT_EQ(trace, "");
  token.cancel();
  token.cancel();
  EXPECT_EQ(trace, "ab");
}

TEST(CancellationToken, CallsAHandlerThatComesLateBeforeReturning) {
  const CancellationToken token;
  token.cancel();
  int calls = 0;
  token.onCancellation([&] { ++calls; });
  EXPECT_EQ(calls, 1);
}

TEST(CancellationToken, CopiesShareTheirState) {
  const CancellationToken token;
  const CancellationToken copy = token; // NOLINT(performance-unnecessary-copy-initialization)
  int calls = 0;
  copy.onCancellation([&] { ++calls; });
  token.cancel();
  EXPECT_TRUE(copy.isCancelled());
  EXPECT_EQ(calls, 1);
}

TEST(CancellationToken, AHandlerMayUseTheToken) {
  const CancellationToken token;
  std::string trace;
  token.onCancellation([&] {
    EXPECT_TRUE(token.cancel());
    token.onCancellation([&] { trace += "a"; });
    trace += "b";
  });
  token.cancel();
  EXPECT_EQ(trace, "ab");
}

TEST(CancellationToken, HandlersAndCancellationRaceThreeHundredTimes) {
  for (int round = 0; round < 300; ++round) {
    const CancellationToken token;
    std::atomic<int> calls = 0;
    std::atomic<int> firsts = 0;
    std::thread registrar([&] {
      for (int i = 0; i < 10; ++i)
        token.onCancellation([&] { ++calls; });
    });
    std::thread canceller([&] { firsts += token.cancel() ? 0 : 1; });
    firsts += token.cancel() ? 0 : 1;
    registrar.join();
    canceller.join();
    EXPECT_EQ(calls, 10);
    EXPECT_EQ(firsts, 1);
  }
}

} // namespace
} // namespace velmar
