#include "host/ShowCommand.h"

#include "host/LanguageChoice.h"
#include "host/LayerList.h"
#include "host/OpenDocument.h"
#include "host/PageOutline.h"
#include "host/PagePicture.h"
#include "host/PictureJSON.h"
#include "host/TerminalPicture.h"
#include "host/Wording.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace velmar::host {

namespace {

enum class Form { terminal, page, json };

struct ShowOptions {
  Form form = Form::terminal;
  TerminalOptions terminal;
  bool showsLayers = false;
  bool showsOutline = false;
  bool showsFolds = false;
  /// Lines from 0, the end not included.
  Range<std::int64_t> lines;
};

constexpr std::u16string_view samplePage = uR"page(<!DOCTYPE html>
<title>Velmar &mdash; a sample</title>
<style>
  .card:hover { color: #36c; margin: 0 1.5rem } /* style in a page */
</style>
<p class="card" style="padding: 4px" onclick="greet('you')">Hello</p>
<script>
  /** Greets.
   *  @param {string} name who it is */
  function greet(name) {
    const word = /^[a-z]+$/iu.test(name) ? name : "stranger";
    return `Hello, ${word.toUpperCase()}!`; // script in a page
  }
</script>
)page";

std::int64_t lineNumber(std::string_view text, std::string_view option) {
  std::int64_t number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size() || number < 1)
    throw UsageError(fmt::format(
        "“{}” isn’t a range of lines; write “--range 10-20”, counting from 1.", option));
  return number;
}

/// "10-20", "10-" or "10", counting from 1, as lines from 0.
Range<std::int64_t> linesIn(std::string_view option, std::int64_t lineCount) {
  const std::size_t dash = option.find('-');
  const std::int64_t first = lineNumber(option.substr(0, dash), option);
  std::int64_t last = first;
  if (dash != std::string_view::npos)
    last = dash + 1 == option.size() ? std::max(first, lineCount)
                                     : lineNumber(option.substr(dash + 1), option);
  if (last < first)
    throw UsageError(fmt::format("The range “{}” ends before it starts.", option));
  if (first > lineCount)
    throw Error(fmt::format("There is no line {}: the text has {}.", first, lineCount));
  return {first - 1, std::min(last, lineCount)};
}

ColorDepth colorsNamed(std::string_view name) {
  if (name == "true")
    return ColorDepth::trueColor;
  if (name == "256")
    return ColorDepth::xterm256;
  if (name == "none")
    return ColorDepth::none;
  throw UsageError(fmt::format("“{}” are no colours: “true”, “256” or “none”.", name));
}

ShowOptions optionsFrom(const Arguments& arguments, std::int64_t lineCount,
                        const Streams& streams) {
  const auto forms = {arguments.has("--ansi"), arguments.has("--html"), arguments.has("--json")};
  if (std::ranges::count(forms, true) > 1)
    throw UsageError("Only one of “--ansi”, “--html” and “--json” can be had.");
  ShowOptions options;
  options.form = arguments.has("--html")   ? Form::page
                 : arguments.has("--json") ? Form::json
                                           : Form::terminal;
  options.showsLayers = arguments.has("--layers");
  options.showsOutline = arguments.has("--outline");
  options.showsFolds = arguments.has("--folds");
  if ((options.showsOutline || options.showsFolds) && options.form != Form::page)
    throw UsageError("“--outline” and “--folds” go with “--html”.");
  options.terminal = {.colors = arguments.has("--ansi") || streams.output.isStyled()
                                    ? terminalColors(streams)
                                    : ColorDepth::none,
                      .background = arguments.has("--light") ? Background::light : Background::dark,
                      .showsLayers = options.showsLayers};
  if (const auto colors = arguments.valueOf("--colors"))
    options.terminal.colors = colorsNamed(*colors);
  options.lines = {0, lineCount};
  if (const auto range = arguments.valueOf("--range"))
    options.lines = linesIn(*range, lineCount);
  return options;
}

TextRange rangeOfLines(const DocumentText& text, Range<std::int64_t> lines) {
  return {text.rangeOfLine(lines.lowerBound).lowerBound,
          text.rangeOfLine(lines.upperBound - 1).upperBound};
}

void showOnTerminal(const OpenDocument& document, TextRange range, const ShowOptions& options,
                    Output& output) {
  if (options.showsLayers) {
    writeLayers(document.parse(), range, output);
    output.write("\n");
  }
  Painter painter(document.parse(), Theme::builtIn());
  TerminalPicture(document.parse(), painter, Theme::builtIn(), options.terminal, output)
      .write(range);
}

