#include "VelmarCore/Network/NetworkConnection.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <latch>
#include <string>
#include <unistd.h>

namespace velmar {
namespace {

using namespace std::chrono_literals;

template <class Body>
TaskValueOf<Body> run(Body body) {
  return mainExecutor().run(std::move(body));
}

void waitUntil(const std::function<bool()>& predicate) {
  ASSERT_TRUE(mainExecutor().runUntil(predicate, 1min)) << "It never happened.";
}

Bytes bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return {view.begin(), view.end()};
}

/// A name whose address is told by the test, with a count of the look-ups: one for each attempt.
struct Names {
  std::vector<SocketAddress> addresses;
  std::shared_ptr<std::atomic<int>> lookUps = std::make_shared<std::atomic<int>>(0);

  [[nodiscard]] NetworkParameters parameters() const {
    return {.lookUp = [addresses = addresses, lookUps = lookUps](const std::string&, auto) {
      ++*lookUps;
      return addresses;
    }};
  }
};

const auto someName = NetworkEndpoint::hostPort("somewhere.invalid", 80);

/// An address on which nobody listens any more.
SocketAddress refusingAddress() {
  ListeningSocket listener(SocketAddress::ipv4({127, 0, 0, 1}, 0));
  const SocketAddress address = listener.address();
  listener.close();
  return address;
}

int codeOf(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const SystemError& error) {
    return error.code();
  } catch (const CancellationError&) {
    return -1;
  }
}

struct UnixPath {
  std::string path =
      (std::filesystem::temp_directory_path() / ("velmar-connection-" + std::to_string(::getpid())))
          .string();
  UnixPath() { std::filesystem::remove(path); }
  ~UnixPath() { std::filesystem::remove(path); }
};

TEST(NetworkConnection, CarriesBytesOverTCPAndUnixSockets) {
  const UnixPath unixPath;
  ListeningSocket tcp(SocketAddress::ipv4({127, 0, 0, 1}, 0));
  ListeningSocket local(SocketAddress::unixPath(unixPath.path));
  const std::pair<ListeningSocket*, NetworkEndpoint> places[] = {
      {&tcp, NetworkEndpoint::hostPort("127.0.0.1", tcp.address().port())},
      {&tcp, NetworkEndpoint::hostPort("localhost", tcp.address().port())},
      {&local, NetworkEndpoint::unixSocket(FilePath(unixPath.path))}};
  for (const auto& place : places)
    run([place]() -> Task<void> {
      const auto& [listener, endpoint] = place;
      SCOPED_TRACE(endpoint.debugDescription());
      const auto stream = co_await connectStream(endpoint);
      const auto peer = co_await listener->accept();
      co_await stream->write(bytes("ping"));
      EXPECT_EQ(charactersOf(*co_await peer->read(100)), "ping");
      co_await peer->write(bytes("pong"));
      EXPECT_EQ(charactersOf(*co_await stream->read(4)), "pong");
      peer->close();
      EXPECT_EQ(co_await stream->read(1), std::nullopt);
    });
}

TEST(NetworkConnection, ReceivesBetweenAMinimumAndAMaximum) {
  run([]() -> Task<void> {
    ListeningSocket listener(SocketAddress::ipv4({127, 0, 0, 1}, 0));
    const auto connection =
        co_await connectTo(NetworkEndpoint::hostPort("127.0.0.1", listener.address().port()));
    const auto peer = co_await listener.accept();
    co_await peer->write(bytes("abcdef"));
    auto received = co_await connection->receive(3, 4);
    EXPECT_EQ(charactersOf(*received.data), "abcd");
    EXPECT_FALSE(received.isComplete);
    peer->close();
    received = co_await connection->receive(3, 4);
    EXPECT_EQ(charactersOf(*received.data), "ef");
    EXPECT_TRUE(received.isComplete);
    received = co_await connection->receive(0, 4);
    EXPECT_EQ(received.data, std::nullopt);
    EXPECT_TRUE(received.isComplete);
  });
}

TEST(NetworkConnection, FailsOnceWithoutSleeping) {
  const Names names{{refusingAddress()}};
  ManualClock clock;
  const auto attempt = spawn(
      [&] { return connectTo(someName, {.parameters = names.parameters(), .clock = &clock}); });
  waitUntil([&] { return attempt.isFinished(); });
  EXPECT_EQ(codeOf(run([&] { return attempt.outcome(); }).error()), ECONNREFUSED);
  EXPECT_EQ(*names.lookUps, 1);
}

TEST(NetworkConnection, TriesAsOftenAsToldWithWaitsBetween) {
  const Names names{{refusingAddress()}};
  ManualClock clock;
  const auto connecting = spawn([&] {
    return connectTo(someName, {.attempts = Attempts::retry(20, 250ms, 50ms),
                                .parameters = names.parameters(),
                                .clock = &clock});
  });
  for (int wait = 1; wait <= 19; ++wait) {
    waitUntil([&] { return clock.sleeperCount() == 1; });
    EXPECT_EQ(*names.lookUps, wait);
    clock.advance(299ms);
    EXPECT_EQ(clock.sleeperCount(), 1U);
    clock.advance(1ms);
  }
  waitUntil([&] { return connecting.isFinished(); });
  EXPECT_EQ(*names.lookUps, 20);
  EXPECT_EQ(codeOf(run([&] { return connecting.outcome(); }).error()), ECONNREFUSED);
}

