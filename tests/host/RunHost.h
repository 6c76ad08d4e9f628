// Runs the program in process: what it reads, writes and answers.
#pragma once

#include "host/CommandLine.h"

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace velmar::testing {

struct HostResult {
  int exitCode = 0;
  std::string output;
  std::string errors;
};

struct HostInput {
  std::string standardInput = {};
  /// Show styles, as on a terminal.
  bool isTerminal = false;
  /// Variables of the environment; nothing of the tests' own.
  std::map<std::string, std::string, std::less<>> environment = {};
};

/// The clock moves by 1.5 ms with each look at it, so a parse always takes that long.
inline HostResult runHost(const std::vector<std::string>& words, const HostInput& input = {}) {
  host::StringOutput output(input.isTerminal);
  host::StringOutput errors(input.isTerminal);
  std::chrono::nanoseconds time{0};
  host::Streams streams{
      .readInput =
          [&](std::int64_t) {
            const auto bytes = bytesOf(input.standardInput);
            return Bytes(bytes.begin(), bytes.end());
          },
      .output = output,
      .errors = errors,
      .now = [&] { return time += std::chrono::microseconds(1500); },
      .environment = [&](std::string_view name) -> std::optional<std::string> {
        const auto found = input.environment.find(name);
        return found == input.environment.end() ? std::nullopt : std::optional(found->second);
      },
      .environmentVariables = [&] { return input.environment; },
  };
  const auto exitCode = static_cast<int>(host::runCommandLine(words, streams));
  return {.exitCode = exitCode, .output = output.text(), .errors = errors.text()};
}

} // namespace velmar::testing
