// Places on the network, named without looking anything up.
#pragma once

#include "VelmarCore/Network/IPAddress.h"
#include "VelmarPlatform/Files/FilePath.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace velmar {

/// A host and a port, or the path of a Unix socket. A plain value.
class NetworkEndpoint {
public:
  /// A name or an address.
  class Host {
  public:
    using Value = std::variant<std::string, IPv4Address, IPv6Address>;

    Host(IPv4Address address) : value_(address) {} // NOLINT(google-explicit-constructor): a host
    Host(IPv6Address address) : value_(address) {} // NOLINT(google-explicit-constructor): a host
    /// An address if `text` is one in numbers, else a name.
    Host(std::string_view text); // NOLINT(google-explicit-constructor): a text names a host
    Host(const char* text) : Host(std::string_view(text)) {} // NOLINT(google-explicit-constructor)
    /// A name, whatever it looks like.
    [[nodiscard]] static Host name(std::string name) { return Host(Value(std::move(name))); }

    [[nodiscard]] const Value& value() const noexcept { return value_; }
    /// The name, or the address's usual spelling.
    [[nodiscard]] std::string debugDescription() const;
    bool operator==(const Host&) const = default;

  private:
    explicit Host(Value value) : value_(std::move(value)) {}
    Value value_;
  };

  struct Port {
    std::uint16_t rawValue = 0;

    static const Port any, ssh, telnet, smtp, gopher, http, pop, ntp, imap, irc, https, imaps,
        socks;

    Port() = default;
    constexpr Port(std::uint16_t number) // NOLINT(google-explicit-constructor): a number is a port
        : rawValue(number) {}
    /// Absent unless `text` is a decimal number from 0 to 65535: digits and nothing else.
    [[nodiscard]] static std::optional<Port> fromText(std::string_view text);

    [[nodiscard]] std::string debugDescription() const { return std::to_string(rawValue); }
    auto operator<=>(const Port&) const = default;
  };

  struct HostPort {
    Host host;
    Port port;
    bool operator==(const HostPort&) const = default;
  };
  struct UnixSocket {
    FilePath path;
    bool operator==(const UnixSocket&) const = default;
  };

  [[nodiscard]] static NetworkEndpoint hostPort(Host host, Port port) {
    return NetworkEndpoint(HostPort{std::move(host), port});
  }
  [[nodiscard]] static NetworkEndpoint unixSocket(FilePath path) {
    return NetworkEndpoint(UnixSocket{std::move(path)});
  }

  [[nodiscard]] const std::variant<HostPort, UnixSocket>& value() const noexcept { return value_; }
  /// "example:8080", without brackets around an IPv6 address, or the path.
  [[nodiscard]] std::string debugDescription() const;
  bool operator==(const NetworkEndpoint&) const = default;

private:
  explicit NetworkEndpoint(std::variant<HostPort, UnixSocket> value) : value_(std::move(value)) {}
  std::variant<HostPort, UnixSocket> value_;
};

/// Writes the debug description.
std::ostream& operator<<(std::ostream& stream, const NetworkEndpoint& endpoint);

} // namespace velmar

template <>
struct std::hash<velmar::NetworkEndpoint::Host> {
  std::size_t operator()(const velmar::NetworkEndpoint::Host& host) const noexcept {
    return std::hash<velmar::NetworkEndpoint::Host::Value>()(host.value());
  }
};

template <>
struct std::hash<velmar::NetworkEndpoint::Port> {
  std::size_t operator()(velmar::NetworkEndpoint::Port port) const noexcept {
    return std::hash<std::uint16_t>()(port.rawValue);
  }
};

template <>
struct std::hash<velmar::NetworkEndpoint> {
  std::size_t operator()(const velmar::NetworkEndpoint& endpoint) const noexcept {
    return std::hash<std::string>()(endpoint.debugDescription());
  }
};
