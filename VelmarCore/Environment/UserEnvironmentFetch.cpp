#include "VelmarCore/Environment/UserEnvironmentFetch.h"

#include <algorithm>
#include <chrono>
#include <csignal>

namespace velmar {

namespace {

constexpr std::size_t outputLimit = 0x20000;

/// What stands in front of the first line feed, which goes with it.
std::string_view takeLine(std::string_view& text) {
  const std::size_t length = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, length);
  text.remove_prefix(std::min(length + 1, text.size()));
  return line;
}

} // namespace

Subprocess::Arguments environmentArgumentsFor(const FilePath& shell) {
  const std::string name = shell.lastComponent();
  if (name == "csh" || name == "tcsh")
    return {"-i", "-c", "/usr/bin/env"};
  return {"-i", "-l", "-c", "/usr/bin/env"};
}

SubprocessEnvironment::Values variablesInOutput(std::string_view output) {
  SubprocessEnvironment::Values variables;
  while (!output.empty()) {
    const std::string_view line = takeLine(output);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos)
      continue;
    const std::string_view name = line.substr(0, equals);
    if (name != "_") // the program that printed it
      variables.insert_or_assign(std::string(name), line.substr(equals + 1));
  }
  return variables;
}

Task<SubprocessEnvironment::Values> fetchUserEnvironment(FilePath shell,
                                                         SubprocessEnvironment::Values base) {
  Subprocess::Configuration configuration{.executable = Subprocess::Executable::path(shell),
                                          .arguments = environmentArgumentsFor(shell)};
  // Interactive shells ignore SIGTERM.
  configuration.platformOptions.teardownSequence = {
      TeardownStep::sendSignal(SIGHUP, std::chrono::milliseconds(500))};
  Subprocess::CollectedResult result = co_await Subprocess::run(
      std::move(configuration),
      {.output = Subprocess::StringOutput{outputLimit}, .error = Subprocess::DiscardedOutput()});
  std::string_view output = result.standardOutput;
  if (result.isOutputTruncated) // half a value would be worse than none
    output = output.substr(0, output.rfind('\n') + 1);
  SubprocessEnvironment::Values variables = variablesInOutput(output);
  variables.merge(base); // adds what isn't there
  co_return variables;
}

} // namespace velmar
