#include "host/NamedPlace.h"

#include "host/Command.h"

#include <charconv>
#include <fmt/format.h>
#include <optional>
#include <string_view>

namespace velmar::host {

namespace {

/// Takes ":12" off the end of `text`; absent, with the text left alone, if it ends otherwise.
std::optional<std::int64_t> takeNumber(std::string& text) {
  const std::size_t colon = text.rfind(':');
  if (colon == std::string::npos || colon + 1 == text.size())
    return std::nullopt;
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, failure] = std::from_chars(text.data() + colon + 1, end, number);
  if (failure != std::errc() || stop != end || number < 1)
    return std::nullopt;
  text.resize(colon);
  return number;
}

/// Whether it ends in what was meant to be a number, such as ":0".
bool endsInDigits(std::string_view text) {
  const std::size_t before = text.find_last_not_of("0123456789");
  return before != text.npos && text[before] == ':' && before + 1 < text.size();
}

} // namespace

NamedPlace placeNamed(const std::string& operand) {
  NamedPlace place{.path = operand};
  const auto last = takeNumber(place.path);
  const auto line = last ? takeNumber(place.path) : std::nullopt;
  if (!last || endsInDigits(place.path))
    throw UsageError(
        fmt::format("“{}” names no place; write “FILE:LINE:COLUMN”, counting from 1.", operand));
  place.line = line.value_or(*last);
  place.column = line ? *last : 1;
  return place;
}

std::int64_t offsetOf(const NamedPlace& place, const DocumentText& text) {
  if (place.line > text.lineCount())
    throw Error(fmt::format("There is no line {}: the text has {}.", place.line, text.lineCount()));
  const TextRange contents = text.line(place.line - 1).contentsRange();
  if (place.column - 1 > contents.length())
    throw Error(fmt::format("There is no column {} in line {}, which has {} units.", place.column,
                            place.line, contents.length()));
  return contents.lowerBound + place.column - 1;
}

} // namespace velmar::host
