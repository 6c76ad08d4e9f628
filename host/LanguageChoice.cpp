#include "host/LanguageChoice.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "host/Command.h"
#include "host/HeaderLanguage.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// The units of a first line that an interpreter could be named in.
constexpr std::int64_t longestInterpreterLine = 256;

bool isAmong(const LanguageID& id, const std::vector<const Language*>& detected) {
  return std::ranges::find(detected, id, &Language::id) != detected.end();
}

} // namespace

const Language& languageWanted(std::string_view name) {
  if (const Language* named = languageNamed(name))
    return *named;
  std::vector<std::string_view> names;
  for (const Language& language : languages())
    names.push_back(language.id.rawValue);
  throw UsageError(
      fmt::format("There is no language “{}”{}", name, endWithSuggestion(name, names)));
}

const Language& languageFor(const SourceText& source, std::optional<std::string_view> wanted) {
  if (wanted)
    return languageWanted(*wanted);
  const std::int64_t length =
      std::min(source.text->rangeOfLine(0).length(), longestInterpreterLine);
  const std::string firstLine = utf8RepairingUTF16(source.text->substringFor({0, length}));
  const auto detected = languagesOf(source.filename, firstLine);
  if (detected.size() > 1 && isAmong(LanguageID::cPlusPlus, detected) &&
      isCPlusPlusHeader(*source.text))
    return languageWanted(LanguageID::cPlusPlus.rawValue);
  if (!detected.empty())
    return *detected.front();
  throw Error(
      fmt::format("Could not tell the language of {}; name it with --language.", source.name));
}

std::shared_ptr<const Grammar> grammarOf(const Language& language) {
  if (!language.grammar)
    throw Error(fmt::format("There is no grammar for the language “{}”.", language.id.rawValue));
  return Grammar::fromBuiltIn(*language.grammar);
}

} // namespace velmar::host
