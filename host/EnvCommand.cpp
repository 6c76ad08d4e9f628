#include "host/EnvCommand.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "host/UserEnvironment.h"
#include "host/VisibleText.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// `text` on one line, without anything that a terminal would obey.
std::string visible(std::string_view text) {
  std::string shown;
  VisibleText pieces(Tabs::keep);
  std::size_t start = 0;
  while (start <= text.size()) { // line by line
    const std::size_t end = std::min(text.find('\n', start), text.size());
    for (const auto& piece : pieces.next(utf16RepairingUTF8(text.substr(start, end - start))))
      shown += piece.text;
    if (end < text.size())
      shown += "␊";
    start = end + 1;
  }
  return shown;
}

/// How many variables of each kind there are.
struct Counts {
  std::size_t same = 0;
  std::size_t added = 0;
  std::size_t changed = 0;
  std::size_t missing = 0;
};

void writeVariable(Output& output, std::string_view mark, Style style, std::string_view name,
                   std::string_view value) {
  output.write(fmt::format("{} {}", mark, visible(name)), style);
  output.write(fmt::format("={}\n", visible(value)));
}

Counts writeVariables(const SubprocessEnvironment::Values& users,
                      const SubprocessEnvironment::Values& own, bool onlyDifferences,
                      Output& output) {
  Counts counts;
  for (const auto& [name, value] : users) {
    const auto here = own.find(name);
    if (here == own.end()) {
      ++counts.added;
      writeVariable(output, "+", Style::heading, name, value);
    } else if (here->second != value) {
      ++counts.changed;
      writeVariable(output, "~", Style::heading, name, value);
      output.write(fmt::format("    here: {}\n", visible(here->second)), Style::faint);
    } else {
      ++counts.same;
      if (!onlyDifferences)
        writeVariable(output, " ", Style::field, name, value);
    }
  }
  for (const auto& [name, value] : own)
    if (!users.contains(name)) {
      ++counts.missing;
      writeVariable(output, "-", Style::error, name, value);
    }
  return counts;
}

void run(const Arguments& arguments, Streams& streams) {
  if (!arguments.operands.empty())
    throw UsageError("“velmar env” takes no operands.");
  const UserEnvironment user = askForUserEnvironment(arguments, streams);
  const Counts counts = writeVariables(user.values, streams.allVariables(),
                                       arguments.has("--differences"), streams.output);
  const auto milliseconds = std::chrono::duration<double, std::milli>(user.duration).count();
  streams.output.write(
      fmt::format(
          "{}: {} variables as here, {} of the user’s alone, {} with another value, {} only "
          "here, {:.1f} ms\n",
          user.shell.description(), counts.same, counts.added, counts.changed, counts.missing,
          milliseconds),
      Style::faint);
}

} // namespace

Command envCommand() {
  std::vector<Option> options = {{"--differences", "", "Leave out what is the same here."}};
  for (const Option& option : userEnvironmentOptions())
    options.push_back(option);
  return {
      .name = "env",
      .summary = "Show the environment that the user has in a terminal.",
      .usage = "env [--differences] [--shell PATH]",
      .details =
          "Asks the user’s login shell, as the engine does for an application that was started "
          "from the desktop. In front of a variable stands “+” if this process doesn’t have it, "
          "“~” if it has another value here, and “-” if only this process has it.",
      .options = std::move(options),
      .examples = {{"velmar env --differences",
                    "What a terminal would have and this process hasn’t."},
                   {"velmar env --shell /bin/zsh --timeout 2",
                    "Another shell, and little patience."}},
      .run = run,
  };
}

} // namespace velmar::host
