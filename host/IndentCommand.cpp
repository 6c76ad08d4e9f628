#include "VelmarCore/Text/Indentation.h"
#include "VelmarParser/Cursor/Indents.h"
#include "host/CursorCommands.h"
#include "host/CursorSupport.h"
#include "host/VisibleText.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <map>

namespace velmar::host {

namespace {

constexpr std::int64_t mostColumns = 16;

/// The columns of the blanks that `text` begins with.
std::int64_t widthOf(std::u16string_view text) {
  return indentationForTabWidth(text, VisibleText::tabWidth).effectiveSpaces;
}

bool isBlank(std::u16string_view text) {
  return text.find_first_not_of(u" \t\v\f\r") == std::u16string_view::npos;
}

/// The step by which lines are most often deeper than the line above; 2 where none is.
std::int64_t usualStep(const DocumentText& text) {
  std::map<std::int64_t, std::int64_t> steps;
  std::int64_t above = 0;
  for (const auto& line : text.lines()) {
    const std::u16string contents = text.substringFor(line.contentsRange());
    if (isBlank(contents))
      continue;
    const std::int64_t width = widthOf(contents);
    if (width - above > 1 && width - above <= 8)
      ++steps[width - above];
    above = width;
  }
  const auto most =
      std::ranges::max_element(steps, {}, [](const auto& step) { return step.second; });
  return most == steps.end() ? 2 : most->first;
}

std::int64_t stepFrom(const Arguments& arguments, const DocumentText& text) {
  const auto word = arguments.valueOf("--width");
  if (!word)
    return usualStep(text);
  std::int64_t width = 0;
  const char* const end = word->data() + word->size();
  const auto [stop, failure] = std::from_chars(word->data(), end, width);
  if (failure != std::errc() || stop != end || width < 1 || width > mostColumns)
    throw UsageError(fmt::format("“--width” takes a number from 1 to {}.", mostColumns));
  return width;
}

/// The column that the line with this indent would begin in.
std::int64_t columnFor(const LineIndent& indent, const DocumentText& text, std::int64_t step) {
  if (!indent.alignedWith)
    return indent.levels * step;
  const TextRange contents = text.lineContaining(*indent.alignedWith).contentsRange();
  VisibleText visible;
  static_cast<void>(visible.next(text.substringFor({contents.lowerBound, *indent.alignedWith})));
  return visible.column() + indent.levelsBehindAlignment * step;
}

void run(const Arguments& arguments, Streams& streams) {
  const auto document = onlyDocument(arguments, "indent", streams);
  const Parse& parse = document->parse();
  const DocumentText& text = parse.text();
  const std::int64_t step = stepFrom(arguments, text);
  std::int64_t lines = 0;
  std::int64_t agreeing = 0;
  for (const auto& line : text.lines()) {
    const TextRange range = line.contentsRange();
    const std::u16string contents = text.substringFor(range);
    if (isBlank(contents))
      continue;
    const LineIndent indent = lineIndentAt(parse, range.lowerBound);
    if (indent.isKept)
      continue; // neither right nor wrong
    const std::int64_t has = widthOf(contents);
    const std::int64_t gets = columnFor(indent, text, step);
    ++lines;
    agreeing += has == gets ? 1 : 0;
    if (has != gets || arguments.has("--all"))
      streams.output.write(fmt::format(
          "{}: {} {} {}  {}\n", text.positionOf(range.lowerBound).line + 1, has,
          has == gets ? "=" : "→", gets, shownText(text, {range.lowerBound, range.upperBound})));
  }
  streams.output.write(fmt::format(
      "{} of {} lines agree ({:.1f} %), {} columns to a level.\n", agreeing, lines,
      lines == 0 ? 100.0 : 100.0 * static_cast<double>(agreeing) / static_cast<double>(lines),
      step));
}

} // namespace

Command indentCommand() {
  return {
      .name = "indent",
      .summary = "Compare a file’s indentation with the engine’s.",
      .usage = "indent FILE [--all]",
      .details = "A line shows the number of a line, the columns that it is indented by, those "
                 "that it would get, and its text. Blank lines and those that keep their blanks, "
                 "such as in a comment, don’t count. The last line has the share that agrees. FILE "
                 "is “-” for standard input.",
      .options = {{"--all", "", "Show lines that agree, too."},
                  {"--width", "N", "The columns of a level, else as the file has it."},
                  languageOption(),
                  verboseOption()},
      .examples = {{"velmar indent main.cpp", "The lines that would move."},
                   {"velmar indent main.cpp --all", "All lines."}},
      .run = run,
  };
}

} // namespace velmar::host
