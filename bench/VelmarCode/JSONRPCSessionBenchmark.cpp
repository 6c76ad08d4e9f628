// Requests of a session to a peer on a Unix socket and their responses, one at a time and 32 at a
// time. The floor is a thread in bare blocking calls that writes the same bytes and only looks for
// the ends of the answers; both talk to the same peer, another such thread.
//
// A round trip is mostly wakes of threads, so it is wall time that counts, and no bound on
// instructions is checked. An iteration makes 32 requests one after the other, or 32 times as many;
// the aim is at most twice the floor for the former and 10 ms for the latter.

#include "VelmarCore/JSONRPC/JSONRPCSession.h"

#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"
#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/Socket.h"
#include "bench/Pair.h"

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace velmar {

namespace {

constexpr int inFlight = 32;
/// In an iteration, for each that is in flight.
constexpr std::int64_t requests = 32;

struct Echo {
  using Result = std::int64_t;
  static constexpr std::string_view method = "echo";
  std::int64_t number = 0;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Echo>(row<&Echo::number>("number"));
    return table;
  }
};

std::string framed(const std::string& body) {
  return "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

void writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const auto count = ::write(descriptor, text.data(), text.size());
    if (count < 0)
      std::abort();
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

/// Reads in blocking calls, and finds where the bodies of messages are.
class BareReader {
public:
  explicit BareReader(int descriptor) : descriptor_(descriptor) {}

  /// The body of the next message, good until the next call; empty at the end.
  std::string_view next() {
    constexpr std::string_view separator = "\r\n\r\n";
    constexpr std::size_t digits = std::string_view("Content-Length: ").size();
    for (;;) {
      const std::string_view rest = std::string_view(buffer_).substr(start_);
      const std::size_t header = rest.find(separator);
      if (header != std::string_view::npos) {
        const std::size_t body = header + separator.size();
        const auto length = static_cast<std::size_t>(std::atoi(rest.data() + digits));
        if (rest.size() >= body + length) {
          start_ += body + length;
          return rest.substr(body, length);
        }
      }
      buffer_.erase(0, start_);
      start_ = 0;
      static thread_local std::array<char, 65536> chunk;
      const auto count = ::read(descriptor_, chunk.data(), chunk.size());
      if (count <= 0)
        return {};
      buffer_.append(chunk.data(), static_cast<std::size_t>(count));
    }
  }
  /// Whether a whole message is likely to be there already.
  [[nodiscard]] bool hasMore() const { return start_ < buffer_.size(); }

private:
  int descriptor_;
  std::string buffer_;
  std::size_t start_ = 0;
};

/// A thread that answers each request with its id, until the other end closes; and that other end.
class Peer {
public:
  Peer() {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_.data()) != 0)
      std::abort();
    thread_ = std::thread([descriptor = ends_[1]] {
      constexpr std::size_t idStart = std::string_view("{\"id\":").size();
      BareReader reader(descriptor);
      std::string answers;
      for (auto body = reader.next(); !body.empty(); body = reader.next()) {
        const std::string id(body.substr(idStart, body.find(',') - idStart));
        answers += framed("{\"id\":" + id + R"(,"jsonrpc":"2.0","result":)" + id + "}");
        if (reader.hasMore())
          continue;
        writeAll(descriptor, answers);
        answers.clear();
      }
      ::close(descriptor);
    });
  }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;
  /// After the other end was closed.
  ~Peer() { thread_.join(); }

  [[nodiscard]] int end() const noexcept { return ends_[0]; }

private:
  std::array<int, 2> ends_{};
  std::thread thread_;
};

void exchangeBare(bench::State& state) {
  const Peer peer;
  BareReader reader(peer.end());
  std::int64_t id = 0;
  const auto send = [&] {
    const std::string number = std::to_string(id++);
    writeAll(peer.end(),
             framed("{\"id\":" + number +
                    R"(,"jsonrpc":"2.0","method":"echo","params":{"number":)" + number + "}}"));
  };
  for (auto _ : state) {
    for (std::int64_t sent = 0; sent < state.size(); ++sent)
      send();
    for (std::int64_t received = 0; received < state.size() * requests; ++received) {
      if (reader.next().empty())
        std::abort();
      if (received < state.size() * (requests - 1))
        send();
    }
  }
  ::close(peer.end());
}

Task<void> sendInTurn(std::shared_ptr<JSONRPCSession> session) {
  for (std::int64_t number = 0; number < requests; ++number) {
    if (co_await session->send(Echo{number}) < 0)
      std::abort();
  }
}

Task<void> exchange(bench::State* state, std::shared_ptr<JSONRPCSession> session,
                    std::shared_ptr<AsyncDescriptor> socket) {
  for (auto _ : *state) {
    std::vector<TaskHandle<>> senders;
    for (std::int64_t sender = 0; sender < state->size(); ++sender)
      senders.push_back(spawn(session->executor(), [=] { return sendInTurn(session); }));
    for (TaskHandle<>& sender : senders)
      co_await sender.value();
  }
  socket->close();
}

/// As an object does that shares the session's executor.
template <class Body>
Task<void> onExecutor(Executor& executor, Body body) {
  co_await spawn(executor, std::move(body)).value();
}

void exchangeWithSession(bench::State& state) {
  const Peer peer;
  const auto socket = AsyncDescriptor::adopt(peer.end());
  mainExecutor().run([&] {
    auto stream = StreamingIO::subprocess(AsyncBytes(socket), InputWriter(socket));
    return JSONRPCSession::run(
        {.messageFramer = std::make_unique<BaseProtocolMessageFramer>(std::move(stream))},
        [&](std::shared_ptr<JSONRPCSession> session) {
          return onExecutor(session->executor(), [&state, session, socket] {
            return exchange(&state, session, socket);
          });
        });
  });
}

[[maybe_unused]] const bool registered = bench::registerPair({.name = "session/requests",
                                                              .floor = exchangeBare,
                                                              .ours = exchangeWithSession,
                                                              .sizes = {1, inFlight},
                                                              .clock = bench::Clock::wall});

} // namespace

} // namespace velmar
