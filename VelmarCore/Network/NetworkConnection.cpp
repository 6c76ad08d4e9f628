#include "VelmarCore/Network/NetworkConnection.h"

#include "VelmarCore/Concurrency/Background.h"
#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Concurrency/CancellationHandler.h"
#include "VelmarPlatform/Concurrency/Continuation.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <utility>

namespace velmar {

namespace {

struct FreeAddresses {
  void operator()(addrinfo* list) const noexcept { ::freeaddrinfo(list); }
};

std::optional<SocketAddress> socketAddressOf(const sockaddr& address, std::uint16_t port) {
  if (address.sa_family == AF_INET) {
    std::array<std::uint8_t, 4> bytes{};
    const auto& record = reinterpret_cast<const sockaddr_in&>(address);
    std::memcpy(bytes.data(), &record.sin_addr, bytes.size());
    return SocketAddress::ipv4(bytes, port);
  }
  if (address.sa_family == AF_INET6) {
    std::array<std::uint8_t, 16> bytes{};
    const auto& record = reinterpret_cast<const sockaddr_in6&>(address);
    std::memcpy(bytes.data(), &record.sin6_addr, bytes.size());
    return SocketAddress::ipv6(bytes, port);
  }
  return std::nullopt;
}

/// Whether a connection may work later without anything else being done.
bool mayPass(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const SystemError& error) {
    switch (error.code()) {
    case EAGAIN:
    case ENETDOWN:
    case ENETUNREACH:
    case EHOSTUNREACH:
      return true;
    default:
      return false;
    }
  } catch (...) { // a boundary: another failure's object is none of ours
    return false;
  }
}

using Addresses = std::vector<SocketAddress>;

/// Waits for the look-up, but not longer than the task wants to: the thread that looks up can't be
/// stopped, so it is left to itself then.
Task<Addresses> lookUp(NetworkParameters parameters, std::string name, NetworkEndpoint::Port port) {
  const auto inBackground =
      spawn([parameters = std::move(parameters), name = std::move(name), port] {
        return runInBackground([parameters, name, port] { return parameters.lookUp(name, port); });
      });
  if (const std::exception_ptr failure = co_await inBackground.waitForEnd())
    std::rethrow_exception(failure);
  co_return co_await inBackground.value();
}

Task<Addresses> addressesOf(NetworkEndpoint endpoint, NetworkParameters parameters) {
  if (const auto* unixSocket = std::get_if<NetworkEndpoint::UnixSocket>(&endpoint.value()))
    co_return Addresses{SocketAddress::unixPath(unixSocket->path.string())};
  const auto& [host, port] = std::get<NetworkEndpoint::HostPort>(endpoint.value());
  if (const auto* address = std::get_if<IPv4Address>(&host.value()))
    co_return Addresses{SocketAddress::ipv4(address->rawValue(), port.rawValue)};
  if (const auto* address = std::get_if<IPv6Address>(&host.value()))
    co_return Addresses{SocketAddress::ipv6(address->rawValue(), port.rawValue)};
  co_return co_await lookUp(std::move(parameters), std::get<std::string>(host.value()), port);
}

SystemError notConnected() {
  return SystemError("The connection isn't open.", ENOTCONN);
}

} // namespace

std::vector<SocketAddress> NetworkParameters::lookUpWithSystem(const std::string& name,
                                                               NetworkEndpoint::Port port) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  const int code = ::getaddrinfo(name.c_str(), nullptr, &hints, &list);
  const std::unique_ptr<addrinfo, FreeAddresses> owner(list);
  if (code != 0)
    throw SystemError("The host “" + name + "” can't be found: " + ::gai_strerror(code) + ".",
                      code == EAI_AGAIN ? EAGAIN : ENOENT);
  Addresses addresses;
  for (const addrinfo* entry = list; entry != nullptr; entry = entry->ai_next)
    if (const auto address = socketAddressOf(*entry->ai_addr, port.rawValue))
      addresses.push_back(*address);
  return addresses;
}

std::shared_ptr<NetworkConnection> NetworkConnection::make(NetworkEndpoint endpoint,
                                                           NetworkParameters parameters) {
  return std::make_shared<NetworkConnection>(Private(), std::move(endpoint), std::move(parameters));
}

