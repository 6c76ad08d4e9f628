#include "VelmarPlatform/Concurrency/Socket.h"

#include "VelmarPlatform/Basics/Error.h"

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace velmar {

namespace {

[[noreturn]] void fail(std::string_view what, int code) {
  throw SystemError(std::string(what) + ": " + systemErrorText(code) + ".", code);
}

const sockaddr* systemAddress(const SocketAddress& address) {
  return reinterpret_cast<const sockaddr*>(address.bytes().data());
}

/// Fails for a Unix socket, which needs no such thing, and otherwise costs speed only.
void sendWithoutDelay(int descriptor) {
  const int on = 1;
  ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

std::shared_ptr<AsyncDescriptor> makeSocket(int family) {
  const int descriptor = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0)
    fail("No socket can be made", errno);
  sendWithoutDelay(descriptor);
  return AsyncDescriptor::adopt(descriptor);
}

} // namespace

template <class Record>
SocketAddress SocketAddress::from(const Record& record) {
  static_assert(sizeof(Record) <= sizeof(storage_));
  SocketAddress address;
  std::memcpy(address.storage_.data(), &record, sizeof record);
  address.length_ = sizeof record;
  return address;
}

SocketAddress SocketAddress::unixPath(std::string_view path) {
  sockaddr_un record{};
  record.sun_family = AF_UNIX;
  if (path.empty() || path.find('\0') != std::string_view::npos)
    fail("The socket's path is invalid", EINVAL);
  if (path.size() >= sizeof record.sun_path)
    fail("The socket's path is too long", ENAMETOOLONG);
  std::memcpy(record.sun_path, path.data(), path.size());
  return from(record);
}

SocketAddress SocketAddress::ipv4(std::array<std::uint8_t, 4> address, std::uint16_t port) {
  sockaddr_in record{};
  record.sin_family = AF_INET;
  record.sin_port = htons(port);
  std::memcpy(&record.sin_addr, address.data(), address.size());
  return from(record);
}

SocketAddress SocketAddress::ipv6(const std::array<std::uint8_t, 16>& address, std::uint16_t port) {
  sockaddr_in6 record{};
  record.sin6_family = AF_INET6;
  record.sin6_port = htons(port);
  std::memcpy(&record.sin6_addr, address.data(), address.size());
  return from(record);
}

int SocketAddress::family() const noexcept {
  return systemAddress(*this)->sa_family;
}

std::uint16_t SocketAddress::port() const noexcept {
  switch (family()) {
  case AF_INET:
    return ntohs(reinterpret_cast<const sockaddr_in*>(storage_.data())->sin_port);
  case AF_INET6:
    return ntohs(reinterpret_cast<const sockaddr_in6*>(storage_.data())->sin6_port);
  default:
    return 0;
  }
}

std::pair<std::shared_ptr<AsyncDescriptor>, std::shared_ptr<AsyncDescriptor>> makeSocketPair() {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) < 0)
    fail("No sockets can be made", errno);
  auto first = AsyncDescriptor::adopt(ends[0]);
  return {std::move(first), AsyncDescriptor::adopt(ends[1])};
}

Task<std::shared_ptr<AsyncDescriptor>> connectSocket(SocketAddress address) {
  auto socket = makeSocket(address.family());
  if (::connect(socket->descriptor(), systemAddress(address),
                static_cast<socklen_t>(address.bytes().size())) == 0)
    co_return socket;
  // An interrupted connect goes on by itself, like one that takes its time.
  if (errno != EINPROGRESS && errno != EINTR)
    fail("Connecting failed", errno);
  co_await socket->waitUntilWritable();
  int code = 0;
  socklen_t length = sizeof code;
  if (::getsockopt(socket->descriptor(), SOL_SOCKET, SO_ERROR, &code, &length) < 0)
    code = errno;
  if (code != 0)
    fail("Connecting failed", code);
  co_return socket;
}

ListeningSocket::ListeningSocket(const SocketAddress& address)
    : descriptor_(makeSocket(address.family())) {
  const int on = 1;
  if (address.family() != AF_UNIX)
    ::setsockopt(descriptor_->descriptor(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (::bind(descriptor_->descriptor(), systemAddress(address),
             static_cast<socklen_t>(address.bytes().size())) < 0 ||
      ::listen(descriptor_->descriptor(), SOMAXCONN) < 0)
    fail("Listening failed", errno);
}

SocketAddress ListeningSocket::address() const {
  SocketAddress address;
  auto length = static_cast<socklen_t>(address.storage_.size());
  if (::getsockname(descriptor_->descriptor(), reinterpret_cast<sockaddr*>(address.storage_.data()),
                    &length) < 0)
    fail("The socket has no address", errno);
  address.length_ = length;
  return address;
}

Task<std::shared_ptr<AsyncDescriptor>>
ListeningSocket::accept(std::shared_ptr<AsyncDescriptor> listener) {
  const std::int64_t descriptor = co_await listener->perform(
      detail::Direction::reading, "Accepting failed", [](int listening) -> std::int64_t {
        const int accepted = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (accepted < 0 && errno == ECONNABORTED)
          errno = EINTR; // that peer has gone; there is the next one to wait for
        return accepted;
      });
  sendWithoutDelay(static_cast<int>(descriptor));
  co_return AsyncDescriptor::adopt(static_cast<int>(descriptor));
}

} // namespace velmar
