// The packs of the source tree as languages of documents.
#pragma once

#include "VelmarParser/Document/ParseConfiguration.h"
#include "host/PackReader.h"

#include <map>
#include <memory>
#include <string>

namespace velmar::testing {

/// Resolves a language by its ID, and a few names that injections use; knows the languages that
/// have a pack.
class PackLanguages : public ParseConfigurationResolving,
                      public std::enable_shared_from_this<PackLanguages> {
public:
  PackLanguages();

  /// Always the same configuration for the same language; absent without a pack.
  [[nodiscard]] std::optional<ParseConfiguration> configuration(const std::string& language);

  std::optional<ParseConfiguration> configurationMatching(std::string_view name,
                                                          const ParseConfiguration&) override;
  std::optional<std::string> queryTextFor(ParseQueryCategory category,
                                          const ParseConfiguration& asking) override;
  std::optional<std::string> queryTextNamed(std::string_view name,
                                            const ParseConfiguration& asking) override;

private:
  host::PackReader reader_;
  std::map<std::string, ParseConfiguration> made_;
};

} // namespace velmar::testing
