#include "tests/packs/PackFiles.h"

#include "cmake/SourceTree.h"
#include "host/LanguageTable.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <stdexcept>

namespace velmar::testing {

void PrintTo(const PackFile& file, std::ostream* stream) {
  *stream << file.path();
}

FilePath packFolder() {
  return FilePath(sourcePath("packs"));
}

host::PackText textOf(const PackFile& file) {
  constexpr std::string_view named = "named/";
  const host::PackReader reader(packFolder());
  return (file.category.starts_with(named)
              ? reader.textNamed(file.language, file.category.substr(named.size()))
              : reader.textFor(file.language, file.category))
      .value();
}

std::vector<PackFile> allPackFiles() {
  std::vector<PackFile> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(packFolder().string())) {
    if (entry.path().extension() != ".scm")
      continue;
    // The language's folder, or one below it: "cpp/symbols", "cpp/named/arguments".
    const auto path = std::filesystem::relative(entry.path(), packFolder().string());
    files.push_back(
        {.language = path.begin()->string(),
         .category = path.lexically_relative(*path.begin()).replace_extension().generic_string()});
  }
  std::ranges::sort(files, {}, &PackFile::path);
  return files;
}

std::vector<PackFile> languagePackFiles() {
  std::vector<PackFile> files = allPackFiles();
  std::erase_if(files, [](const PackFile& file) { return file.language.starts_with('_'); });
  return files;
}

std::shared_ptr<const Grammar> grammarOf(std::string_view language) {
  const host::Language* known = host::languageNamed(language);
  // A pack under one of the language's other names would never be read.
  if (!known || known->id.rawValue != language || !known->grammar)
    throw std::invalid_argument(fmt::format("No grammar is known for the pack “{}”.", language));
  return Grammar::fromBuiltIn(*known->grammar);
}

} // namespace velmar::testing
