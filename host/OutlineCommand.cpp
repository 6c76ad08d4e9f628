#include "host/OutlineCommand.h"

#include "host/OpenDocument.h"
#include "host/OutlineText.h"

#include <fmt/format.h>

namespace velmar::host {

namespace {

std::unique_ptr<OpenDocument> documentFrom(const Arguments& arguments, std::string_view command,
                                           Streams& streams) {
  if (arguments.operands.size() != 1)
    throw UsageError(fmt::format("“velmar {}” {}", command,
                                 arguments.operands.empty()
                                     ? "needs a file, or “-” for standard input."
                                     : "takes one file at a time."));
  return OpenDocument::fromFile(arguments.operands.front(), OpenOptions::from(arguments), streams);
}

void runOutline(const Arguments& arguments, Streams& streams) {
  const auto document = documentFrom(arguments, "outline", streams);
  const auto symbols = parseStructure(document->parse().rootLayer()).symbols;
  if (!arguments.has("--json"))
    return writeOutline(symbols, document->parse().text(), streams.output);
  JSONWriter writer(streams.output);
  writeOutlineAsJSON(symbols, writer);
  streams.output.write("\n");
}

void runFolds(const Arguments& arguments, Streams& streams) {
  const auto document = documentFrom(arguments, "folds", streams);
  const auto folds = parseStructure(document->parse().rootLayer()).folds;
  if (!arguments.has("--json"))
    return writeFolds(folds, document->parse().text(), streams.output);
  JSONWriter writer(streams.output);
  writeFoldsAsJSON(folds, writer);
  streams.output.write("\n");
}

} // namespace

Command outlineCommand() {
  return {
      .name = "outline",
      .summary = "Print the symbols and bookmarks of a file.",
      .usage = "outline FILE [--json]",
      .details =
          "A line shows a symbol: its kind, its name, its arguments, its lines from 1, and its "
          "level where it has one. What lies inside it stands below it, further to the right, "
          "whatever language it is in.\n\n"
          "Comments that begin with “!” are bookmarks, as are those that begin with a word such as "
          "TODO or MARK; with “-” behind that, a line across the outline.\n\n"
          "FILE is “-” for standard input. Its name or its interpreter line tells the language.",
      .options = {languageOption(),
                  {"--json", "", "Print a list of symbols, each with those that it holds."},
                  verboseOption()},
      .examples = {{"velmar outline main.cpp", "Namespaces, classes, functions."},
                   {"velmar outline README.md", "Its headings."},
                   {"velmar outline page.html --json", "Elements, and what scripts declare."}},
      .run = runOutline,
  };
}

Command foldsCommand() {
  return {
      .name = "folds",
      .summary = "Print what of a file can be folded.",
      .usage = "folds FILE [--json]",
      .details =
          "A line shows a fold: its lines from 1, its role and the text of its first line, which "
          "stays in sight. Folds inside others stand below them, further to the right.\n\n"
          "FILE is “-” for standard input. Its name or its interpreter line tells the language.",
      .options = {languageOption(),
                  {"--json", "", "Print a list of ranges in UTF-16 code units."},
                  verboseOption()},
      .examples = {{"velmar folds main.cpp", "Bodies, blocks, comments of several lines."},
                   {"velmar folds notes.md", "Sections by their headings."}},
      .run = runFolds,
  };
}

} // namespace velmar::host
