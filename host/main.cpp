// The program `velmar`: the engine at work on the command line. See CommandLine.h.
#include "VelmarPlatform/Files/FileContents.h"
#include "VelmarPlatform/Process/SubprocessEnvironment.h"
#include "host/CommandLine.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <unistd.h>

int main(int argc, char** argv) {
  // A reader that goes away is seen as a failed write, not as the death of this process.
  std::signal(SIGPIPE, SIG_IGN);
  velmar::AppBundle::setFacts(velmar::host::applicationFacts());
  velmar::host::FileOutput output(STDOUT_FILENO);
  velmar::host::FileOutput errors(STDERR_FILENO);
  velmar::host::Streams streams{
      .readInput =
          [](std::int64_t limit) { return velmar::readStandardInput({.sizeLimit = limit}); },
      .output = output,
      .errors = errors,
      .now =
          [] {
            return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch());
          },
      .environment = [](std::string_view name) -> std::optional<std::string> {
        const char* value = std::getenv(
            std::string(name).c_str()); // NOLINT(concurrency-mt-unsafe): nobody sets any
        return value ? std::optional<std::string>(value) : std::nullopt;
      },
      .environmentVariables = [] { return velmar::SubprocessEnvironment::inherited().values(); },
      .readLine = []() -> std::optional<std::string> {
        std::string line;
        return std::getline(std::cin, line) ? std::optional(line) : std::nullopt;
      },
  };
  const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
  return static_cast<int>(velmar::host::runCommandLine(words, streams));
}
