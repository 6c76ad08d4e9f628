// The packs of the source tree, as tests walk them.
#pragma once

#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarPlatform/Files/FilePath.h"
#include "host/PackReader.h"

#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::testing {

/// One query text: the pack of a language and a category, or "named/" and the name of a text that
/// others refer to.
struct PackFile {
  std::string language;
  std::string category;
  bool operator==(const PackFile&) const = default;

  /// "cpp/highlights.scm"
  [[nodiscard]] std::string path() const { return language + "/" + category + ".scm"; }
};

void PrintTo(const PackFile& file, std::ostream* stream);

[[nodiscard]] FilePath packFolder();

/// Its text, behind what it inherits.
[[nodiscard]] host::PackText textOf(const PackFile& file);

/// All of them in order, also those that are only inherited from.
[[nodiscard]] std::vector<PackFile> allPackFiles();
/// Those of languages.
[[nodiscard]] std::vector<PackFile> languagePackFiles();

/// The grammar that a language is parsed with.
[[nodiscard]] std::shared_ptr<const Grammar> grammarOf(std::string_view language);

} // namespace velmar::testing
