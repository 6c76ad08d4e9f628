#include "VelmarPlatform/Basics/UUID.h"

#include "VelmarPlatform/Basics/Error.h"

#include <cerrno>
#include <sys/random.h>

namespace velmar {
namespace {

constexpr std::string_view pattern = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
constexpr std::string_view digits = "0123456789ABCDEF";

std::optional<std::uint8_t> valueOfDigit(char c) {
  if (c >= 'a' && c <= 'f')
    c = static_cast<char>(c - 'a' + 'A');
  const std::size_t value = digits.find(c);
  return value == std::string_view::npos ? std::nullopt
                                         : std::optional(static_cast<std::uint8_t>(value));
}

} // namespace

UUID UUID::random() {
  UUID uuid;
  // Fewer than 256 bytes come whole, once the system has started.
  if (getrandom(uuid.bytes.data(), uuid.bytes.size(), 0) != 16)
    throw SystemError("The system gives no random bytes: " + systemErrorText(errno) + ".", errno);
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);
  return uuid;
}

std::optional<UUID> UUID::parse(std::string_view text) {
  if (text.size() != pattern.size())
    return std::nullopt;
  UUID uuid;
  std::size_t digit = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (pattern[i] == '-') {
      if (text[i] != '-')
        return std::nullopt;
      continue;
    }
    const auto value = valueOfDigit(text[i]);
    if (!value)
      return std::nullopt;
    uuid.bytes[digit / 2] = static_cast<std::uint8_t>(uuid.bytes[digit / 2] << 4 | *value);
    ++digit;
  }
  return uuid;
}

std::string UUID::string() const {
  std::string text(pattern);
  std::size_t digit = 0;
  for (char& c : text) {
    if (c == '-')
      continue;
    c = digits[digit % 2 == 0 ? bytes[digit / 2] >> 4 : bytes[digit / 2] & 15];
    ++digit;
  }
  return text;
}

} // namespace velmar

std::size_t std::hash<velmar::UUID>::operator()(const velmar::UUID& uuid) const noexcept {
  return std::hash<std::string_view>()(
      {reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()});
}
