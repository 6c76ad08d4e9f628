#include "VelmarCore/Text/LineEnding.h"

#include <ostream>
#include <source_location>

namespace velmar {

std::optional<LineEnding> lineEndingFromRawValue(std::int64_t rawValue) noexcept {
  if (rawValue < 0 || rawValue > 2)
    return std::nullopt;
  return static_cast<LineEnding>(rawValue);
}

std::string_view string(LineEnding ending) noexcept {
  switch (ending) {
  case LineEnding::lf:
    return "\n";
  case LineEnding::cr:
    return "\r";
  case LineEnding::crlf:
    return "\r\n";
  }
  preconditionFailed("A line ending has a value outside its cases.",
                     std::source_location::current());
}

std::string_view displayName(LineEnding ending) noexcept {
  switch (ending) {
  case LineEnding::lf:
    return "LF";
  case LineEnding::cr:
    return "CR";
  case LineEnding::crlf:
    return "CRLF";
  }
  preconditionFailed("A line ending has a value outside its cases.",
                     std::source_location::current());
}

std::ostream& operator<<(std::ostream& stream, LineEnding ending) {
  return stream << displayName(ending);
}

} // namespace velmar
