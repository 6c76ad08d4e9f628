#include "host/Languages.h"

#include "VelmarParser/Query/QueryError.h"
#include "host/LanguageTable.h"
#include "host/ShippedQueries.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>

namespace velmar::host {

namespace {

bool isFolder(const FilePath& path) {
  std::error_code failure;
  return std::filesystem::is_directory(path.string(), failure);
}

/// The installed data: `prefix/bin/velmar` has its own in `prefix/share/velmar`.
FilePath dataBesideProgram() {
  std::error_code failure;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", failure);
  const FilePath prefix =
      FilePath(program.string()).removingLastComponent().removingLastComponent();
  return prefix.appending(VELMAR_DATA_FOLDER);
}

const Language* tableRowFor(const LanguageID& id) {
  const auto found = std::ranges::find(languages(), id, &Language::id);
  return found == languages().end() ? nullptr : &*found;
}

/// What people write around a language's name: blanks, and the braces and the dot of
/// "{.js .numbered}".
std::string_view trimmed(std::string_view name) {
  const auto isAround = [](char letter) {
    return letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n' || letter == '{' ||
           letter == '}';
  };
  while (!name.empty() && (isAround(name.front()) || name.front() == '.'))
    name.remove_prefix(1);
  while (!name.empty() && isAround(name.back()))
    name.remove_suffix(1);
  return name;
}

/// Without what follows the language at once, as in "js{1,3}" or "rust,ignore".
std::string_view firstWordOf(std::string_view name) {
  return name.substr(0, name.find_first_of(" \t,{(["));
}

} // namespace

FilePath dataFolder() {
  const FilePath packs(VELMAR_PACKS_FOLDER);
  return isFolder(packs) ? packs.removingLastComponent() : dataBesideProgram();
}

LanguageFolders LanguageFolders::find(const Streams& streams) {
  LanguageFolders folders{.packs = FilePath(VELMAR_PACKS_FOLDER),
                          .shipped = FilePath(VELMAR_SHIPPED_FOLDER),
                          .note = ""};
  if (!isFolder(folders.packs))
    folders.packs = dataBesideProgram().appending("packs");
  if (!isFolder(folders.shipped))
    folders.shipped = dataBesideProgram().appending("queries");
  if (const auto named = streams.variable("VELMAR_PACKS"); named && !named->empty())
    folders.packs = FilePath(*named);
  if (!isFolder(folders.packs))
    folders.note = fmt::format("There is no folder of packs at “{}”; most text stays plain.",
                               folders.packs.description());
  return folders;
}

Languages::Languages(LanguageFolders folders, Murmur murmur)
    : folders_(std::move(folders)), packs_(folders_.packs), murmur_(std::move(murmur)) {}

std::optional<ParseConfiguration> Languages::configurationFor(const LanguageID& language) {
  return made_.withLock([&](auto& made) -> std::optional<ParseConfiguration> {
    if (const auto known = made.find(language); known != made.end())
      return known->second;
    const Language* row = tableRowFor(language);
    if (!row || !row->grammar || !Grammar::isAvailable(*row->grammar))
      return std::nullopt;
    // The configuration borrows this object: the pointer that it keeps owns nothing.
    ParseConfiguration configuration(
        language, Grammar::fromBuiltIn(*row->grammar), row->syntax,
        std::shared_ptr<ParseConfigurationResolving>(std::shared_ptr<void>(), this));
    return made.emplace(language, std::move(configuration)).first->second;
  });
}

std::optional<PackText> Languages::textFor(ParseQueryCategory category,
                                           const ParseConfiguration& configuration) const {
  const std::string& language = configuration.id().rawValue;
  const std::string_view name = rawValueOf(category);
  if (packs_.hasPack(language))
    return packs_.textFor(language, name);
  auto shipped = shippedTextFor(language, name, folders_.shipped);
  if (!shipped)
    return std::nullopt;
  try {
    return adaptedToQueries(std::move(*shipped), configuration.grammar());
  } catch (const Error& error) { // QueryError or QueryPredicateError: another dialect.
    if (murmur_)
      murmur_(fmt::format("The {} that the grammar of {} brings are left out. {}", name, language,
                          error.message()));
    return std::nullopt;
  }
}

std::optional<ParseConfiguration> Languages::configurationMatching(std::string_view languageName,
                                                                   const ParseConfiguration&) {
  const std::string_view name = trimmed(languageName);
  const Language* language = languageNamed(name);
  if (!language)
    language = languageNamed(firstWordOf(name));
  return language ? configurationFor(language->id) : std::nullopt;
}

std::optional<std::string> Languages::queryTextFor(ParseQueryCategory category,
                                                   const ParseConfiguration& configuration) {
  auto text = textFor(category, configuration);
  return text ? std::optional(std::move(text->text)) : std::nullopt;
}

std::optional<std::string> Languages::queryTextNamed(std::string_view name,
                                                     const ParseConfiguration& configuration) {
  auto text = packs_.textNamed(configuration.id().rawValue, name);
  return text ? std::optional(std::move(text->text)) : std::nullopt;
}

} // namespace velmar::host
