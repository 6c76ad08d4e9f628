// The host's answer to the engine's questions about languages: which one a name in a document
// means, and what the texts of its queries are.
//
// The texts come from the packs (packs/README.md), and for a language without one from what its
// grammar brings along. Packs are looked for in the folder that the environment names in
// VELMAR_PACKS, else in the source tree that the program was built from, else where they are
// installed, relative to the program.
#pragma once

#include "VelmarCode/Language/LanguageID.h"
#include "VelmarParser/Document/ParseConfiguration.h"
#include "VelmarPlatform/Basics/LockedState.h"
#include "host/PackReader.h"
#include "host/Streams.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace velmar::host {

/// Where to read from.
struct LanguageFolders {
  FilePath packs;
  /// Holds the files of the table of shipped queries.
  FilePath shipped;
  /// A sentence for the user; empty if all is well.
  std::string note;

  /// Looks at the environment and the disk.
  [[nodiscard]] static LanguageFolders find(const Streams& streams);
};

/// The folder of the program's data, in which the packs lie: the sources', or the installed one.
[[nodiscard]] FilePath dataFolder();

/// Hears what a user need not know unless he asks: a sentence.
using Murmur = std::function<void(std::string_view sentence)>;

/// Makes one configuration for each language, on first use, and keeps it. Configurations refer back
/// to this object, so it outlives them and all documents. It may be asked from any thread, as far
/// as `murmur` bears it; the engine's calls back only read files.
class Languages final : public ParseConfigurationResolving {
public:
  explicit Languages(LanguageFolders folders, Murmur murmur = {});
  Languages(const Languages&) = delete;
  Languages& operator=(const Languages&) = delete;

  /// Absent for a language that the table doesn't know, or that has no grammar in this build.
  [[nodiscard]] std::optional<ParseConfiguration> configurationFor(const LanguageID& language);

  /// The text of a language's query with the places of its parts, as the engine gets it. Throws
  /// PackError for a pack that isn't in order.
  [[nodiscard]] std::optional<PackText> textFor(ParseQueryCategory category,
                                                const ParseConfiguration& configuration) const;

  [[nodiscard]] std::optional<ParseConfiguration>
  configurationMatching(std::string_view languageName,
                        const ParseConfiguration& configuration) override;
  [[nodiscard]] std::optional<std::string>
  queryTextFor(ParseQueryCategory category, const ParseConfiguration& configuration) override;
  [[nodiscard]] std::optional<std::string>
  queryTextNamed(std::string_view name, const ParseConfiguration& configuration) override;

private:
  LanguageFolders folders_;
  PackReader packs_;
  Murmur murmur_;
  /// No lock of a configuration is ever taken under this one.
  LockedState<std::map<LanguageID, ParseConfiguration>> made_;
};

} // namespace velmar::host