TEST(NetworkConnection, ReachesAServerThatStartsLate) {
  const UnixPath path;
  ManualClock clock;
  const auto connecting = spawn([&] {
    return connectTo(NetworkEndpoint::unixSocket(FilePath(path.path)),
                     {.attempts = Attempts::retry(5, 1s), .clock = &clock});
  });
  waitUntil([&] { return clock.sleeperCount() == 1; });
  ListeningSocket listener(SocketAddress::unixPath(path.path));
  clock.advance(1s);
  const auto connection = run([&] { return connecting.value(); });
  EXPECT_TRUE(std::holds_alternative<NetworkConnection::Ready>(connection->state()));
  connection->cancel();
  EXPECT_TRUE(std::holds_alternative<NetworkConnection::Cancelled>(connection->state()));
  EXPECT_THROW(run([&] { return connection->read(0); }), SystemError);
}

TEST(NetworkConnection, TakesTheFirstAddressThatAnswers) {
  ListeningSocket listener(SocketAddress::ipv4({127, 0, 0, 1}, 0));
  const Names names{{refusingAddress(), listener.address()}};
  run([&] { return connectTo(someName, {.parameters = names.parameters()}); });
  EXPECT_EQ(*names.lookUps, 1);
}

TEST(NetworkConnection, ACancelledTaskDoesNotWaitForALookUp) {
  auto opened = std::make_shared<std::latch>(1);
  auto begun = std::make_shared<std::atomic<bool>>(false);
  const auto connecting = spawn([&] {
    return connectTo(someName, {.attempts = Attempts::retry(3),
                                .parameters = {.lookUp = [=](const std::string&,
                                                             auto) -> std::vector<SocketAddress> {
                                  *begun = true;
                                  opened->wait();
                                  throw SystemError("too late", EIO);
                                }}});
  });
  waitUntil([&] { return begun->load(); });
  connecting.cancel();
  EXPECT_EQ(codeOf(run([&] { return connecting.outcome(); }).error()), -1);
  opened->count_down();
}

TEST(NetworkConnection, ACancelledTaskDoesNotTryAgain) {
  const Names names{{refusingAddress()}};
  ManualClock clock;
  const auto connecting = spawn([&] {
    return connectTo(
        someName,
        {.attempts = Attempts::retry(3, 1s), .parameters = names.parameters(), .clock = &clock});
  });
  waitUntil([&] { return clock.sleeperCount() == 1; });
  connecting.cancel();
  EXPECT_EQ(codeOf(run([&] { return connecting.outcome(); }).error()), -1);
  EXPECT_EQ(*names.lookUps, 1);
}

TEST(NetworkConnection, TellsItsStatesInOrder) {
  struct Case {
    const char* name;
    std::function<std::vector<SocketAddress>()> lookUp;
    std::vector<std::size_t> states; // as the variant numbers them, before it is cancelled
  };
  ListeningSocket listener(SocketAddress::ipv4({127, 0, 0, 1}, 0));
  const auto address = listener.address();
  const Case cases[] = {
      {"ready", [=] { return std::vector{address}; }, {1, 3}},
      {"refused", [] { return std::vector{refusingAddress()}; }, {1, 4}},
      {"no address", [] { return std::vector<SocketAddress>(); }, {1, 4}},
      {"no name service",
       []() -> std::vector<SocketAddress> { throw SystemError("later", EAGAIN); },
       {1, 2}},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    const auto connection = NetworkConnection::make(
        someName, {.lookUp = [lookUp = row.lookUp](const std::string&, auto) { return lookUp(); }});
    std::atomic<std::size_t> count = 0;
    std::vector<std::size_t> states(3);
    connection->setStateUpdateHandler([&](const NetworkConnection::State& state) {
      states.at(count) = state.index();
      ++count;
    });
    EXPECT_THROW(run([&] { return connection->send(bytes("x")); }), SystemError);
    connection->start(SerialExecutor::make("test"));
    waitUntil([&] { return count == 2; });
    connection->cancel();
    connection->cancel();
    waitUntil([&] { return count == 3; });
    EXPECT_EQ(states, (std::vector<std::size_t>{row.states[0], row.states[1], 5}));
  }
}

TEST(NetworkConnection, TellsWhyANameIsNotFound) {
  const auto outcome = run([] {
    return spawn([] { return connectTo(NetworkEndpoint::hostPort("no such host", 80)); }).outcome();
  });
  try {
    std::rethrow_exception(outcome.error());
  } catch (const SystemError& error) {
    EXPECT_TRUE(error.message().starts_with("The host “no such host” can't be found: "))
        << error.message();
  }
}

} // namespace
} // namespace velmar
