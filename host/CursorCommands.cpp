#include "host/CursorCommands.h"

#include "VelmarParser/Cursor/Brackets.h"
#include "VelmarParser/Cursor/Checking.h"
#include "VelmarParser/Cursor/Completion.h"
#include "VelmarParser/Cursor/Tags.h"
#include "VelmarParser/Cursor/Words.h"
#include "VelmarParser/Query/Query.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/CursorSupport.h"
#include "host/LayerList.h"
#include "host/SourceText.h"
#include "host/VisibleText.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <map>

namespace velmar::host {

namespace {

void writeRange(const DocumentText& text, TextRange range, Output& output) {
  output.write(placeOf(text, range), Style::field);
  output.write(fmt::format("  {}\n", shownText(text, range)));
}

void runTags(const Arguments& arguments, Streams& streams) {
  const DocumentPlace place = onlyPlace(arguments, "tags", streams);
  for (const Parse::Layer& layer : place.layers()) {
    const auto tags = matchingTagsAt(layer, place.offset);
    for (const Tag& tag : tags)
      writeRange(layer.parse().text(), tag.range, streams.output);
    if (!tags.empty())
      return;
  }
  streams.output.write("No two tags belong to this place.\n");
}

/// Colours that differ from their neighbours on dark and light backgrounds alike.
constexpr std::array<int, 6> depthColors{33, 170, 36, 172, 99, 160};

/// The depth of each bracket, in order.
std::map<std::int64_t, std::size_t> depthsByOffset(const Parse& parse) {
  std::map<std::int64_t, std::size_t> depths;
  const auto sets = bracketDepths(parse);
  for (std::size_t depth = 0; depth < sets.size(); ++depth) {
    for (const TextRange& range : sets[depth].ranges()) {
      for (std::int64_t offset = range.lowerBound; offset < range.upperBound; ++offset)
        depths.emplace(offset, depth);
    }
  }
  return depths;
}

void runBrackets(const Arguments& arguments, Streams& streams) {
  const auto document = onlyDocument(arguments, "brackets", streams);
  const DocumentText& text = document->parse().text();
  const auto depths = depthsByOffset(document->parse());
  Output& output = streams.output;
  VisibleText visible;
  auto bracket = depths.begin();
  const auto writeText = [&](TextRange range) {
    for (const auto& piece : visible.next(text.substringFor(range)))
      output.write(piece.text);
  };
  for (const auto& line : text.lines()) {
    const TextRange contents = line.contentsRange();
    std::string marks; // under the line, where there are no colours
    std::int64_t offset = contents.lowerBound;
    visible.startLine();
    for (; bracket != depths.end() && bracket->first < contents.upperBound; ++bracket) {
      writeText({offset, bracket->first});
      if (output.isStyled())
        output.write(fmt::format("\x1b[1;38;5;{}m", depthColors[bracket->second % 6]));
      else
        marks.append(static_cast<std::size_t>(visible.column()) - marks.size(), ' ')
            .append(1, static_cast<char>('0' + bracket->second % 10));
      writeText({bracket->first, bracket->first + 1});
      if (output.isStyled())
        output.write("\x1b[m");
      offset = bracket->first + 1;
    }
    writeText({offset, contents.upperBound});
    if (contents.upperBound < text.count() || !contents.isEmpty())
      output.write("\n");
    if (!marks.empty())
      output.write(fmt::format("{}\n", marks));
  }
}

void runWords(const Arguments& arguments, Streams& streams) {
  const auto document = onlyDocument(arguments, "words", streams);
  const DocumentText& text = document->parse().text();
  const auto words = identifierWordsIn(document->parse(), {0, text.count()});
  std::map<std::string_view, TextRangeSet> sorted;
  for (const auto& [word, ranges] : words) {
    for (const TextRange& range : ranges)
      sorted[word].insertContentsOf(range);
  }
  for (const auto& [word, ranges] : sorted)
    streams.output.write(
        fmt::format("{} {}  {}\n", words.find(word)->second.size(), word, placesOf(text, ranges)));
}

/// What `read` gives for each layer, in the order of the text.
template <class Read>
void writeRanges(const Parse& parse, Output& output, Read read) {
  std::vector<TextRange> found;
  for (const Parse::Layer& layer : parse.layers()) {
    for (const TextRange& range : read(layer))
      found.push_back(range);
  }
  std::ranges::sort(found, {}, [](const TextRange& range) {
    return std::pair(range.lowerBound, range.upperBound);
  });
  for (const TextRange& range : found)
    writeRange(parse.text(), range, output);
}

void runColors(const Arguments& arguments, Streams& streams) {
  const auto document = onlyDocument(arguments, "colors", streams);
  const Parse& parse = document->parse();
  writeRanges(parse, streams.output, [&](const Parse::Layer& layer) {
    return colorCandidatesIn(layer, {0, parse.count()});
  });
}

void runProse(const Arguments& arguments, Streams& streams) {
  const auto document = onlyDocument(arguments, "prose", streams);
  const Parse& parse = document->parse();
  writeRanges(parse, streams.output, [&](const Parse::Layer& layer) {
    const TextRangeSet prose = textCheckingRangesIntersecting(layer, {0, parse.count()});
    return std::vector<TextRange>(prose.ranges().begin(), prose.ranges().end());
  });
}

/// A layer that the query fits, and the query for its grammar.
struct FittingQuery {
  Parse::Layer layer;
  std::shared_ptr<const Query> query;
};

/// Throws the failure of the innermost language where the query fits none.
FittingQuery fittingQuery(const DocumentPlace& place, std::string_view text) {
  std::exception_ptr first;
  for (const Parse::Layer& layer : place.layers()) {
    try {
      return {layer, std::make_shared<const Query>(text, layer.configuration().grammar())};
    } catch (const Error&) {
      if (!first)
        first = std::current_exception();
    }
  }
  std::rethrow_exception(first);
}

void runComplete(const Arguments& arguments, Streams& streams) {
  const auto path = arguments.valueOf("--query");
  if (!path)
    throw UsageError("“velmar complete” needs “--query QUERY.scm”.");
  const DocumentPlace place = onlyPlace(arguments, "complete", streams);
  const SourceText source = readSource(std::string(*path), streams);
  const auto [layer, query] =
      fittingQuery(place, utf8RepairingUTF16(source.text->substringFor({0, source.text->count()})));
  CompletionVariables variables;
  const bool applies = matchesCompletionQuery(layer, query, place.offset, variables);
  streams.output.write(fmt::format("The query {} here, in {}.\n",
                                   applies ? "applies" : "doesn’t apply",
                                   layer.configuration().id().rawValue));
  for (const auto& [name, value] : variables) {
    VisibleText visible;
    std::string shown;
    for (const auto& piece : visible.next(utf16RepairingUTF8(value)))
      shown += piece.text;
    streams.output.write(fmt::format("  {} = {}\n", name, shown));
  }
}

Command onFile(std::string_view name, std::string_view summary, std::string_view usage,
               std::string_view details, Example example, void (*run)(const Arguments&, Streams&)) {
  return {.name = name,
          .summary = summary,
          .usage = usage,
          .details = details,
          .options = {languageOption(), verboseOption()},
          .examples = {example},
          .run = run};
}

} // namespace

Command tagsCommand() {
  return onFile("tags", "Print the two tags around a place.", "tags FILE:LINE:COLUMN",
                "The opening and the closing tag of the innermost element at the place that has "
                "both, with\n"
                "their lines and columns from 1. FILE is “-” for standard input.\n",
                {"velmar tags page.html:12:8", "Where the element at column 8 begins and ends."},
                runTags);
}

Command bracketsCommand() {
  return onFile("brackets", "Print a file with its brackets by depth.", "brackets FILE",
                "On a terminal each depth has a colour. Elsewhere the depths stand under the "
                "brackets, from 0,\n"
                "the last digit of each. Each kind of bracket counts for itself; those in comments "
                "and strings\n"
                "don’t count. FILE is “-” for standard input.\n",
                {"velmar brackets main.cpp", "Which bracket closes which."}, runBrackets);
}

Command wordsCommand() {
  return onFile("words", "List the words of a file’s code.", "words FILE",
                "A line has the count of a word, the word and its first places. Words in comments "
                "and strings\n"
                "don’t count, nor do keywords. FILE is “-” for standard input.\n",
                {"velmar words main.cpp", "What an editor could offer while one types."}, runWords);
}

Command colorsCommand() {
  return onFile("colors", "List what may be a colour.", "colors FILE",
                "A line has a place and its text. FILE is “-” for standard input.\n",
                {"velmar colors style.css", "The colours of a style sheet."}, runColors);
}

Command proseCommand() {
  return onFile("prose", "List the text that is written for people.", "prose FILE",
                "What a check of spelling would read: comments, or what else a language has of "
                "prose. A line has\n"
                "a place and its text, with “↵” for the ends of lines. FILE is “-” for standard "
                "input.\n",
                {"velmar prose README.md", "All but code, addresses and tags."}, runProse);
}

Command completeCommand() {
  Command command = onFile(
      "complete", "Say whether a completion applies at a place.",
      "complete FILE:LINE:COL --query QUERY",
      "Runs the query of a completion provider on the unit in front of the place, and "
      "prints the\n"
      "variables that it sets. The language is the innermost one at the place that the "
      "query fits.\n"
      "FILE is “-” for standard input.\n",
      {"velmar complete page.html:3:12 --query class.scm", "Is this inside a class?"}, runComplete);
  command.options.insert(command.options.begin(),
                         {"--query", "FILE", "The file with the provider’s query."});
  return command;
}

} // namespace velmar::host
