#include "host/ExplainCommand.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "host/OpenDocument.h"
#include "host/PlaceReport.h"
#include "host/VisibleText.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// A place as people write it, lines and columns from 1.
struct NamedPlace {
  std::string path;
  std::int64_t line = 1;
  std::int64_t column = 1;
};

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

/// Throws Error for a place that the text doesn't have. The column behind a line's last unit is its
/// terminator, or the text's end.
std::int64_t offsetOf(const NamedPlace& place, const DocumentText& text) {
  if (place.line > text.lineCount())
    throw Error(fmt::format("There is no line {}: the text has {}.", place.line, text.lineCount()));
  const TextRange contents = text.line(place.line - 1).contentsRange();
  if (place.column - 1 > contents.length())
    throw Error(fmt::format("There is no column {} in line {}, which has {} units.", place.column,
                            place.line, contents.length()));
  return contents.lowerBound + place.column - 1;
}

/// The line as far as it fits, and a mark under the place.
void writeLine(const DocumentText& text, std::int64_t offset, Output& output) {
  constexpr std::int64_t mostBefore = 60;
  constexpr std::int64_t mostBehind = 40;
  const TextRange contents = text.lineContaining(offset).contentsRange();
  const TextRange before(std::max(contents.lowerBound, offset - mostBefore),
                         std::min(offset, contents.upperBound));
  const TextRange behind(before.upperBound,
                         std::min(contents.upperBound, before.upperBound + mostBehind));
  VisibleText visible;
  std::string line;
  for (const auto& piece : visible.next(text.substringFor(before)))
    line += piece.text;
  const auto column = static_cast<std::size_t>(visible.column());
  for (const auto& piece : visible.next(text.substringFor(behind)))
    line += piece.text;
  output.write(fmt::format("  {}\n  {}^\n\n", line, std::string(column, ' ')));
}

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.operands.size() != 1)
    throw UsageError("“velmar explain” needs one place, “FILE:LINE:COLUMN”.");
  const NamedPlace place = placeNamed(arguments.operands.front());
  const auto document = OpenDocument::fromFile(place.path, OpenOptions::from(arguments), streams);
  const DocumentText& text = document->parse().text();
  const std::int64_t offset = offsetOf(place, text);
  writeLine(text, offset, streams.output);
  writePlaceReport(*document, offset, streams.output);
}

} // namespace

Command explainCommand() {
  return {
      .name = "explain",
      .summary = "Say why a place of a file looks as it does.",
      .usage = "explain FILE:LINE:COLUMN",
      .details =
          "For each language layer at the place: its ranges, the nodes from the root down with\n"
          "their fields, and the captures that cover the place, in the order of painting: the "
          "last\n"
          "one is on top. With each come its priority, the file and line of its pattern in the\n"
          "language packs, and the predicates of the pattern, all of which let it pass. Captures\n"
          "whose names begin with “_” aren’t painted.\n"
          "\n"
          "Lines and columns count from 1, columns in UTF-16 code units. Without a column it is "
          "the\n"
          "first. FILE is “-” for standard input.\n",
      .options = {languageOption(), verboseOption()},
      .examples = {{"velmar explain main.cpp:12:8", "What is at column 8 of line 12."},
                   {"velmar explain page.html:40", "At the start of line 40."},
                   {"velmar explain -:1:5 --language css <a", "In a text from elsewhere."}},
      .run = run,
  };
}

} // namespace velmar::host
