#include "host/ExplainCommand.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "host/NamedPlace.h"
#include "host/OpenDocument.h"
#include "host/PlaceReport.h"
#include "host/VisibleText.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

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
      .details = "For each language layer at the place: its ranges, the nodes from the root down "
                 "with their fields, and the captures that cover the place, in the order of "
                 "painting: the last one is on top. With each come its priority, the file and line "
                 "of its pattern in the language packs, and the predicates of the pattern, all of "
                 "which let it pass. Captures whose names begin with “_” aren’t painted.\n\n"
                 "Lines and columns count from 1, columns in UTF-16 code units. Without a column "
                 "it is the first. FILE is “-” for standard input.",
      .options = {languageOption(), verboseOption()},
      .examples = {{"velmar explain main.cpp:12:8", "What is at column 8 of line 12."},
                   {"velmar explain page.html:40", "At the start of line 40."},
                   {"velmar explain -:1:5 --language css <a", "In a text from elsewhere."}},
      .run = run,
  };
}

} // namespace velmar::host
