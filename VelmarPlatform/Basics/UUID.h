// Universally unique identifiers.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velmar {

/// Sixteen bytes that nobody else has. A default one is all zeros.
struct UUID {
  std::array<std::uint8_t, 16> bytes{};

  /// A new one, of version 4, from the system's source of random bytes. Safe on any thread. Throws
  /// SystemError where the system has none.
  [[nodiscard]] static UUID random();
  /// "E621E1F8-C36C-495A-93FC-0C247A3E6E5F" in either case; absent for any other text.
  [[nodiscard]] static std::optional<UUID> parse(std::string_view text);

  /// 36 characters, upper case.
  [[nodiscard]] std::string string() const;

  auto operator<=>(const UUID&) const = default;
};

} // namespace velmar

template <>
struct std::hash<velmar::UUID> {
  std::size_t operator()(const velmar::UUID& uuid) const noexcept;
};
