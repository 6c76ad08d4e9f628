#include "VelmarPlatform/Coding/Base64.h"

#include <array>
#include <cstdint>

namespace velmar {
namespace {

constexpr std::string_view letters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t noLetter = 0xFF;

constexpr std::array<std::uint8_t, 256> valuesOfLetters = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(noLetter);
  for (std::size_t i = 0; i < letters.size(); ++i)
    values[static_cast<unsigned char>(letters[i])] = static_cast<std::uint8_t>(i);
  return values;
}();

} // namespace

std::string encodeBase64(std::span<const std::byte> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < 3; ++i)
      bits = bits << 8 | (i < count ? std::to_integer<std::uint32_t>(bytes[at + i]) : 0);
    for (std::size_t i = 0; i < 4; ++i)
      text += i <= count ? letters[bits >> (18 - 6 * i) & 63] : '=';
  }
  return text;
}

std::optional<Bytes> decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0)
    return std::nullopt;
  const std::size_t fill = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
  text.remove_suffix(fill);
  Bytes bytes;
  bytes.reserve(text.size() / 4 * 3 + 2);
  std::uint32_t bits = 0;
  int count = 0;
  for (const char letter : text) {
    const std::uint8_t value = valuesOfLetters[static_cast<unsigned char>(letter)];
    if (value == noLetter)
      return std::nullopt;
    bits = bits << 6 | value;
    count += 6;
    if (count >= 8) {
      count -= 8;
      bytes.push_back(static_cast<std::byte>(bits >> count));
      bits &= (1U << count) - 1;
    }
  }
  if (bits != 0)
    return std::nullopt;
  return bytes;
}

} // namespace velmar
