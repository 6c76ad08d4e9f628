#include "host/LanguageChoice.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "host/Command.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// The units of a first line that an interpreter could be named in.
constexpr std::int64_t longestInterpreterLine = 256;

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
  if (const Language* detected = languageOf(source.filename, firstLine))
    return *detected;
  throw Error(
      fmt::format("Could not tell the language of {}; name it with --language.", source.name));
}

std::shared_ptr<const Grammar> grammarOf(const Language& language) {
  if (!language.grammar)
    throw Error(fmt::format("There is no grammar for the language “{}”.", language.id.rawValue));
  return Grammar::fromBuiltIn(*language.grammar);
}

} // namespace velmar::host
