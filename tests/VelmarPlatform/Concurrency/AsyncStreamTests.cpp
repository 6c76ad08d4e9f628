#include "VelmarPlatform/Concurrency/AsyncStream.h"

#include "Support.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <thread>
#include <vector>

namespace velmar {
namespace {

using testing_support::run;

Task<std::vector<int>> collect(AsyncStream<int>& stream) {
  std::vector<int> values;
  while (const std::optional<int> value = co_await stream.next())
    values.push_back(*value);
  co_return values;
}

TEST(AsyncStream, GivesWhatWasYieldedBeforeItsEnd) {
  run([]() -> Task<void> {
    auto [source, stream] = makeAsyncStream<int>();
    source.yield(1);
    source.yield(2);
    source.finish();
    source.yield(3);
    EXPECT_EQ(co_await collect(stream), (std::vector{1, 2}));
    EXPECT_EQ(co_await stream.next(), std::nullopt);
  });
}

TEST(AsyncStream, EndsWithTheLastCopyOfItsSource) {
  run([]() -> Task<void> {
    std::optional<AsyncStreamEnds<int>> ends(makeAsyncStream<int>());
    AsyncStream<int> stream = std::move(ends->stream);
    std::optional copy = ends->source;
    ends.reset();
    copy->yield(1);
    EXPECT_EQ(co_await stream.next(), 1);
    copy.reset();
    EXPECT_EQ(co_await stream.next(), std::nullopt);
  });
}

TEST(AsyncStream, TellsAFailureAfterTheValues) {
  run([]() -> Task<void> {
    auto [source, stream] = makeAsyncStream<int>();
    source.yield(1);
    source.fail(std::make_exception_ptr(std::runtime_error("broken")));
    EXPECT_EQ(co_await stream.next(), 1);
    EXPECT_THROW(co_await stream.next(), std::runtime_error);
    EXPECT_EQ(co_await stream.next(), std::nullopt);
  });
}

TEST(AsyncStream, KeepsTheOrderOfOneThreadAndLosesNothing) {
  constexpr int count = 20'000;
  auto [source, stream] = makeAsyncStream<int>();
  std::thread producer([source] {
    for (int i = 0; i < count; ++i)
      source.yield(i);
    source.finish();
  });
  const std::vector<int> values = run([&] { return collect(stream); });
  producer.join();
  ASSERT_EQ(values.size(), static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i)
    ASSERT_EQ(values[static_cast<std::size_t>(i)], i);
}

TEST(AsyncStream, EndsForACancelledReaderAndKeepsTheValuesForTheNext) {
  run([]() -> Task<void> {
    auto [source, stream] = makeAsyncStream<int>();
    auto& readEnd = stream;
    const auto reader = spawn([&] { return readEnd.next(); });
    reader.cancel();
    EXPECT_EQ(co_await reader.value(), std::nullopt);
    source.yield(1);
    EXPECT_EQ(co_await readEnd.next(), 1);
  });
}

TEST(AsyncStream, ValueAndCancellationRaceThreeHundredTimes) {
  run([]() -> Task<void> {
    auto [source, stream] = makeAsyncStream<int>();
    auto& readEnd = stream;
    const auto& writeEnd = source;
    for (int round = 0; round < 300; ++round) {
      const auto reader = spawn([&] { return readEnd.next(); });
      const auto canceller = spawn([reader] { reader.cancel(); });
      const auto producer = spawn([&, round] { writeEnd.yield(round); });
      std::optional<int> value = co_await reader.value();
      co_await producer.value();
      co_await canceller.value();
      if (!value)
        value = co_await readEnd.next();
      EXPECT_EQ(value, round) << "A value is read once, whoever wins.";
    }
  });
}

TEST(AsyncStream, TellsItsSourceThatNobodyReads) {
  int ends = 0;
  std::optional<AsyncStreamEnds<int>> stream(makeAsyncStream<int>());
  const AsyncStreamSource<int> source = stream->source;
  source.setOnEnd([&] { ++ends; });
  EXPECT_EQ(ends, 0);
  stream.reset();
  EXPECT_EQ(ends, 1);
  source.finish();
  EXPECT_EQ(ends, 1);
  source.setOnEnd([&] { ends += 10; });
  EXPECT_EQ(ends, 11) << "Who asks late hears at once.";
}

} // namespace
} // namespace velmar
