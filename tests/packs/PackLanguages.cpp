#include "tests/packs/PackLanguages.h"

#include "VelmarParser/Query/TextEnumeration.h"
#include "tests/packs/PackFiles.h"

#include <vector>

namespace velmar::testing {

std::shared_ptr<PackLanguages> PackLanguages::make() {
  static auto* const all = new std::vector<std::shared_ptr<PackLanguages>>;
  return all->emplace_back(std::make_shared<PackLanguages>());
}

PackLanguages::PackLanguages() : reader_(packFolder()) {}

ParseConfiguration PackLanguages::configuration(std::string_view language) {
  if (const auto made = made_.find(language); made != made_.end())
    return made->second;
  ParseConfiguration made(LanguageID{std::string(language)}, grammarOf(language), LanguageSyntax{},
                          shared_from_this());
  return made_.emplace(language, std::move(made)).first->second;
}

std::optional<ParseConfiguration> PackLanguages::configurationMatching(std::string_view name,
                                                                       const ParseConfiguration&) {
  if (name == "js")
    name = "javascript";
  if (name == "ts")
    name = "typescript";
  if (name == "md")
    name = "markdown";
  const auto builtIn = Grammar::builtInFromRawValue(name);
  if (!builtIn || !Grammar::isAvailable(*builtIn))
    return std::nullopt;
  return configuration(name);
}

std::optional<std::string> PackLanguages::queryTextFor(ParseQueryCategory category,
                                                       const ParseConfiguration& asking) {
  auto text = reader_.textFor(asking.id().rawValue, rawValueOf(category));
  return text ? std::optional(std::move(text->text)) : std::nullopt;
}

std::optional<std::string> PackLanguages::queryTextNamed(std::string_view,
                                                         const ParseConfiguration&) {
  return std::nullopt;
}

} // namespace velmar::testing
