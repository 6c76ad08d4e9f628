// The one place where text changes its encoding. Interfaces and records hold valid UTF-8 in
// std::string; document text is UTF-16 in std::u16string and may hold lone surrogates.
//
// Each direction comes in a checked form, which is absent for bad input, and a repairing one, which
// puts U+FFFD in place of each maximal bad subpart, as the Unicode standard recommends. All are
// O(n), on any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmar {

/// Whether `text` is valid UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
[[nodiscard]] bool isValidUTF8(std::string_view text) noexcept;
/// Whether every surrogate of `text` has its partner.
[[nodiscard]] bool isValidUTF16(std::u16string_view text) noexcept;

/// `text` as UTF-16; absent if it isn't valid UTF-8.
[[nodiscard]] std::optional<std::u16string> utf16FromUTF8(std::string_view text);
/// `text` as UTF-16, with U+FFFD for what isn't valid. `repairs`, if given, gets the number of
/// those.
[[nodiscard]] std::u16string utf16RepairingUTF8(std::string_view text,
                                                std::size_t* repairs = nullptr);

/// `text` as UTF-8; absent if it holds a lone surrogate.
[[nodiscard]] std::optional<std::string> utf8FromUTF16(std::u16string_view text);
/// `text` as UTF-8, with U+FFFD for each lone surrogate.
[[nodiscard]] std::string utf8RepairingUTF16(std::u16string_view text);

/// `text` itself if it is valid UTF-8, else with U+FFFD for what isn't.
[[nodiscard]] std::string repairedUTF8(std::string_view text);

/// One scalar as UTF-8. A surrogate or a value above U+10FFFF gives U+FFFD.
[[nodiscard]] std::string utf8FromScalar(char32_t scalar);
/// Appends one scalar in UTF-8, likewise.
void appendUTF8(std::string& text, char32_t scalar);

[[nodiscard]] constexpr bool isSurrogate(char16_t unit) noexcept {
  return (unit & 0xF800) == 0xD800;
}
[[nodiscard]] constexpr bool isLeadSurrogate(char16_t unit) noexcept {
  return (unit & 0xFC00) == 0xD800;
}
[[nodiscard]] constexpr bool isTrailSurrogate(char16_t unit) noexcept {
  return (unit & 0xFC00) == 0xDC00;
}
/// The scalar of a pair; both must be surrogates of their kind.
[[nodiscard]] constexpr char32_t scalarOfPair(char16_t lead, char16_t trail) noexcept {
  return 0x10000 + ((static_cast<char32_t>(lead) - 0xD800) << 10) +
         (static_cast<char32_t>(trail) - 0xDC00);
}

/// A scalar and the units or bytes it takes. A unit that is no part of a scalar gives U+FFFD with
/// length 1.
struct DecodedScalar {
  char32_t scalar = 0;
  std::uint8_t length = 0;
  bool valid = true;
};

/// The scalar that starts at `index`, which must be below the size.
[[nodiscard]] DecodedScalar decodeUTF8(std::string_view text, std::size_t index) noexcept;
[[nodiscard]] DecodedScalar decodeUTF16(std::u16string_view text, std::size_t index) noexcept;

} // namespace velmar
