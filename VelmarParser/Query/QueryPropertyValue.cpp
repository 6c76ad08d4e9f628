#include "VelmarParser/Query/QueryPropertyValue.h"

#include <charconv>

namespace velmar {

std::optional<std::int64_t> wholeNumberIn(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-"))
    text.remove_prefix(1);
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return number;
}

} // namespace velmar