NetworkConnection::NetworkConnection(Private, NetworkEndpoint endpoint,
                                     NetworkParameters parameters)
    : endpoint_(std::move(endpoint)), parameters_(std::move(parameters)) {}

NetworkConnection::State NetworkConnection::state() const {
  const std::scoped_lock lock(mutex_);
  return state_;
}

void NetworkConnection::setStateUpdateHandler(StateUpdateHandler handler) {
  const std::scoped_lock lock(mutex_);
  std::swap(handler_, handler); // the old one goes without the lock
}

void NetworkConnection::start(std::shared_ptr<SerialExecutor> queue) {
  precondition(queue != nullptr, "A connection needs a queue.");
  {
    const std::scoped_lock lock(mutex_);
    precondition(queue_ == nullptr, "A connection was started twice.");
    queue_ = std::move(queue);
  }
  setState(Preparing());
  tasks_.spawn([self = shared_from_this()] { return establish(self); });
}

void NetworkConnection::cancel() {
  tasks_.cancelAll();
  std::shared_ptr<AsyncDescriptor> socket;
  {
    const std::scoped_lock lock(mutex_);
    socket = std::exchange(socket_, nullptr);
    stream_.reset();
  }
  if (socket != nullptr)
    socket->close();
  setState(Cancelled());
}

/// Nothing follows on `Cancelled`.
void NetworkConnection::setState(State state) {
  const std::scoped_lock lock(mutex_);
  if (std::holds_alternative<Cancelled>(state_))
    return;
  state_ = state;
  if (queue_ == nullptr)
    return;
  queue_->post([weak = weak_from_this(), state = std::move(state)] {
    const auto self = weak.lock();
    if (self == nullptr)
      return;
    StateUpdateHandler handler;
    {
      const std::scoped_lock handlerLock(self->mutex_);
      handler = self->handler_;
    }
    if (handler)
      handler(state);
  });
}

Task<void> NetworkConnection::establish(std::shared_ptr<NetworkConnection> self) {
  try {
    self->succeed(co_await openSocket(self->endpoint_, self->parameters_));
  } catch (const CancellationError&) {
    // `cancel` has set the state.
  } catch (...) { // whatever it is: it goes to whoever looks at the state
    const auto failure = std::current_exception();
    if (mayPass(failure))
      self->setState(Waiting{failure});
    else
      self->setState(Failed{failure});
  }
}

void NetworkConnection::succeed(const std::shared_ptr<AsyncDescriptor>& socket) {
  {
    const std::scoped_lock lock(mutex_);
    if (std::holds_alternative<Cancelled>(state_))
      return; // the socket goes with its last reference
    socket_ = socket;
    stream_.emplace(Stream{AsyncBytes(socket), InputWriter(socket)});
  }
  setState(Ready());
}

/// The first address that answers. Of those that don't, the last says why.
Task<std::shared_ptr<AsyncDescriptor>> NetworkConnection::openSocket(NetworkEndpoint endpoint,
                                                                     NetworkParameters parameters) {
  const Addresses addresses = co_await addressesOf(endpoint, std::move(parameters));
  std::exception_ptr failure;
  for (const SocketAddress& address : addresses) {
    try {
      co_return co_await connectSocket(address);
    } catch (const SystemError&) {
      failure = std::current_exception();
    }
  }
  if (failure == nullptr)
    throw SystemError("The host of " + endpoint.debugDescription() + " has no address.", ENOENT);
  std::rethrow_exception(failure);
}

NetworkConnection::Stream NetworkConnection::stream() const {
  const std::scoped_lock lock(mutex_);
  if (!stream_)
    throw notConnected();
  return *stream_;
}

Task<NetworkConnection::Received> NetworkConnection::receive(std::int64_t minimumIncompleteLength,
                                                             std::int64_t maximumLength) {
  precondition(minimumIncompleteLength >= 0 && maximumLength >= 1 &&
                   maximumLength >= minimumIncompleteLength,
               "A connection can't receive fewer bytes than the minimum.");
  return receiveFrom(stream(), minimumIncompleteLength, maximumLength);
}

