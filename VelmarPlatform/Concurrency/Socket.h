// Stream sockets, TCP and Unix: how to get an AsyncDescriptor that leads to somebody.
#pragma once

#include "VelmarPlatform/Concurrency/Descriptor.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace velmar {

/// A place to connect to or listen at, as the system writes it. Numeric: names are resolved
/// elsewhere.
class SocketAddress {
public:
  /// A socket in the file system. Throws SystemError with ENAMETOOLONG for a path that doesn't fit
  /// (about 100 bytes), and with EINVAL for one that is empty or has a zero byte.
  [[nodiscard]] static SocketAddress unixPath(std::string_view path);
  /// `address` in network order; port 0 has the system choose one where that makes sense.
  [[nodiscard]] static SocketAddress ipv4(std::array<std::uint8_t, 4> address, std::uint16_t port);
  [[nodiscard]] static SocketAddress ipv6(const std::array<std::uint8_t, 16>& address,
                                          std::uint16_t port);

  /// For system calls: a `sockaddr` of the family's own kind.
  [[nodiscard]] std::span<const std::byte> bytes() const noexcept {
    return std::span(storage_).first(length_);
  }
  /// The port, or 0 for a Unix socket.
  [[nodiscard]] std::uint16_t port() const noexcept;
  [[nodiscard]] int family() const noexcept;

private:
  friend class ListeningSocket;
  SocketAddress() = default;
  template <class Record>
  [[nodiscard]] static SocketAddress from(const Record& record);

  alignas(std::max_align_t) std::array<std::byte, 128> storage_{};
  std::size_t length_ = 0;
};

/// A connected pair, such as for tests and for children.
[[nodiscard]] std::pair<std::shared_ptr<AsyncDescriptor>, std::shared_ptr<AsyncDescriptor>>
makeSocketPair();

/// Connects. Throws SystemError when nobody is there, and CancellationError in a cancelled task.
/// Small messages leave at once (no delay by Nagle's algorithm).
[[nodiscard]] Task<std::shared_ptr<AsyncDescriptor>> connectSocket(SocketAddress address);

/// A socket that others connect to.
class ListeningSocket {
public:
  /// Starts to listen. Throws SystemError. A Unix socket's file is made, and is the caller's to
  /// remove.
  explicit ListeningSocket(const SocketAddress& address);

  /// The next connection. Throws like AsyncDescriptor's operations. Keep the object until it has
  /// ended.
  [[nodiscard]] Task<std::shared_ptr<AsyncDescriptor>> accept() { return accept(descriptor_); }
  /// Where it listens, with the port that the system chose.
  [[nodiscard]] SocketAddress address() const;
  void close() noexcept { descriptor_->close(); }

private:
  static Task<std::shared_ptr<AsyncDescriptor>> accept(std::shared_ptr<AsyncDescriptor> listener);

  std::shared_ptr<AsyncDescriptor> descriptor_;
};

} // namespace velmar
