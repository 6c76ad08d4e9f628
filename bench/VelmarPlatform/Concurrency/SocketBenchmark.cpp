// A message of 100 bytes to a peer on a Unix socket and back, as a session of the engine would read
// it. The floor is a thread in bare blocking calls; both talk to the same peer, another such
// thread.
//
// A round trip is two wakes of threads and little else, so it is wall time that counts here: at
// most 2.5 times the floor. Instructions of the looping thread alone would say nothing, and so no
// bound is checked.

#include "VelmarPlatform/Concurrency/Socket.h"

#include "VelmarPlatform/Concurrency/Descriptor.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "bench/Pair.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace velmar {

namespace {

using Message = std::array<std::byte, 100>;

/// A thread that sends each message back, until the other end closes; and that other end.
class Peer {
public:
  Peer() {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_.data()) != 0)
      std::abort();
    thread_ = std::thread([descriptor = ends_[1]] {
      Message message{};
      while (::read(descriptor, message.data(), message.size()) > 0)
        if (::write(descriptor, message.data(), message.size()) < 0)
          std::abort();
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

void echoBare(bench::State& state) {
  const Peer peer;
  Message message{};
  for (auto _ : state) {
    if (::write(peer.end(), message.data(), message.size()) < 0 ||
        ::read(peer.end(), message.data(), message.size()) <= 0)
      std::abort();
  }
  ::close(peer.end());
}

class Session : public SerialObject {
public:
  explicit Session(std::shared_ptr<AsyncDescriptor> stream)
      : SerialObject("session", Lane::poolOrReactor), stream_(std::move(stream)) {}

  Task<void> exchange(bench::State& state) {
    Message message{};
    for (auto _ : state) {
      co_await stream_->writeFrom(message);
      if (co_await stream_->readInto(message) == 0)
        std::abort();
    }
    stream_->close();
  }

private:
  std::shared_ptr<AsyncDescriptor> stream_;
};

void echoWithOurs(bench::State& state) {
  const Peer peer;
  mainExecutor().run([&] {
    return std::make_shared<Session>(AsyncDescriptor::adopt(peer.end()))->exchange(state);
  });
}

[[maybe_unused]] const bool registered = bench::registerPair(
    {.name = "socket/echo", .floor = echoBare, .ours = echoWithOurs, .clock = bench::Clock::wall});

} // namespace

} // namespace velmar
