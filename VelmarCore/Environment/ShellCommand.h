// A program with its arguments, as settings and packages name one: read from a line of text, and
// written as one again.
//
// The line is no program for a shell: quotes and backslashes are all that it knows. Writing quotes
// what would fall apart, and no more: `$`, `;` and the like stay what they are for the shell.
#pragma once

#include "VelmarPlatform/Coding/Forward.h"
#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Files/FilePath.h"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar {

struct ShellCommand {
  std::string name;
  std::vector<std::string> arguments = {};

  /// Reads a line: words with white space between them. A word that starts with a quote goes to the
  /// next one like it, or to the end; in there a backslash makes the next character literal. In
  /// other words quotes and backslashes are characters like all others. Absent if there is no word.
  /// O(n).
  [[nodiscard]] static std::optional<ShellCommand> parsing(std::string_view line);

  /// The first path that has a right to be executed, by anybody, among those that `name` leads to
  /// from `folders`, or from `ShellEnvironment::userPaths()` if there are none given. Absent for an
  /// empty name. Neither the kind of file nor the user's own rights are looked at. Looks away from
  /// the shared threads.
  [[nodiscard]] Task<std::optional<FilePath>>
  resolve(std::optional<std::vector<FilePath>> folders = std::nullopt) const;

  /// The name and the arguments, each quoted.
  [[nodiscard]] std::string asShellArguments(std::string_view separator) const;
  /// For people: the name as it stands, and the arguments quoted.
  [[nodiscard]] std::string description() const;
  [[nodiscard]] std::string debugDescription() const { return description(); }

  bool operator==(const ShellCommand&) const = default;
};

/// `text` without white space at its ends, and with a backslash before each blank, `&`, `(`, `)`
/// and backtick; before each quote as well, of the kind that the text both starts and ends with.
[[nodiscard]] std::string asShellArgument(std::string_view text);
[[nodiscard]] std::string asShellArgument(const FilePath& path);
/// Each of them, joined.
[[nodiscard]] std::string asShellArguments(std::span<const std::string> texts,
                                           std::string_view separator);

/// Writes the description.
std::ostream& operator<<(std::ostream& stream, const ShellCommand& command);

/// An array of texts: the name, then the arguments.
template <>
struct Coder<ShellCommand> {
  static bool decode(Decoder from, ShellCommand& into);
  static void encode(const ShellCommand& value, Encoder& into);
};

} // namespace velmar

template <>
struct std::hash<velmar::ShellCommand> {
  std::size_t operator()(const velmar::ShellCommand& command) const noexcept;
};
