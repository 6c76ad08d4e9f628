#include "host/TreeCommand.h"

#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/Parser.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/LanguageChoice.h"
#include "host/OpenDocument.h"
#include "host/SourceText.h"
#include "host/TreePrinter.h"
#include "host/TreeWatch.h"
#include "host/Wording.h"

#include <fmt/format.h>

namespace velmar::host {

namespace {

struct Parsed {
  ParseTree tree;
  std::chrono::nanoseconds time;
};

Parsed parse(const DocumentText& text, std::string_view languageID,
             std::shared_ptr<const Grammar> grammar, const Streams& streams) {
  Parser parser(languageID, std::move(grammar), std::make_shared<const AtomicFlag>());
  ParseInput input(text);
  const auto start = streams.now();
  auto tree = parser.parse(nullptr, input.input());
  const auto time = streams.now() - start;
  precondition(tree.has_value(), "A parse that nobody cancels gave no tree.");
  return {std::move(*tree), time};
}

double milliseconds(std::chrono::nanoseconds time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

void printText(const Parsed& parsed, const DocumentText& text, std::string_view language,
               Output& output) {
  const TreeCounts counts = printTree(parsed.tree, text, output);
  output.write(fmt::format("{}: {}, {}, {}, ", language, counted(text.count(), "unit"),
                           counted(lineCountForPeople(text), "line"),
                           counted(counts.nodes, "node")));
  if (counts.errors != 0)
    output.write(fmt::format("{}, ", counted(counts.errors, "error")), Style::error);
  if (counts.missing != 0)
    output.write(fmt::format("{} missing, ", counts.missing), Style::error);
  output.write(fmt::format("{:.2f} ms\n", milliseconds(parsed.time)));
}

void printJSON(const Parsed& parsed, const DocumentText& text, std::string_view language,
               Output& output) {
  JSONWriter writer(output);
  writer.beginObject();
  writer.member("language", language);
  writer.member("units", text.count());
  writer.member("lines", text.lineCount());
  writer.member("parseMicroseconds",
                std::int64_t{duration_cast<std::chrono::microseconds>(parsed.time).count()});
  writer.key("tree");
  const TreeCounts counts = writeTreeAsJSON(parsed.tree, writer);
  writer.member("nodes", counts.nodes);
  writer.member("errors", counts.errors);
  writer.member("missing", counts.missing);
  writer.endObject();
  output.write("\n");
}

/// Until the user ends it.
void watch(const Arguments& arguments, Streams& streams) {
  const std::string& path = arguments.operands.front();
  if (arguments.has("--json"))
    throw UsageError("“--watch” and “--json” don’t go together.");
  if (path == "-")
    throw UsageError("Standard input can’t be watched.");
  // First of all, for a change may come while the file is being read.
  FileWatch fileWatch{FilePath(path)};
  const auto document = OpenDocument::fromFile(path, OpenOptions::from(arguments), streams);
  const Parse& parse = document->parse();
  streams.output.write(fmt::format(
      "{}: {}, {}, {}, {:.2f} ms. Watching; Ctrl-C ends it.\n", document->language().rawValue,
      counted(parse.count(), "unit"), counted(lineCountForPeople(parse.text()), "line"),
      counted(std::ssize(parse.layers()), "layer"), milliseconds(document->loadTime())));
  watchDocument(*document, path, fileWatch, streams);
}

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.operands.size() != 1)
    throw UsageError(arguments.operands.empty()
                         ? "“velmar tree” needs a file, or “-” for standard input."
                         : "“velmar tree” takes one file at a time.");
  if (arguments.has("--watch"))
    return watch(arguments, streams);
  const SourceText source = readSource(arguments.operands.front(), streams);
  for (const std::string& note : source.notes)
    streams.errors.write(fmt::format("velmar: {}\n", note));
  streams.errors.flush();
  const Language& language = languageFor(source, arguments.valueOf("--language"));
  const Parsed parsed = parse(*source.text, language.id.rawValue, grammarOf(language), streams);
  const auto print = arguments.has("--json") ? printJSON : printText;
  print(parsed, *source.text, language.id.rawValue, streams.output);
}

} // namespace

Command treeCommand() {
  return {
      .name = "tree",
      .summary = "Print the syntax tree of a file.",
      .usage = "tree FILE [--language ID] [--json]",
      .details =
          "A line shows a node: its field, its type (tokens in quotation marks), its range in "
          "UTF-16 code units from 0, the same by line and column from 1, and the text of short "
          "leaves. ERROR is text that fits no rule; MISSING is what the parser put in to go on. "
          "The last line counts units, lines and nodes and gives the time of the parse. In JSON "
          "lines and columns count from 0.\n\n"
          "FILE is “-” for standard input. Its name or its interpreter line tells the language.",
      .options = {{"--language", "ID", "Parse as this language, whatever the file is called."},
                  {"--json", "", "Print nested JSON instead."},
                  {"--watch", "", "Parse again as the file changes, and print what changed."}},
      .examples = {{"velmar tree main.c", "The tree of a C file."},
                   {"velmar tree --language json notes", "A file whose name says nothing."},
                   {"echo 'a = 1' | velmar tree - --language lua", "A text from a pipe."},
                   {"velmar tree page.html --json", "For other programs."},
                   {"velmar tree page.html --watch", "A line for each time it is saved."}},
      .run = run,
  };
}

} // namespace velmar::host
