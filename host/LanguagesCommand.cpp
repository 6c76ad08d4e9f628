#include "host/LanguagesCommand.h"

#include "VelmarParser/Grammar/Grammar.h"
#include "host/LanguageTable.h"

#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::string_view rowFormat = "{:<18} {:>3}  {:<18} {:>8} {:>8} {:>7} {:>7}  {}\n";

/// The identifiers of the languages that this grammar parses.
std::string languagesOf(Grammar::BuiltIn builtIn) {
  std::string list;
  for (const Language& language : languages()) {
    if (language.grammar != builtIn)
      continue;
    list += list.empty() ? "" : ", ";
    list += language.id.rawValue;
  }
  return list;
}

std::string rowOf(Grammar::BuiltIn builtIn) {
  const std::string_view id = Grammar::rawValueOf(builtIn);
  const std::string ids = languagesOf(builtIn);
  if (!Grammar::isAvailable(builtIn))
    return fmt::format("{:<18} not part of this build {:>50}  {}\n", id, "", ids);
  const auto grammar = Grammar::fromBuiltIn(builtIn);
  const auto version = grammar->version();
  return fmt::format(fmt::runtime(rowFormat), id, grammar->abiVersion().rawValue,
                     grammar->name().value_or("-"), version ? version->description() : "-",
                     grammar->symbols().count(), grammar->fields().count(),
                     ts_language_state_count(grammar->base()), ids);
}

void run(const Arguments& arguments, Streams& streams) {
  if (!arguments.operands.empty())
    throw UsageError("“velmar languages” takes no operands.");
  streams.output.write(fmt::format(fmt::runtime(rowFormat), "grammar", "ABI", "name", "version",
                                   "symbols", "fields", "states", "languages"),
                       Style::heading);
  for (const Grammar::BuiltIn builtIn : Grammar::allBuiltIns())
    streams.output.write(rowOf(builtIn));
}

} // namespace

Command languagesCommand() {
  return {
      .name = "languages",
      .summary = "List the grammars and the languages they parse.",
      .usage = "languages",
      .details = "Each grammar with the version of its table format (ABI), the name and version "
                 "that it gives itself, how many symbols, fields and states it has, and the "
                 "languages that use it.",
      .options = {},
      .examples = {{"velmar languages", "All grammars."},
                   {"velmar languages | grep python", "One of them."}},
      .run = run,
  };
}

} // namespace velmar::host
