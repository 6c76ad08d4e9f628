#include "VelmarPlatform/Basics/DecimalText.h"

#include <array>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <locale.h>

namespace velmar {

std::string decimalText(double value) {
  if (std::isnan(value))
    return "nan";
  if (std::isinf(value))
    return value < 0 ? "-inf" : "inf";
  constexpr double leastPlain = 1e-4;
  constexpr double greatestPlain = 9007199254740992.0;
  const double size = std::abs(value);
  const bool isPlain = size == 0 || (size >= leastPlain && size <= greatestPlain);
  std::array<char, 32> digits; // filled by to_chars
  const char* const end =
      std::to_chars(digits.data(), digits.data() + digits.size(), value,
                    isPlain ? std::chars_format::fixed : std::chars_format::scientific)
          .ptr;
  std::string text(digits.data(), static_cast<std::size_t>(end - digits.data()));
  if (isPlain && text.find('.') == std::string::npos)
    text += ".0";
  return text;
}

std::optional<double> parseFloatingPoint(const std::string& text) {
  // std::from_chars leaves a value beyond the range unsaid, and the process's locale may be any.
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
  constexpr std::string_view space = " \t\n\v\f\r";
  if (text.empty() || space.find(text.front()) != std::string_view::npos)
    return std::nullopt;
  char* end = nullptr;
  const double value = strtod_l(text.c_str(), &end, plain);
  if (end != text.c_str() + text.size())
    return std::nullopt;
  return value;
}

} // namespace velmar
