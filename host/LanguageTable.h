// What the host knows of each language: how to recognise its files, which grammar parses them, how
// it comments, and by which other names people call it. The engine itself takes all of this from
// its application.
#pragma once

#include "VelmarCode/Language/LanguageDetection.h"
#include "VelmarCode/Language/LanguageID.h"
#include "VelmarCode/Language/LanguageSyntax.h"
#include "VelmarParser/Grammar/Grammar.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

struct Language {
  LanguageID id;
  /// Absent for languages that are known but have no grammar.
  std::optional<Grammar::BuiltIn> grammar = std::nullopt;
  /// In lower case: what the info line of a Markdown fence or a user may say instead of `id`.
  std::vector<std::string_view> aliases = {};
  LanguageSyntax syntax = {};
  /// How the language claims a file.
  std::vector<LanguageDetectionRulePointer> rules = {};
};

/// All languages that the host has heard of. Made on first use, from any thread.
[[nodiscard]] std::span<const Language> languages();

/// The language with that identifier or alias, letter case aside; null if there is none.
[[nodiscard]] const Language* languageNamed(std::string_view name);

/// The languages that a file of that name, with that text, is most likely in: one, or those that
/// share an extension, or none if nothing speaks for any. In the order of the table. The name may
/// be absent, and of the text the first line is enough.
///
/// The whole file name counts most, then the compound extension, the extension, and the interpreter
/// line.
[[nodiscard]] std::vector<const Language*> languagesOf(std::optional<std::string_view> filename,
                                                       std::string_view text);

/// The first of these; null if there is none.
[[nodiscard]] const Language* languageOf(std::optional<std::string_view> filename,
                                         std::string_view text);

} // namespace velmar::host