Task<NetworkConnection::Received>
NetworkConnection::receiveFrom(Stream stream, std::int64_t minimum, std::int64_t maximum) {
  const auto most = static_cast<std::size_t>(maximum);
  std::optional<Bytes> data = co_await stream.input.next(std::min(most, AsyncBytes::chunkSize));
  while (data && std::ssize(*data) < minimum) {
    auto more = co_await stream.input.next(std::min(most - data->size(), AsyncBytes::chunkSize));
    if (!more)
      co_return Received{std::move(data), true};
    data->insert(data->end(), more->begin(), more->end());
  }
  const bool isComplete = !data.has_value();
  co_return Received{std::move(data), isComplete};
}

Task<std::optional<Bytes>> NetworkConnection::read(std::int64_t minimumBytes) {
  return readFrom(stream(), minimumBytes);
}

Task<std::optional<Bytes>> NetworkConnection::readFrom(Stream stream, std::int64_t minimum) {
  return detail::readAtLeast(std::move(stream.input), minimum);
}

Task<void> NetworkConnection::send(Bytes content) {
  return stream().output.write(std::move(content));
}

namespace {

/// One attempt.
Task<void> becomeReady(std::shared_ptr<NetworkConnection> connection,
                       std::shared_ptr<SerialExecutor> queue) {
  using Connection = NetworkConnection;
  co_await withContinuation([&](Continuation<> continuation) {
    // The first state that tells takes it. The handler runs on the queue alone.
    auto waiting = std::make_shared<std::optional<Continuation<>>>(std::move(continuation));
    connection->setStateUpdateHandler([waiting](const Connection::State& state) {
      const auto fail = [&](std::exception_ptr failure) {
        if (auto taken = std::exchange(*waiting, std::nullopt))
          std::move(*taken).fail(std::move(failure));
      };
      std::visit(Overloaded{
                     [](const Connection::Setup&) {},
                     [](const Connection::Preparing&) {},
                     [&](const Connection::Waiting& why) { fail(why.error); },
                     [&](const Connection::Failed& why) { fail(why.error); },
                     [&](const Connection::Ready&) {
                       if (auto taken = std::exchange(*waiting, std::nullopt))
                         std::move(*taken).resume();
                     },
                     [&](const Connection::Cancelled&) {
                       fail(std::make_exception_ptr(CancellationError()));
                     },
                 },
                 state);
    });
    connection->start(queue);
  });
}

Task<std::shared_ptr<NetworkConnection>> attempt(NetworkEndpoint endpoint,
                                                 NetworkParameters parameters,
                                                 std::shared_ptr<SerialExecutor> queue) {
  const auto connection = NetworkConnection::make(std::move(endpoint), std::move(parameters));
  std::exception_ptr failure;
  try {
    co_await withTaskCancellationHandler(
        [&] { return becomeReady(connection, queue); },
        [connection, queue] { queue->post([connection] { connection->cancel(); }); });
  } catch (...) { // whatever it is: it goes on when the connection is closed
    failure = std::current_exception();
  }
  connection->setStateUpdateHandler(nullptr);
  if (failure == nullptr)
    co_return connection;
  connection->cancel();
  std::rethrow_exception(failure);
}

} // namespace

Task<std::shared_ptr<NetworkConnection>> connectTo(NetworkEndpoint endpoint,
                                                   ConnectOptions options) {
  const Attempts attempts = options.attempts;
  precondition(attempts.count >= 1, "Connecting takes at least one attempt.");
  if (options.queue == nullptr)
    options.queue = SerialExecutor::make("network-connection");
  for (std::int64_t index = 0;; ++index) {
    std::exception_ptr failure;
    try {
      co_return co_await attempt(endpoint, options.parameters, options.queue);
    } catch (...) { // whatever it is: it is thrown again, or there is another attempt
      failure = std::current_exception();
    }
    checkCancellation();
    if (index == attempts.count - 1)
      std::rethrow_exception(failure);
    if (attempts.delay)
      co_await options.clock->sleepFor(*attempts.delay +
                                       attempts.backoff.value_or(Clock::Duration::zero()));
  }
}

Task<std::shared_ptr<StreamingIO>> connectStream(NetworkEndpoint endpoint, ConnectOptions options) {
  co_return co_await connectTo(std::move(endpoint), std::move(options));
}

} // namespace velmar
