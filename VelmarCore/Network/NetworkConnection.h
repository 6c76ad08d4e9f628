// Connections to network endpoints, as objects with a state; and connecting with several attempts,
// which is how one reaches a server that has just been started and may not listen yet.
//
//   auto stream = co_await connectStream(endpoint, {.attempts = Attempts::retry(20, 250ms)});
#pragma once

#include "VelmarCore/Network/NetworkEndpoint.h"
#include "VelmarCore/Network/StreamingIO.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/SerialExecutor.h"
#include "VelmarPlatform/Concurrency/Socket.h"
#include "VelmarPlatform/Concurrency/Spawn.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace velmar {

/// What connections are made with. The functions may be called on any thread.
struct NetworkParameters {
  /// All addresses of a host that goes by a name, the ones to try first in front. It may block: it
  /// has a thread of its own, on which it may go on long after nobody waits for it any more. Throws
  /// an Error.
  std::function<std::vector<SocketAddress>(const std::string& name, NetworkEndpoint::Port port)>
      lookUp = lookUpWithSystem;

  /// Asks the system. Throws SystemError with EAGAIN for a failure that may pass, and with ENOENT
  /// for a name that isn't known.
  [[nodiscard]] static std::vector<SocketAddress> lookUpWithSystem(const std::string& name,
                                                                   NetworkEndpoint::Port port);
};

/// One connection: made, started once, and at its end cancelled or failed. Any thread. Held by
/// `std::shared_ptr`; the descriptor is closed when it is cancelled or the last reference goes.
class NetworkConnection final : public StreamingIO,
                                public std::enable_shared_from_this<NetworkConnection> {
  struct Private {};

public:
  struct Setup {};     ///< Not started.
  struct Preparing {}; ///< Looking up the name, or connecting.
  /// It can't be connected for now: the network or the name service isn't there. It stays so until
  /// it is cancelled.
  struct Waiting {
    std::exception_ptr error;
  };
  struct Ready {};
  struct Failed { ///< Nobody answers, or the place doesn't exist.
    std::exception_ptr error;
  };
  struct Cancelled {};
  using State = std::variant<Setup, Preparing, Waiting, Ready, Failed, Cancelled>;
  using StateUpdateHandler = std::function<void(const State&)>;

  [[nodiscard]] static std::shared_ptr<NetworkConnection> make(NetworkEndpoint endpoint,
                                                               NetworkParameters parameters = {});
  NetworkConnection(Private, NetworkEndpoint endpoint, NetworkParameters parameters);

  [[nodiscard]] const NetworkEndpoint& endpoint() const noexcept { return endpoint_; }
  [[nodiscard]] State state() const;
  /// Has `handler` called, on the queue of `start`, for every change of the state from now on; an
  /// empty one is none. Changes that were queued before go to the new one.
  void setStateUpdateHandler(StateUpdateHandler handler);
  /// Begins to connect. Once.
  void start(std::shared_ptr<SerialExecutor> queue);
  /// Gives up, in whatever state it is, and closes. Reads and writes that wait throw SystemError
  /// with ECANCELED.
  void cancel();

  struct Received {
    std::optional<Bytes> data; ///< Absent at the end of the stream.
    bool isComplete = false;   ///< Whether the end was seen.
  };
  /// Waits for at least `minimumIncompleteLength` bytes, or the end. Gives at most
  /// `maximumLength`, which isn't smaller. Throws SystemError, also if it isn't connected.
  [[nodiscard]] Task<Received> receive(std::int64_t minimumIncompleteLength,
                                       std::int64_t maximumLength);
  /// Throws SystemError, also if it isn't connected.
  [[nodiscard]] Task<void> send(Bytes content);

  [[nodiscard]] Task<std::optional<Bytes>> read(std::int64_t minimumBytes) override;
  [[nodiscard]] Task<void> write(Bytes bytes) override { return send(std::move(bytes)); }

private:
  struct Stream {
    AsyncBytes input;
    InputWriter output;
  };

  static Task<void> establish(std::shared_ptr<NetworkConnection> self);
  static Task<std::shared_ptr<AsyncDescriptor>> openSocket(NetworkEndpoint endpoint,
                                                           NetworkParameters parameters);
  static Task<Received> receiveFrom(Stream stream, std::int64_t minimum, std::int64_t maximum);
  static Task<std::optional<Bytes>> readFrom(Stream stream, std::int64_t minimum);
  void succeed(const std::shared_ptr<AsyncDescriptor>& socket);
  void setState(State state);
  [[nodiscard]] Stream stream() const;

  const NetworkEndpoint endpoint_;
  const NetworkParameters parameters_;
  mutable std::mutex mutex_;
  // Guarded by `mutex_`.
  State state_ = Setup();
  StateUpdateHandler handler_;
  std::shared_ptr<SerialExecutor> queue_;
  std::shared_ptr<AsyncDescriptor> socket_;
  std::optional<Stream> stream_;
  TaskScope tasks_;
};

/// How often to try.
struct Attempts {
  std::int64_t count = 1;                 ///< At least 1.
  std::optional<Clock::Duration> delay;   ///< Between two attempts; absent: none.
  std::optional<Clock::Duration> backoff; ///< In addition to a `delay`.

  [[nodiscard]] static Attempts once() { return {}; }
  [[nodiscard]] static Attempts retry(std::int64_t upTo,
                                      std::optional<Clock::Duration> delay = std::nullopt,
                                      std::optional<Clock::Duration> backoff = std::nullopt) {
    return {upTo, delay, backoff};
  }
};

struct ConnectOptions {
  Attempts attempts = Attempts::once();
  NetworkParameters parameters = {};
  /// Where the connection tells its states; absent: a queue of its own.
  std::shared_ptr<SerialExecutor> queue = nullptr;
  /// What delays are measured with. Outlives the call.
  Clock* clock = &monotonicClock();
};

/// A connection that is ready. Throws the failure of the last attempt; a connection that would have
/// to wait for the network counts as failed. Throws CancellationError in a cancelled task, at once.
[[nodiscard]] Task<std::shared_ptr<NetworkConnection>> connectTo(NetworkEndpoint endpoint,
                                                                 ConnectOptions options = {});
/// The same as a stream.
[[nodiscard]] Task<std::shared_ptr<StreamingIO>> connectStream(NetworkEndpoint endpoint,
                                                               ConnectOptions options = {});

} // namespace velmar
