// Addresses of the Internet protocols as values.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar {

/// What the two kinds of address share: a number of bytes in network order.
template <class Self, std::size_t byteCount>
class IPAddress {
public:
  using RawValue = std::array<std::uint8_t, byteCount>;

  constexpr IPAddress() = default; // all bytes zero
  constexpr explicit IPAddress(const RawValue& bytes) noexcept : rawValue_(bytes) {}

  /// Absent unless there are exactly as many bytes as an address has.
  [[nodiscard]] static std::optional<Self> fromRawValue(std::span<const std::uint8_t> bytes) {
    if (bytes.size() != byteCount)
      return std::nullopt;
    RawValue raw{};
    std::copy(bytes.begin(), bytes.end(), raw.begin());
    return Self(raw);
  }
  /// Absent unless `text` is such an address in numbers, in any spelling that the system knows.
  /// Never looks up a name.
  [[nodiscard]] static std::optional<Self> fromText(std::string_view text);

  [[nodiscard]] constexpr const RawValue& rawValue() const noexcept { return rawValue_; }
  /// The usual spelling: "127.0.0.1", "::1".
  [[nodiscard]] std::string debugDescription() const;

  bool operator==(const IPAddress&) const = default;

protected:
  RawValue rawValue_{};
};

class IPv4Address : public IPAddress<IPv4Address, 4> {
public:
  using IPAddress::IPAddress;

  static const IPv4Address any, broadcast, loopback, allHostsGroup, allRoutersGroup,
      allReportsGroup, mdnsGroup;

  [[nodiscard]] constexpr bool isLoopback() const noexcept { return rawValue_[0] == 127; }
  [[nodiscard]] constexpr bool isLinkLocal() const noexcept {
    return rawValue_[0] == 169 && rawValue_[1] == 254;
  }
  [[nodiscard]] constexpr bool isMulticast() const noexcept { return rawValue_[0] >> 4 == 0xe; }
};

class IPv6Address : public IPAddress<IPv6Address, 16> {
public:
  using IPAddress::IPAddress;

  /// How far a multicast address reaches.
  enum class Scope : std::uint8_t {
    nodeLocal = 1,
    linkLocal = 2,
    siteLocal = 5,
    organizationLocal = 8,
    global = 14,
  };

  static const IPv6Address any, broadcast, loopback, nodeLocalNodes, linkLocalNodes,
      linkLocalRouters;

  [[nodiscard]] bool isAny() const noexcept { return *this == any; }
  [[nodiscard]] bool isLoopback() const noexcept { return *this == loopback; }
  /// 96 zero bits in front of something else than 0 and 1.
  [[nodiscard]] bool isIPv4Compatible() const noexcept;
  [[nodiscard]] bool isIPv4Mapped() const noexcept;
  [[nodiscard]] bool is6to4() const noexcept { return rawValue_[0] == 0x20 && rawValue_[1] == 2; }
  [[nodiscard]] bool isLinkLocal() const noexcept {
    return rawValue_[0] == 0xfe && (rawValue_[1] & 0xc0) == 0x80;
  }
  [[nodiscard]] bool isMulticast() const noexcept { return rawValue_[0] == 0xff; }
  [[nodiscard]] bool isUniqueLocal() const noexcept { return (rawValue_[0] & 0xfe) == 0xfc; }
  /// The last four bytes of an address that is IPv4-mapped or IPv4-compatible.
  [[nodiscard]] std::optional<IPv4Address> asIPv4() const noexcept;
  /// The low four bits of the second byte, absent if they have no name. Whether the address is a
  /// multicast one isn't asked.
  [[nodiscard]] std::optional<Scope> multicastScope() const noexcept;
};

// Write the debug description.
std::ostream& operator<<(std::ostream& stream, const IPv4Address& address);
std::ostream& operator<<(std::ostream& stream, const IPv6Address& address);

} // namespace velmar

template <>
struct std::hash<velmar::IPv4Address> {
  std::size_t operator()(const velmar::IPv4Address& address) const noexcept;
};

template <>
struct std::hash<velmar::IPv6Address> {
  std::size_t operator()(const velmar::IPv6Address& address) const noexcept;
};
