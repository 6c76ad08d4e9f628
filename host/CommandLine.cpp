#include "host/CommandLine.h"

#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarPlatform/Unicode/Characters.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/CursorCommands.h"
#include "host/EnvCommand.h"
#include "host/ExecCommand.h"
#include "host/ExplainCommand.h"
#include "host/Languages.h"
#include "host/LanguagesCommand.h"
#include "host/MemoryCommand.h"
#include "host/OutlineCommand.h"
#include "host/PeerCommand.h"
#include "host/RPCCommand.h"
#include "host/ReplayCommand.h"
#include "host/ShowCommand.h"
#include "host/ShrinkCommand.h"
#include "host/TreeCommand.h"
#include "host/WhichCommand.h"
#include "host/Wording.h"

#include <algorithm>
#include <fmt/format.h>
#include <new>

namespace velmar::host {

namespace {

constexpr std::int64_t helpColumns = 80;

constexpr std::string_view exitCodes =
    "Exit codes: 0 done, 1 the input couldn’t be used, 2 the command line makes no sense.\n";

std::string version() {
  const AppBundleFacts facts = applicationFacts();
  return fmt::format("{} {} (grammars of ABI {} to {})\n", *facts.name, *facts.versionString,
                     Grammar::oldestSupportedABIVersion.rawValue,
                     Grammar::newestSupportedABIVersion.rawValue);
}

void writeOverview(Output& output) {
  output.write("velmar", Style::heading);
  output.write(" shows what the engine of a programmer’s editor makes of a text.\n\n");
  for (const Command& command : commands()) {
    output.write(fmt::format("  velmar {:<38}", command.usage), Style::field);
    output.write(fmt::format(" {}\n", command.summary));
  }
  output.write(fmt::format("  velmar {:<38}", "help COMMAND"), Style::field);
  output.write(" All about one command, with examples.\n");
}

using Rows = std::vector<std::pair<std::string, std::string_view>>;

/// Two columns, the first as wide as it must be.
void writeRows(std::string_view heading, const Rows& rows, Output& output) {
  if (rows.empty())
    return;
  std::int64_t width = 0;
  for (const auto& [left, right] : rows)
    width = std::max(width, characterCount(left));
  output.write(fmt::format("\n{}:\n", heading), Style::heading);
  for (const auto& [left, right] : rows)
    output.write(fmt::format("  {:<{}}  {}\n", left, width, right));
}

void writeHelp(const Command& command, Output& output) {
  output.write(fmt::format("{}\n\n", command.summary));
  output.write("Usage: ", Style::heading);
  output.write(fmt::format("velmar {}\n", command.usage));
  if (!command.details.empty())
    output.write("\n" + foldedParagraphs(command.details, helpColumns));
  Rows options;
  for (const Option& option : command.options)
    options.emplace_back(fmt::format("{} {}", option.name, option.value), option.summary);
  writeRows("Options", options, output);
  Rows examples;
  for (const Example& example : command.examples)
    examples.emplace_back(example.command, example.shows);
  writeRows("Examples", examples, output);
  output.write("\n");
  output.write(exitCodes);
}

const Command& commandNamed(std::string_view name) {
  const auto found = std::ranges::find(commands(), name, &Command::name);
  if (found != commands().end())
    return *found;
  std::vector<std::string_view> names = {"help"};
  for (const Command& command : commands())
    names.push_back(command.name);
  throw UsageError(fmt::format("There is no command “{}”{}", name, endWithSuggestion(name, names)));
}

void help(std::span<const std::string> words, Streams& streams) {
  if (words.size() > 1)
    throw UsageError("Help is given on one command at a time.");
  if (!words.empty()) {
    writeHelp(commandNamed(words.front()), streams.output);
    return;
  }
  writeOverview(streams.output);
  streams.output.write("\n--version prints the version. ");
  streams.output.write("NO_COLOR in the environment keeps colours off.\n");
  streams.output.write(exitCodes);
}

/// What somebody sees who runs the program to find out what it is.
void showWhatItCanDo(Streams& streams) {
  writeOverview(streams.output);
  streams.output.write("\nHere is a small page with its layers, as “velmar show” paints it:\n\n");
  showSamplePage(streams);
}

/// Options may stand anywhere, so help can be asked for behind a half-typed command; but not behind
/// "--".
bool asksForHelp(std::span<const std::string> words) {
  const auto end = std::ranges::find(words, "--");
  return std::any_of(words.begin(), end,
                     [](const std::string& word) { return word == "--help" || word == "-h"; });
}

void dispatch(std::span<const std::string> words, Streams& streams) {
  if (words.empty())
    return showWhatItCanDo(streams);
  const std::string& name = words.front();
  const auto rest = words.subspan(1);
  if (name == "--version")
    return streams.output.write(version());
  if (name == "help" || name == "--help" || name == "-h")
    return help(rest, streams);
  if (name.starts_with('-')) {
    constexpr std::string_view names[] = {"--help", "--version"};
    throw UsageError(fmt::format("Unknown option “{}”{}", name, endWithSuggestion(name, names)));
  }
  const Command& command = commandNamed(name);
  if (asksForHelp(rest))
    return writeHelp(command, streams.output);
  command.run(parseArguments(command, rest), streams);
}

/// Runs `body` and turns what it throws into lines on standard error.
template <class Body>
ExitCode reportingFailures(Streams& streams, Body&& body) {
  const auto complain = [&](std::string_view sentence, std::string_view hint = "") {
    streams.output.flush(); // What has been found out so far comes first, on a terminal.
    streams.errors.write("velmar: ", Style::error);
    streams.errors.write(fmt::format("{}\n{}", repairedUTF8(sentence), hint));
    streams.errors.flush();
  };
  try {
    body();
    return ExitCode::done;
  } catch (const UsageError& error) {
    complain(error.message(), "See “velmar help”.\n");
    return ExitCode::usage;
  } catch (const Error& error) {
    complain(error.message());
  } catch (const std::bad_alloc&) {
    complain("There isn’t enough memory.");
  }
  return ExitCode::unusableInput;
}

} // namespace

std::span<const Command> commands() {
  static const Command all[] = {
      showCommand(),     explainCommand(),  treeCommand(),   outlineCommand(), foldsCommand(),
      tagsCommand(),     bracketsCommand(), wordsCommand(),  colorsCommand(),  proseCommand(),
      completeCommand(), indentCommand(),   replayCommand(), shrinkCommand(),  languagesCommand(),
      memoryCommand(),   rpcCommand(),      peerCommand(),   playCommand(),    envCommand(),
      whichCommand(),    execCommand()};
  return all;
}

AppBundleFacts applicationFacts() {
  return {.name = "velmar", .versionString = VELMAR_VERSION, .resourcesPath = dataFolder()};
}

ExitCode runCommandLine(std::span<const std::string> words, Streams& streams) {
  try {
    return reportingFailures(streams, [&] {
      dispatch(words, streams);
      streams.output.flush();
      streams.errors.flush();
    });
  } catch (const ProgramExit& exit) {
    return static_cast<ExitCode>(exit.code);
  } catch (const BrokenPipe&) {
    return ExitCode::done;
  } catch (const Error&) {
    return ExitCode::unusableInput; // Standard error itself can't be written: nobody to tell.
  }
}

} // namespace velmar::host
