#include "VelmarPlatform/Concurrency/Descriptor.h"

#include "Support.h"
#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Concurrency/Socket.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace velmar {
namespace {

using testing_support::run;

using DescriptorPtr = std::shared_ptr<AsyncDescriptor>;
using Ends = std::pair<DescriptorPtr, DescriptorPtr>;

Bytes bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return Bytes(view.begin(), view.end());
}
std::string text(const std::optional<Bytes>& chunk) {
  return chunk ? std::string(charactersOf(*chunk)) : "(end)";
}

/// The `errno` of what `operation` throws, or 0.
template <class Operation>
Task<int> failureCode(Operation operation) {
  try {
    static_cast<void>(co_await operation());
  } catch (const SystemError& error) {
    co_return error.code();
  }
  co_return 0;
}
Task<Nothing> nothing(Task<void> task) {
  co_await std::move(task);
  co_return Nothing();
}

class TemporaryFolder {
public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmar-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  [[nodiscard]] std::string file(std::string_view name) const { return (path_ / name).string(); }

private:
  std::filesystem::path path_;
};

// Every kind of stream

Task<Ends> pair() {
  co_return makeSocketPair();
}
Task<Ends> pipe() {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0)
    std::abort();
  co_return Ends(AsyncDescriptor::adopt(ends[0]), AsyncDescriptor::adopt(ends[1]));
}
Task<Ends> connected(SocketAddress address) {
  ListeningSocket listener(address);
  const auto accepting = spawn([&] { return listener.accept(); });
  DescriptorPtr ours = co_await connectSocket(
      address.port() == 0 && address.family() != AF_UNIX ? listener.address() : address);
  DescriptorPtr theirs = co_await accepting.value();
  co_return Ends(std::move(ours), std::move(theirs));
}
Task<Ends> tcp() {
  co_return co_await connected(SocketAddress::ipv4({127, 0, 0, 1}, 0));
}
Task<Ends> unixSocket() {
  const TemporaryFolder folder;
  co_return co_await connected(SocketAddress::unixPath(folder.file("socket")));
}

struct Kind {
  const char* name;
  Task<Ends> (*make)(); ///< A reading end and a writing end.
};
void PrintTo(const Kind& kind, std::ostream* stream) {
  *stream << kind.name;
}

class Streams : public testing::TestWithParam<Kind> {};

TEST_P(Streams, CarryBytesToTheirEnd) {
  run([]() -> Task<void> {
    auto [reader, writer] = co_await GetParam().make();
    co_await writer->write(bytes("hello"));
    EXPECT_EQ(text(co_await reader->read(100)), "hello");
    co_await writer->write(bytes("good bye"));
    EXPECT_EQ(text(co_await reader->read(4)), "good");
    EXPECT_EQ(text(co_await reader->read(100)), " bye");
    writer->close();
    EXPECT_EQ(text(co_await reader->read(100)), "(end)");
    EXPECT_EQ(text(co_await reader->read(100)), "(end)");
  });
}

