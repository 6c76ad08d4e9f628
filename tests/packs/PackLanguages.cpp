#include "tests/packs/PackLanguages.h"

#include "tests/packs/PackFiles.h"

#include <algorithm>

namespace velmar::testing {

PackLanguages::PackLanguages() : reader_(packFolder()) {}

std::optional<ParseConfiguration> PackLanguages::configuration(const std::string& language) {
  if (const auto made = made_.find(language); made != made_.end())
    return made->second;
  static const auto files = languagePackFiles();
  if (std::ranges::find(files, language, &PackFile::language) == files.end())
    return std::nullopt;
  ParseConfiguration made(LanguageID{language}, grammarOf(language), LanguageSyntax{},
                          shared_from_this());
  return made_.emplace(language, std::move(made)).first->second;
}

std::optional<ParseConfiguration> PackLanguages::configurationMatching(std::string_view name,
                                                                       const ParseConfiguration&) {
  static const std::map<std::string_view, std::string> aliases{
      {"js", "javascript"}, {"ts", "typescript"}, {"c++", "cpp"}, {"md", "markdown"}};
  const auto alias = aliases.find(name);
  return configuration(alias == aliases.end() ? std::string(name) : alias->second);
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
