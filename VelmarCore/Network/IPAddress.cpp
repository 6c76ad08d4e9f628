#include "VelmarCore/Network/IPAddress.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <ostream>
#include <sys/socket.h>

namespace velmar {

namespace {

struct FreeAddresses {
  void operator()(addrinfo* list) const noexcept { ::freeaddrinfo(list); }
};

template <std::size_t byteCount>
constexpr int family = byteCount == 4 ? AF_INET : AF_INET6;

/// The address in a `sockaddr` of the family.
std::span<const std::uint8_t> addressBytes(const sockaddr& address) {
  if (address.sa_family == AF_INET) {
    const auto& record = reinterpret_cast<const sockaddr_in&>(address);
    return {reinterpret_cast<const std::uint8_t*>(&record.sin_addr), sizeof record.sin_addr};
  }
  const auto& record = reinterpret_cast<const sockaddr_in6&>(address);
  return {reinterpret_cast<const std::uint8_t*>(&record.sin6_addr), sizeof record.sin6_addr};
}

constexpr IPv6Address startingWith(std::uint8_t first, std::uint8_t second, std::uint8_t last) {
  return IPv6Address({first, second, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, last});
}

constexpr IPv6Address::RawValue allBits() {
  IPv6Address::RawValue bytes{};
  bytes.fill(0xff);
  return bytes;
}

/// Whether the first `count` bytes are zero.
bool startsWithZeros(const IPv6Address& address, std::ptrdiff_t count) {
  const auto& bytes = address.rawValue();
  return std::all_of(bytes.begin(), bytes.begin() + count, [](auto byte) { return byte == 0; });
}

template <class Address>
std::size_t hashOf(const Address& address) {
  const auto& bytes = address.rawValue();
  return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

} // namespace

template <class Self, std::size_t byteCount>
std::optional<Self> IPAddress<Self, byteCount>::fromText(std::string_view text) {
  if (text.empty() || text.find('\0') != std::string_view::npos)
    return std::nullopt;
  // The system would make an IPv4 address of an IPv6 one that maps it.
  if (byteCount == 4 && text.find(':') != std::string_view::npos)
    return std::nullopt;
  addrinfo hints{};
  hints.ai_flags = AI_NUMERICHOST;
  hints.ai_family = family<byteCount>;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  if (::getaddrinfo(std::string(text).c_str(), nullptr, &hints, &list) != 0)
    return std::nullopt;
  const std::unique_ptr<addrinfo, FreeAddresses> owner(list);
  return fromRawValue(addressBytes(*list->ai_addr));
}

template <class Self, std::size_t byteCount>
std::string IPAddress<Self, byteCount>::debugDescription() const {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const char* written = ::inet_ntop(family<byteCount>, rawValue_.data(), text.data(), text.size());
  return written == nullptr ? "" : written;
}

template class IPAddress<IPv4Address, 4>;
template class IPAddress<IPv6Address, 16>;

constexpr IPv4Address IPv4Address::any({0, 0, 0, 0});
constexpr IPv4Address IPv4Address::broadcast({255, 255, 255, 255});
constexpr IPv4Address IPv4Address::loopback({127, 0, 0, 1});
constexpr IPv4Address IPv4Address::allHostsGroup({224, 0, 0, 1});
constexpr IPv4Address IPv4Address::allRoutersGroup({224, 0, 0, 2});
constexpr IPv4Address IPv4Address::allReportsGroup({224, 0, 0, 22});
constexpr IPv4Address IPv4Address::mdnsGroup({224, 0, 0, 251});

constexpr IPv6Address IPv6Address::any;
constexpr IPv6Address IPv6Address::broadcast(allBits());
constexpr IPv6Address IPv6Address::loopback = startingWith(0, 0, 1);
constexpr IPv6Address IPv6Address::nodeLocalNodes = startingWith(0xff, 1, 1);
constexpr IPv6Address IPv6Address::linkLocalNodes = startingWith(0xff, 2, 1);
constexpr IPv6Address IPv6Address::linkLocalRouters = startingWith(0xff, 2, 2);

bool IPv6Address::isIPv4Compatible() const noexcept {
  return startsWithZeros(*this, 12) && *this != any && *this != loopback;
}

bool IPv6Address::isIPv4Mapped() const noexcept {
  return startsWithZeros(*this, 10) && rawValue_[10] == 0xff && rawValue_[11] == 0xff;
}

std::optional<IPv4Address> IPv6Address::asIPv4() const noexcept {
  if (!isIPv4Mapped() && !isIPv4Compatible())
    return std::nullopt;
  return IPv4Address({rawValue_[12], rawValue_[13], rawValue_[14], rawValue_[15]});
}

std::optional<IPv6Address::Scope> IPv6Address::multicastScope() const noexcept {
  switch (const auto scope = static_cast<Scope>(rawValue_[1] & 0xf)) {
  case Scope::nodeLocal:
  case Scope::linkLocal:
  case Scope::siteLocal:
  case Scope::organizationLocal:
  case Scope::global:
    return scope;
  }
  return std::nullopt;
}

std::ostream& operator<<(std::ostream& stream, const IPv4Address& address) {
  return stream << address.debugDescription();
}
std::ostream& operator<<(std::ostream& stream, const IPv6Address& address) {
  return stream << address.debugDescription();
}

} // namespace velmar

std::size_t
std::hash<velmar::IPv4Address>::operator()(const velmar::IPv4Address& address) const noexcept {
  return velmar::hashOf(address);
}
std::size_t
std::hash<velmar::IPv6Address>::operator()(const velmar::IPv6Address& address) const noexcept {
  return velmar::hashOf(address);
}