TEST_P(Streams, CarryMoreThanTheSystemBuffers) {
  run([]() -> Task<void> {
    auto [reader, writer] = co_await GetParam().make();
    Bytes sent(3'000'000);
    for (std::size_t i = 0; i < sent.size(); ++i)
      sent[i] = static_cast<std::byte>(i * 2'654'435'761U >> 13U);
    const auto writing = spawn([writing = writer, sent]() -> Task<void> {
      co_await writing->write(sent);
      writing->close();
    });
    Bytes received;
    while (const std::optional<Bytes> chunk = co_await reader->read(65'536)) {
      EXPECT_LE(chunk->size(), 65'536U);
      received.insert(received.end(), chunk->begin(), chunk->end());
    }
    co_await writing.value();
    EXPECT_TRUE(received == sent);
  });
}

TEST_P(Streams, ACancelledReadEndsAtOnceAndTakesNothing) {
  run([]() -> Task<void> {
    auto [reader, writer] = co_await GetParam().make();
    const auto read = [from = reader] { return from->read(100); };
    for (int round = 0; round < 300; ++round) {
      const auto reading = spawn(read);
      if (round % 2 == 0) // let it get as far as to wait, on some rounds
        co_await spawn([] {}).value();
      reading.cancel();
      EXPECT_THROW(co_await reading.value(), CancellationError);
    }
    co_await writer->write(bytes("kept"));
    EXPECT_EQ(text(co_await reader->read(100)), "kept");
  });
}

TEST_P(Streams, BytesAndCancellationRaceThreeHundredTimes) {
  run([]() -> Task<void> {
    auto [reader, writer] = co_await GetParam().make();
    const auto read = [from = reader] { return from->read(100); };
    const auto write = [to = writer] { return to->write(bytes("x")); };
    for (int round = 0; round < 300; ++round) {
      const auto reading = spawn(read);
      const auto cancelling = spawn([reading] { reading.cancel(); });
      const auto writing = spawn(write);
      const Outcome<std::optional<Bytes>> outcome = co_await reading.outcome();
      co_await writing.value();
      co_await cancelling.value();
      EXPECT_EQ(text(outcome.hasValue() ? *outcome : co_await reader->read(100)), "x");
    }
  });
}

TEST_P(Streams, ClosingEndsAWaitWithAFailure) {
  run([]() -> Task<void> {
    auto [reader, writer] = co_await GetParam().make();
    const auto read = [from = reader] { return from->read(100); };
    const auto reading = spawn([=] { return failureCode(read); });
    co_await spawn([] {}).value();
    reader->close();
    EXPECT_EQ(co_await reading.value(), ECANCELED);
    EXPECT_EQ(co_await failureCode(read), ECANCELED);
    reader->close();
  });
}

TEST_P(Streams, WritingToNobodyFailsAndRaisesNoSignal) {
  run([]() -> Task<void> {
    auto [reader, writer] = co_await GetParam().make();
    reader->close();
    reader = nullptr;
    int code = 0;
    // The system of a TCP peer answers the first bytes, and only then the next fail.
    while (code == 0)
      code = co_await failureCode([to = writer] { return nothing(to->write(bytes("x"))); });
    EXPECT_TRUE(code == EPIPE || code == ECONNRESET) << code;
    sigset_t pending;
    sigpending(&pending);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
  });
}

INSTANTIATE_TEST_SUITE_P(Kinds, Streams,
                         testing::Values(Kind{"SocketPair", pair}, Kind{"Pipe", pipe},
                                         Kind{"TCP", tcp}, Kind{"Unix", unixSocket}),
                         [](const auto& row) { return std::string(row.param.name); });

// Single cases

TEST(AsyncDescriptor, ReadsAFileThoughItCantBeWaitedFor) {
  run([]() -> Task<void> {
    const TemporaryFolder folder;
    std::ofstream(folder.file("file")) << std::string(10'000, 'a') << "z";
    const auto file = AsyncDescriptor::adopt(::open(folder.file("file").c_str(), O_RDONLY));
    co_await file->waitUntilReadable();
    const std::optional<Bytes> chunk = co_await file->read(100'000);
    EXPECT_EQ(text(chunk), std::string(10'000, 'a') + "z");
    EXPECT_EQ(text(co_await file->read(100'000)), "(end)");
  });
}

/// What can be done to a descriptor that never has to wait.
struct Ready {
  const char* name;
  Task<void> (*once)(DescriptorPtr);
};
class AlwaysReady : public testing::TestWithParam<Ready> {};

TEST_P(AlwaysReady, LetsOthersHaveTheTurn) {
  run([]() -> Task<void> {
    const DescriptorPtr zeros = AsyncDescriptor::adopt(::open("/dev/zero", O_RDWR));
    bool othersRan = false;
    const auto other = spawn(mainExecutor(), [&] { othersRan = true; });
    int count = 0;
    while (!othersRan && count < 10'000) {
      co_await GetParam().once(zeros);
      ++count;
    }
    EXPECT_TRUE(othersRan);
    EXPECT_GT(count, 100) << "A turn is worth something.";
    co_await other.value();
  });
}
INSTANTIATE_TEST_SUITE_P(
    Cases, AlwaysReady,
    testing::Values(
        Ready{"Read", [](DescriptorPtr zeros) -> Task<void> { co_await zeros->read(4); }},
        Ready{"Write",
              [](DescriptorPtr zeros) -> Task<void> { co_await zeros->write(bytes("zero")); }},
        Ready{"Perform",
              [](DescriptorPtr zeros) -> Task<void> {
                co_await zeros->perform(detail::Direction::reading, "",
                                        [](int) { return std::int64_t{0}; });
              }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(AsyncDescriptor, RefusesWhatIsNoDescriptor) {
  try {
    static_cast<void>(AsyncDescriptor::adopt(-1));
    FAIL();
  } catch (const SystemError& error) {
    EXPECT_EQ(error.code(), EBADF);
  }
}

TEST(AsyncDescriptor, ClosesWithItsLastReference) {
  run([]() -> Task<void> {
    Ends ends = makeSocketPair();
    ends.second = nullptr;
    EXPECT_EQ(text(co_await ends.first->read(1)), "(end)");
  });
}

TEST(AsyncDescriptor, AReadKeepsTheDescriptorAlive) {
  run([]() -> Task<void> {
    Ends ends = makeSocketPair();
    auto reading = spawn([task = ends.second->read(100)]() mutable { return std::move(task); });
    ends.second = nullptr;
    co_await ends.first->write(bytes("hello"));
    EXPECT_EQ(text(co_await reading.value()), "hello");
  });
}

TEST(Socket, NobodyThereIsAFailure) {
  run([]() -> Task<void> {
    std::uint16_t port = 0;
    {
      const ListeningSocket listener(SocketAddress::ipv4({127, 0, 0, 1}, 0));
      port = listener.address().port();
      EXPECT_NE(port, 0);
    }
    EXPECT_EQ(co_await failureCode(
                  [=] { return connectSocket(SocketAddress::ipv4({127, 0, 0, 1}, port)); }),
              ECONNREFUSED);
    const TemporaryFolder folder;
    EXPECT_EQ(co_await failureCode(
                  [&] { return connectSocket(SocketAddress::unixPath(folder.file("none"))); }),
              ENOENT);
  });
}

TEST(Socket, AnAcceptCanBeCancelledAndTheNextOneServes) {
  run([]() -> Task<void> {
    ListeningSocket listener(
        SocketAddress::ipv6({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, 0));
    const auto accepting = spawn([&] { return listener.accept(); });
    accepting.cancel();
    EXPECT_THROW(co_await accepting.value(), CancellationError);
    const auto again = spawn([&] { return listener.accept(); });
    const DescriptorPtr ours = co_await connectSocket(listener.address());
    const DescriptorPtr theirs = co_await again.value();
    co_await ours->write(bytes("hi"));
    EXPECT_EQ(text(co_await theirs->read(10)), "hi");
  });
}

struct PathCase {
  const char* name;
  std::string path;
  int code;
};
void PrintTo(const PathCase& row, std::ostream* stream) {
  *stream << row.name;
}
class BadSocketPaths : public testing::TestWithParam<PathCase> {};
TEST_P(BadSocketPaths, AreRefused) {
  try {
    static_cast<void>(SocketAddress::unixPath(GetParam().path));
    FAIL();
  } catch (const SystemError& error) {
    EXPECT_EQ(error.code(), GetParam().code);
  }
}
INSTANTIATE_TEST_SUITE_P(Cases, BadSocketPaths,
                         testing::Values(PathCase{"Empty", "", EINVAL},
                                         PathCase{"Zero", std::string("/a\0b", 4), EINVAL},
                                         PathCase{"Long", std::string(108, 'a'), ENAMETOOLONG}),
                         [](const auto& row) { return std::string(row.param.name); });

// One wake for one message

/// Reads messages in turns that the reactor's thread may run.
class Reader : public SerialObject {
public:
  explicit Reader(DescriptorPtr stream)
      : SerialObject("reader", Lane::poolOrReactor), stream_(std::move(stream)) {}
  /// On how many threads the messages arrived, other than the first.
  Task<std::size_t> threadsOf(int count) {
    std::vector<std::thread::id> threads;
    for (int i = 0; i < count; ++i) {
      const std::optional<Bytes> message = co_await stream_->read(100);
      if (i > 0)
        threads.push_back(std::this_thread::get_id());
      co_await stream_->write(*message);
    }
    std::ranges::sort(threads);
    co_return static_cast<std::size_t>(std::ranges::unique(threads).begin() - threads.begin());
  }

private:
  DescriptorPtr stream_;
};

/// How often the process's threads, but for the two given, went to sleep so far.
std::int64_t sleepsOfOthers(const std::array<pid_t, 2>& excluded) {
  std::int64_t sleeps = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
    if (std::ranges::count(excluded, std::stoi(task.path().filename().string())) > 0)
      continue;
    std::ifstream status(task.path() / "status");
    constexpr std::string_view label = "voluntary_ctxt_switches:";
    for (std::string line; std::getline(status, line);)
      if (line.starts_with(label))
        sleeps += std::stoll(line.substr(label.size()));
  }
  return sleeps;
}

TEST(Reactor, WakesOneThreadForAMessage) {
  constexpr int count = 1'000;
  auto ends = makeSocketPair();
  const int peer = ::dup(ends.first->descriptor());
  ::fcntl(peer, F_SETFL, ::fcntl(peer, F_GETFL) & ~O_NONBLOCK);
  std::int64_t sleeps = 0;
  const pid_t mainThread = ::gettid();
  std::thread sender([=, &sleeps] {
    std::array<char, 100> buffer{};
    const auto exchange = [&] {
      if (::write(peer, "x", 1) != 1 || ::read(peer, buffer.data(), buffer.size()) != 1)
        std::abort();
    };
    exchange(); // after the first one, the object waits
    sleeps = -sleepsOfOthers({mainThread, ::gettid()});
    for (int i = 0; i < count; ++i)
      exchange();
    sleeps += sleepsOfOthers({mainThread, ::gettid()});
  });
  const std::size_t threads = run([&] {
    return spawn([reader = std::make_shared<Reader>(ends.second)] {
             return reader->threadsOf(count + 1);
           })
        .value();
  });
  sender.join();
  ::close(peer);
  // Messages that were there before the object looked arrive in the pool, and after some hundred of
  // them in a row another of its threads may go on.
  EXPECT_LE(threads, 5U);
  // Once for each message, less when the thread hadn't gone to sleep yet, and now and then over a
  // lock of the system's.
  EXPECT_LE(sleeps, count + count / 10);
  EXPECT_GT(sleeps, 0);
}

} // namespace
} // namespace velmar
