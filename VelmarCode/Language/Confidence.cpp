#include "VelmarCode/Language/Confidence.h"

#include <array>
#include <charconv>

namespace velmar {

std::string Confidence::description() const {
  std::array<char, 32> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), rawValue);
  std::string text(buffer.data(), result.ptr);
  // Letters stand in exponents, infinities and the like.
  if (text.find_first_not_of("-0123456789") == std::string::npos)
    text += ".0";
  return text;
}

std::ostream& operator<<(std::ostream& stream, Confidence confidence) {
  return stream << confidence.description();
}

} // namespace velmar
