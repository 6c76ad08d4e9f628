// What several tasks write to one place. A socket that keeps the bounds of what was sent shows what
// went out in one piece.

#include "VelmarPlatform/Process/InputWriter.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Concurrency/SerialExecutor.h"
#include "VelmarPlatform/Concurrency/Spawn.h"
#include "tests/VelmarPlatform/Concurrency/Support.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <sys/socket.h>
#include <vector>

namespace velmar {
namespace {

using testing_support::run;

class InputWriters : public ::testing::Test {
protected:
  InputWriters() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
    ours_ = AsyncDescriptor::adopt(ends[0]);
    theirs_ = AsyncDescriptor::adopt(ends[1]);
  }

  /// Begins to write `texts` in tasks of one executor that come to run one after the other.
  std::vector<TaskHandle<>> writeInARow(const std::vector<std::string>& texts) {
    const InputWriter writer(ours_);
    std::vector<TaskHandle<>> handles;
    const auto begin = [&] {
      for (const std::string& each : texts)
        handles.push_back(spawn(*executor_, [writer, each] { return writer.write(each); }));
    };
    run([&]() -> Task<void> { co_await spawn(*executor_, begin).value(); });
    return handles;
  }
  [[nodiscard]] std::string nextPacket() {
    return run([this]() -> Task<std::string> {
      const auto packet = co_await theirs_->read(1 << 20);
      co_return packet ? std::string(charactersOf(*packet)) : "(end)";
    });
  }

  std::shared_ptr<SerialExecutor> executor_ = SerialExecutor::make("writers");
  std::shared_ptr<AsyncDescriptor> ours_;
  std::shared_ptr<AsyncDescriptor> theirs_;
};

TEST_F(InputWriters, OfOneExecutorSendInOnePieceWhatTheyWriteInARow) {
  for (TaskHandle<>& handle : writeInARow({"one ", "two ", "three "}))
    run([&]() -> Task<void> { co_await handle.value(); });
  EXPECT_EQ(nextPacket(), "one two three ");
}

TEST_F(InputWriters, SendAtOnceWhatNobodyElseIsAboutToAddTo) {
  run([this]() -> Task<void> {
    const InputWriter writer(ours_);
    co_await writer.write("one");
    co_await writer.write("two");
  });
  EXPECT_EQ(nextPacket(), "one");
  EXPECT_EQ(nextPacket(), "two");
}

TEST_F(InputWriters, AllLearnThatNobodyReads) {
  theirs_->close();
  for (TaskHandle<>& handle : writeInARow({"one", "two", "three"}))
    EXPECT_THROW(run([&]() -> Task<void> { co_await handle.value(); }), SystemError);
}

// Whoever is cancelled takes nothing with it of what others write in the same piece.
TEST_F(InputWriters, WriteForOthersWhenOneIsCancelled) {
  const std::string filler(100, '.');
  while (::send(ours_->descriptor(), filler.data(), filler.size(), MSG_DONTWAIT) > 0) {
  }
  std::vector<TaskHandle<>> handles = writeInARow({"one ", "two ", "three "});
  run([this]() -> Task<void> { co_await spawn(*executor_, [] {}).value(); }); // all have begun
  handles[0].cancel();
  handles[2].cancel();
  EXPECT_THROW(run([&]() -> Task<void> { co_await handles[0].value(); }), CancellationError);
  EXPECT_THROW(run([&]() -> Task<void> { co_await handles[2].value(); }), CancellationError);
  std::string packet = filler;
  while (packet == filler)
    packet = nextPacket();
  EXPECT_EQ(packet, "one two three ");
  run([&]() -> Task<void> { co_await handles[1].value(); });
}

} // namespace
} // namespace velmar