void showAsPage(const OpenDocument& document, TextRange range, const ShowOptions& options,
                Output& output) {
  Painter painter(document.parse(), Theme::builtIn());
  const DocumentText& text = document.parse().text();
  const Structure structure = options.showsOutline || options.showsFolds
                                  ? parseStructure(document.parse().rootLayer())
                                  : Structure();
  PagePicture page(
      document.parse(), painter, Theme::builtIn(),
      {.title = document.name(),
       .firstLine = options.lines.lowerBound + 1,
       .showsLayers = options.showsLayers,
       .outline = options.showsOutline ? outlineAsHTML(structure.symbols, text, range) : "",
       .folds = options.showsFolds ? foldTitles(structure.folds, text)
                                   : std::map<std::int64_t, std::string>()},
      output);
  page.writeHead(fmt::format("{} · {} · {}", document.language().rawValue,
                             counted(lineCountForPeople(text), "line"),
                             counted(std::ssize(painter.layers()), "layer")));
  page.write(range);
  page.writeFoot();
}

void show(const OpenDocument& document, const ShowOptions& options, Output& output) {
  const TextRange range = rangeOfLines(document.parse().text(), options.lines);
  switch (options.form) {
  case Form::terminal:
    return showOnTerminal(document, range, options, output);
  case Form::page:
    return showAsPage(document, range, options, output);
  case Form::json:
    return writePictureAsJSON(document, range, output);
  }
}

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.operands.size() != 1)
    throw UsageError(arguments.operands.empty()
                         ? "“velmar show” needs a file, or “-” for standard input."
                         : "“velmar show” takes one file at a time.");
  // What can be said without the file is said first.
  static_cast<void>(optionsFrom(arguments, std::numeric_limits<std::int64_t>::max(), streams));
  const auto document =
      OpenDocument::fromFile(arguments.operands.front(), OpenOptions::from(arguments), streams);
  show(*document, optionsFrom(arguments, document->parse().text().lineCount(), streams),
       streams.output);
}

} // namespace

Command showCommand() {
  return {
      .name = "show",
      .summary = "Paint a file, with the languages nested in it.",
      .usage = "show FILE [--html|--json] [--range A-B]",
      .details =
          "Colours come from the language packs, or from the query texts that grammars bring "
          "along. Control characters, characters that turn the direction of writing around and "
          "halves of characters are shown by a sign or a number, so that no text can act on the "
          "terminal.\n\n"
          "Without an option for the form, the text is painted for the terminal, in its colours, "
          "or plainly for pipes. COLORTERM=truecolor and NO_COLOR in the environment are honoured, "
          "and VELMAR_PACKS names another folder of packs.\n\n"
          "FILE is “-” for standard input. Its name or its interpreter line tells the language.",
      .options = {languageOption(),
                  {"--ansi", "", "Colours even where the output is no terminal."},
                  {"--html", "", "One page for a browser; layers show on hover."},
                  {"--json", "", "Layers and their spans in UTF-16 code units, unmerged."},
                  {"--layers", "", "List the layers, and give nested ones a background."},
                  {"--outline", "", "With --html, list the symbols in front of the text."},
                  {"--folds", "", "With --html, mark the lines at which something folds."},
                  {"--range", "A-B", "Only the lines A to B, counting from 1; also “A-” and “A”."},
                  {"--colors", "NUMBER", "true, 256 or none, whatever the terminal says."},
                  {"--light", "", "Colours for a light background."},
                  verboseOption()},
      .examples = {{"velmar show README.md", "A Markdown file with the code in its fences."},
                   {"velmar show page.html --layers", "A page, its scripts and styles marked."},
                   {"velmar show main.cpp --html > main.html", "The same for a browser."},
                   {"velmar show big.js --range 900-960", "Sixty lines of a large file."}},
      .run = run,
  };
}

void showSamplePage(Streams& streams) {
  const auto document =
      OpenDocument::fromText(samplePage, "sample.html", languageWanted("html"), false, streams);
  ShowOptions options;
  options.lines = {0, document->parse().text().lineCount() - 1};
  options.showsLayers = true;
  options.terminal.colors = streams.output.isStyled() ? terminalColors(streams) : ColorDepth::none;
  show(*document, options, streams.output);
}

} // namespace velmar::host
