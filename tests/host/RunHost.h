// Runs the program in process: what it reads, writes and answers.
#pragma once

#include "host/CommandLine.h"

#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
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
  /// Hears all of the output so far, whenever some is delivered.
  std::function<void(const std::string& output)> onOutput = {};
};

/// Keeps what is written and tells of it.
class HeardOutput final : public host::Output {
public:
  explicit HeardOutput(const HostInput& input) : Output(input.isTerminal), input_(input) {}
  const std::string& text() {
    flush();
    return text_;
  }

protected:
  void deliver(std::string_view text) override {
    text_ += text;
    if (input_.onOutput)
      input_.onOutput(text_);
  }

private:
  const HostInput& input_;
  std::string text_;
};

/// The words of a command line without quotation: one more than there are blanks.
inline std::vector<std::string> wordsOf(std::string_view line) {
  std::vector<std::string> words(1);
  for (const char character : line)
    if (character == ' ')
      words.emplace_back();
    else
      words.back() += character;
  return words;
}

/// The clock moves by 1.5 ms with each look at it, so a parse always takes that long.
inline HostResult runHost(const std::vector<std::string>& words, const HostInput& input = {}) {
  HeardOutput output(input);
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
