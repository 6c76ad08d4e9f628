// The languages that a test of packs needs: those of the host, by their names and aliases, with the
// queries of their packs if there are any.
#pragma once

#include "VelmarParser/Document/ParseConfiguration.h"
#include "host/PackReader.h"

#include <map>
#include <memory>
#include <string>

namespace velmar::testing {

/// One thread's. Lives as long as the process, for it and its configurations refer to each other.
class PackLanguages : public ParseConfigurationResolving,
                      public std::enable_shared_from_this<PackLanguages> {
public:
  static std::shared_ptr<PackLanguages> make();
  /// One for all tests that don't need their own: it compiles each query once.
  static PackLanguages& shared();

  PackLanguages();

  /// Always the same configuration for the same language. Throws where no grammar is known.
  ParseConfiguration configuration(std::string_view language);

  std::optional<ParseConfiguration>
  configurationMatching(std::string_view name, const ParseConfiguration& asking) override;
  std::optional<std::string> queryTextFor(ParseQueryCategory category,
                                          const ParseConfiguration& asking) override;
  std::optional<std::string> queryTextNamed(std::string_view name,
                                            const ParseConfiguration& asking) override;

private:
  host::PackReader reader_;
  std::map<std::string, ParseConfiguration, std::less<>> made_;
};

} // namespace velmar::testing
