#include "host/WhichCommand.h"

#include "VelmarCore/ShellEnvironment.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "host/UserEnvironment.h"

#include <fmt/format.h>

namespace velmar::host {

namespace {

std::string listOf(const std::vector<FilePath>& folders) {
  std::string list;
  for (const FilePath& folder : folders)
    list += (list.empty() ? "" : ", ") + folder.description();
  return list.empty() ? "no folder at all" : list;
}

/// Where the user's shell looks for programs; where every shell does, with a note, if that can't be
/// had.
std::vector<FilePath> searchedFolders(const Arguments& arguments, Streams& streams) {
  try {
    return SubprocessEnvironment(askForUserEnvironment(arguments, streams).values).paths();
  } catch (const UsageError&) {
    throw;
  } catch (const Error& error) {
    streams.errors.write(
        fmt::format("velmar: {} Looking in the standard folders.\n", error.message()));
    return ShellEnvironment::standardPaths();
  }
}

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.operands.empty())
    throw UsageError("“velmar which” needs the name of a program.");
  const std::vector<FilePath> folders = searchedFolders(arguments, streams);
  std::string missing;
  for (const std::string& name : arguments.operands) {
    const auto found = mainExecutor().run([&] { return ShellCommand(name).resolve(folders); });
    if (found)
      streams.output.write(found->string() + "\n");
    else
      missing += fmt::format("{}“{}”", missing.empty() ? "" : ", ", name);
  }
  if (!missing.empty())
    throw Error(fmt::format("There is no {} in {}.", missing, listOf(folders)));
}

} // namespace

Command whichCommand() {
  return {
      .name = "which",
      .summary = "Find programs where the user would find them.",
      .usage = "which NAME… [--shell PATH]",
      .details =
          "Looks in the folders of the PATH that the user’s login shell gives, as the engine does "
          "for language servers and tools. A path is found from each of them as well.",
      .options = userEnvironmentOptions(),
      .examples = {{"velmar which clangd node", "Both, each on a line."},
                   {"velmar which cargo --shell /bin/zsh", "As another shell has it."}},
      .run = run,
  };
}

} // namespace velmar::host
