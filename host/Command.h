// What a command is: one row of the host's table, with all that its help page says.
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "host/Streams.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

enum class ExitCode {
  done = 0,
  /// A file, or whatever else was named, couldn't be used.
  unusableInput = 1,
  /// The command line itself makes no sense.
  usage = 2,
};

/// The command line makes no sense. The message says why.
class UsageError : public Error {
public:
  using Error::Error;
};

/// Ends the program with an exit code of its own, once everything has been said: that of another
/// program.
struct ProgramExit {
  int code = 0;
};

struct Option {
  std::string_view name;  ///< With its dashes: "--language".
  std::string_view value; ///< What to call its value; empty for an option that is just there.
  std::string_view summary;
};

struct Example {
  std::string_view command;
  std::string_view shows;
};

/// The words behind a command's name, sorted into options and operands.
struct Arguments {
  std::vector<std::string> operands;
  /// By name; the value is empty for an option without one.
  std::map<std::string, std::string, std::less<>> options;

  [[nodiscard]] bool has(std::string_view option) const { return options.contains(option); }
  [[nodiscard]] std::optional<std::string_view> valueOf(std::string_view option) const;
};

struct Command {
  std::string_view name;
  std::string_view summary;
  std::string_view usage; ///< Without the program's name: "tree FILE [--json]".
  /// What isn't plain from the summary: paragraphs, an empty line between them, to be folded.
  /// Lines that begin with a blank stay as they stand.
  std::string_view details;
  std::vector<Option> options;
  std::vector<Example> examples;
  /// Does the work. Throws UsageError, any other Error for input that can't be used, or
  /// ProgramExit.
  void (*run)(const Arguments& arguments, Streams& streams);
};

/// Sorts `words` by the command's options. Takes "--name value" and "--name=value"; "--" makes all
/// that follows operands, and standard input, "-" or a place "-:2:5", is an operand. Throws
/// UsageError for unknown options, missing and superfluous values.
[[nodiscard]] Arguments parseArguments(const Command& command, std::span<const std::string> words);

/// The name among `names` that `word` was probably meant to be; absent if none is close.
[[nodiscard]] std::optional<std::string_view> nearestName(std::string_view word,
                                                          std::span<const std::string_view> names);

/// "; did you mean “tree”?" or, where no name is near, ".".
[[nodiscard]] std::string endWithSuggestion(std::string_view word,
                                            std::span<const std::string_view> names);

} // namespace velmar::host
