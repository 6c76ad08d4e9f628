#include "tests/packs/PackLanguages.h"

#include "VelmarParser/Query/TextEnumeration.h"
#include "host/LanguageTable.h"
#include "tests/packs/PackFiles.h"

#include <vector>

namespace velmar::testing {

std::shared_ptr<PackLanguages> PackLanguages::make() {
  static auto* const all = new std::vector<std::shared_ptr<PackLanguages>>;
  return all->emplace_back(std::make_shared<PackLanguages>());
}

PackLanguages& PackLanguages::shared() {
  static const auto languages = make();
  return *languages;
}

PackLanguages::PackLanguages() : reader_(packFolder()) {}

ParseConfiguration PackLanguages::configuration(std::string_view language) {
  if (const auto made = made_.find(language); made != made_.end())
    return made->second;
  const host::Language* const known = host::languageNamed(language);
  ParseConfiguration made(LanguageID{std::string(language)}, grammarOf(language),
                          known ? known->syntax : LanguageSyntax{}, shared_from_this());
  return made_.emplace(language, std::move(made)).first->second;
}

std::optional<ParseConfiguration> PackLanguages::configurationMatching(std::string_view name,
                                                                       const ParseConfiguration&) {
  const host::Language* language = host::languageNamed(name);
  if (!language || !language->grammar || !Grammar::isAvailable(*language->grammar))
    return std::nullopt;
  return configuration(language->id.rawValue);
}

std::optional<std::string> PackLanguages::queryTextFor(ParseQueryCategory category,
                                                       const ParseConfiguration& asking) {
  auto text = reader_.textFor(asking.id().rawValue, rawValueOf(category));
  return text ? std::optional(std::move(text->text)) : std::nullopt;
}

std::optional<std::string> PackLanguages::queryTextNamed(std::string_view name,
                                                         const ParseConfiguration& asking) {
  auto text = reader_.textNamed(asking.id().rawValue, name);
  return text ? std::optional(std::move(text->text)) : std::nullopt;
}

} // namespace velmar::testing
