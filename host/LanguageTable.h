// What the host knows of each language: how to recognise its files, which grammar parses them, and
// by which other names people call it. The engine itself takes all of this from its application.
#pragma once

#include "VelmarParser/Grammar/Grammar.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

struct Language {
  std::string_view id;
  /// Absent for languages that are known but have no grammar.
  std::optional<Grammar::BuiltIn> grammar;
  /// Without a dot in front; compound ones as well, such as "html.erb".
  std::vector<std::string_view> extensions;
  /// Whole file names, such as "Makefile".
  std::vector<std::string_view> filenames;
  /// Programs that an interpreter line ("#!") can name. A version may follow in the file: "python"
  /// stands for "python3.11" too.
  std::vector<std::string_view> interpreters;
  /// In lower case: what the info line of a Markdown fence or a user may say instead of `id`.
  std::vector<std::string_view> aliases;
};

/// All languages, by their identifiers' order in the source. Made on first use.
[[nodiscard]] std::span<const Language> languages();

/// The language with that identifier or alias, letter case aside; null if there is none.
[[nodiscard]] const Language* languageNamed(std::string_view name);

/// The language that a file of that name, or a text with that first line, is most likely in; null
/// if nothing speaks for any.
///
/// The whole file name decides, else the compound extension, else the extension, else the
/// interpreter line.
[[nodiscard]] const Language* languageOfFile(std::string_view filename, std::string_view firstLine);

} // namespace velmar::host
