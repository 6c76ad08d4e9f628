#include "host/MemoryCommand.h"

#include "VelmarParser/Document/DocumentMemory.h"
#include "host/OpenDocument.h"
#include "host/Wording.h"

#include <array>
#include <fmt/format.h>

namespace velmar::host {

namespace {

struct Row {
  std::string_view what;
  std::int64_t DocumentMemory::* bytes;
};
constexpr std::array rows{
    Row{"text", &DocumentMemory::text},     Row{"lines", &DocumentMemory::lines},
    Row{"trees", &DocumentMemory::trees},   Row{"lexical spans", &DocumentMemory::lexicalSpans},
    Row{"layers", &DocumentMemory::layers}, Row{"for keystrokes", &DocumentMemory::keystrokes},
};

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.operands.size() != 1)
    throw UsageError("“velmar mem” needs one file.");
  const auto document =
      OpenDocument::fromFile(arguments.operands.front(), OpenOptions::from(arguments), streams);
  const Parse& parse = document->parse();
  const DocumentMemory memory = parse.memory();
  const auto perUnit = [&](std::int64_t bytes) {
    return parse.isEmpty() ? std::string("-")
                           : fmt::format("{:.2f}", static_cast<double>(bytes) /
                                                       static_cast<double>(parse.count()));
  };
  const auto write = [&](std::string_view what, std::int64_t bytes, Style style) {
    streams.output.write(fmt::format("{:<16}{:>14}{:>10}\n", what, bytes, perUnit(bytes)), style);
  };
  streams.output.write(fmt::format("{}: {}, {}, {}\n", document->name(),
                                   counted(parse.count(), "unit"),
                                   counted(lineCountForPeople(parse.text()), "line"),
                                   counted(std::ssize(parse.layers()), "layer")));
  streams.output.write(fmt::format("{:<16}{:>14}{:>10}\n", "", "bytes", "a unit"), Style::heading);
  for (const auto& [what, bytes] : rows)
    write(what, memory.*bytes, Style::plain);
  write("in all", memory.total(), Style::heading);
}

} // namespace

Command memoryCommand() {
  return {
      .name = "mem",
      .summary = "Tell what an open file takes in memory.",
      .usage = "mem FILE [--language ID]",
      .details = "In bytes, and in bytes for each unit of text, of which a character has one or "
                 "two. What is kept for keystrokes makes an edit cost what it changes. Parsers, "
                 "queries and what the allocator adds aren’t counted.",
      .options = {languageOption(), verboseOption()},
      .examples = {{"velmar mem page.html", "A page with its scripts and styles."}},
      .run = run,
  };
}

} // namespace velmar::host
