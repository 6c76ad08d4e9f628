#include "VelmarCore/Network/NetworkEndpoint.h"

#include "VelmarPlatform/Basics/Overloaded.h"

#include <charconv>
#include <ostream>

namespace velmar {

namespace {

NetworkEndpoint::Host::Value hostValueOf(std::string_view text) {
  if (const auto address = IPv4Address::fromText(text))
    return *address;
  if (const auto address = IPv6Address::fromText(text))
    return *address;
  return std::string(text);
}

} // namespace

NetworkEndpoint::Host::Host(std::string_view text) : value_(hostValueOf(text)) {}

std::string NetworkEndpoint::Host::debugDescription() const {
  return std::visit(Overloaded{
                        [](const std::string& name) { return name; },
                        [](const auto& address) { return address.debugDescription(); },
                    },
                    value_);
}

using Port = NetworkEndpoint::Port;
constexpr Port Port::any = 0;
constexpr Port Port::ssh = 22;
constexpr Port Port::telnet = 23;
constexpr Port Port::smtp = 25;
constexpr Port Port::gopher = 70;
constexpr Port Port::http = 80;
constexpr Port Port::pop = 110;
constexpr Port Port::ntp = 123;
constexpr Port Port::imap = 143;
constexpr Port Port::irc = 194;
constexpr Port Port::https = 443;
constexpr Port Port::imaps = 993;
constexpr Port Port::socks = 1080;

std::optional<Port> Port::fromText(std::string_view text) {
  std::uint16_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end)
    return std::nullopt;
  return Port(number);
}

std::string NetworkEndpoint::debugDescription() const {
  return std::visit(Overloaded{
                        [](const HostPort& place) {
                          return place.host.debugDescription() + ":" +
                                 place.port.debugDescription();
                        },
                        [](const UnixSocket& socket) { return socket.path.description(); },
                    },
                    value_);
}

std::ostream& operator<<(std::ostream& stream, const NetworkEndpoint& endpoint) {
  return stream << endpoint.debugDescription();
}

} // namespace velmar
