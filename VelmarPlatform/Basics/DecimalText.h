// Numbers as people read them, and back. Not for documents: a form of text has rules of its own.
#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace velmar {

/// The shortest text that reads as `value` again, always with a point or an exponent: "1.0", "0.1",
/// "1e+16", "nan", "inf". Without an exponent from 0.0001 to 2^53.
[[nodiscard]] std::string decimalText(double value);

/// The whole of `text` as a number by the rules of the C locale, white space excepted: none may
/// stand anywhere. Infinite where it is beyond the range, absent where it is no number.
[[nodiscard]] std::optional<double> parseFloatingPoint(const std::string& text);

/// The whole of `text` as a decimal number: a sign or none, and digits. Absent where it is anything
/// else or doesn't fit `Integer`.
template <std::integral Integer>
[[nodiscard]] std::optional<Integer> parseDecimal(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-"))
    text.remove_prefix(1);
  Integer value = 0;
  const char* const end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || at != end)
    return std::nullopt;
  return value;
}

} // namespace velmar
