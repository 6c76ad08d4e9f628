#include "VelmarCore/Network/NetworkEndpoint.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace velmar {
namespace {

using Host = NetworkEndpoint::Host;
using Port = NetworkEndpoint::Port;

TEST(NetworkEndpoint, TellsAddressesFromNames) {
  struct Case {
    const char* text;
    std::size_t kind; // 0 a name, 1 and 2 the addresses
    const char* description;
  };
  const Case cases[] = {
      {"127.0.0.1", 1, "127.0.0.1"},
      {"127.1", 1, "127.0.0.1"},
      {"::1", 2, "::1"},
      {"FE80::0:1", 2, "fe80::1"},
      {"::ffff:1.2.3.4", 2, "::ffff:1.2.3.4"},
      {"localhost", 0, "localhost"},
      {"256.0.0.1", 0, "256.0.0.1"},
      {"[::1]", 0, "[::1]"},
      {"", 0, ""},
  };
  for (const Case& row : cases) {
    const Host host(row.text);
    EXPECT_EQ(host.value().index(), row.kind) << row.text;
    EXPECT_EQ(host.debugDescription(), row.description);
  }
  EXPECT_EQ(Host(std::string_view("1.2.3.4\0x", 9)).value().index(), 0U);
  EXPECT_NE(Host::name("::1"), Host("::1"));
}

TEST(NetworkEndpoint, PortsAreDecimalNumbers) {
  for (const auto& [text, number] : {std::pair{"0", 0}, {"8080", 8080}, {"65535", 65535}})
    EXPECT_EQ(Port::fromText(text), Port(static_cast<std::uint16_t>(number)));
  for (const char* text : {"", "65536", "-1", "+1", " 1", "1 ", "0x10", "http", "99999999999"})
    EXPECT_EQ(Port::fromText(text), std::nullopt) << text;
  EXPECT_EQ(Port::https.rawValue, 443);
}

TEST(NetworkEndpoint, DescribesItself) {
  EXPECT_EQ(NetworkEndpoint::hostPort("example", 8080).debugDescription(), "example:8080");
  EXPECT_EQ(NetworkEndpoint::hostPort("::1", 80).debugDescription(), "::1:80");
  EXPECT_EQ(NetworkEndpoint::unixSocket(FilePath("/base/socket")).debugDescription(),
            "/base/socket");
  const std::unordered_set<NetworkEndpoint> endpoints = {
      NetworkEndpoint::hostPort("::1", 80), NetworkEndpoint::hostPort("::1", 80),
      NetworkEndpoint::hostPort(Host::name("::1"), 80)};
  EXPECT_EQ(endpoints.size(), 2U);
}

TEST(IPAddress, KnowsWhatKindItIs) {
  struct Case {
    const char* text;
    const char*
        kinds; // loopback, local to a link, multicast, unique local, mapped, compatible, 6to4
    const char* asIPv4;
  };
  const Case cases[] = {
      {"127.5.6.7", "l", ""},
      {"128.0.0.1", "", ""},
      {"169.254.1.1", "k", ""},
      {"169.255.1.1", "", ""},
      {"224.0.0.0", "m", ""},
      {"239.255.255.255", "m", ""},
      {"240.0.0.0", "", ""},
      {"::1", "l", ""},
      {"::", "", ""},
      {"::2", "c", "0.0.0.2"},
      {"::1.2.3.4", "c", "1.2.3.4"},
      {"::ffff:1.2.3.4", "p", "1.2.3.4"},
      {"febf::1", "k", ""},
      {"fec0::1", "", ""},
      {"ff02::1", "m", ""},
      {"fdff::1", "u", ""},
      {"fe00::1", "", ""},
      {"2002:102::1", "6", ""},
      {"2003::1", "", ""},
      {"::1:ffff:0:0", "", ""},
  };
  for (const Case& row : cases) {
    std::string kinds;
    std::string asIPv4;
    const auto note = [&](bool is, char kind) { kinds += is ? std::string(1, kind) : ""; };
    if (const auto four = IPv4Address::fromText(row.text)) {
      note(four->isLoopback(), 'l'), note(four->isLinkLocal(), 'k'), note(four->isMulticast(), 'm');
    } else {
      const auto six = IPv6Address::fromText(row.text).value();
      note(six.isLoopback(), 'l'), note(six.isLinkLocal(), 'k'), note(six.isMulticast(), 'm');
      note(six.isUniqueLocal(), 'u'), note(six.isIPv4Mapped(), 'p');
      note(six.isIPv4Compatible(), 'c'), note(six.is6to4(), '6');
      asIPv4 = six.asIPv4() ? six.asIPv4()->debugDescription() : "";
    }
    EXPECT_EQ(kinds, row.kinds) << row.text;
    EXPECT_EQ(asIPv4, row.asIPv4) << row.text;
  }
}

TEST(IPAddress, HasNamesForSomeAddresses) {
  EXPECT_EQ(IPv4Address::loopback.rawValue(), (IPv4Address::RawValue{127, 0, 0, 1}));
  EXPECT_EQ(IPv4Address::mdnsGroup.debugDescription(), "224.0.0.251");
  EXPECT_EQ(IPv6Address::linkLocalRouters.debugDescription(), "ff02::2");
  EXPECT_EQ(IPv6Address::nodeLocalNodes.debugDescription(), "ff01::1");
  EXPECT_EQ(IPv6Address::broadcast,
            IPv6Address::fromText("ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"));
  EXPECT_EQ(IPv6Address::linkLocalNodes.multicastScope(), IPv6Address::Scope::linkLocal);
  EXPECT_EQ(IPv6Address::fromText("ff03::1")->multicastScope(), std::nullopt);
  EXPECT_EQ(IPv6Address::fromText("ff1e::1")->multicastScope(), IPv6Address::Scope::global);
}

TEST(IPAddress, IsMadeOfExactlyItsBytes) {
  const std::array<std::uint8_t, 16> bytes = {1, 2, 3, 4};
  for (std::size_t count = 0; count <= bytes.size(); ++count) {
    const auto some = std::span(bytes).first(count);
    EXPECT_EQ(IPv4Address::fromRawValue(some).has_value(), count == 4);
    EXPECT_EQ(IPv6Address::fromRawValue(some).has_value(), count == 16);
  }
  EXPECT_EQ(IPv4Address::fromText("::1"), std::nullopt);
  EXPECT_EQ(IPv6Address::fromText("127.0.0.1"), std::nullopt);
}

} // namespace
} // namespace velmar
