#include "tests/packs/PackFiles.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <stdexcept>

namespace velmar::testing {

void PrintTo(const PackFile& file, std::ostream* stream) {
  *stream << file.path();
}

FilePath packFolder() {
  return FilePath(VELMAR_SOURCE_DIR).appending("packs");
}

std::vector<PackFile> allPackFiles() {
  std::vector<PackFile> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(packFolder().string())) {
    if (entry.path().extension() == ".scm")
      files.push_back({.language = entry.path().parent_path().filename().string(),
                       .category = entry.path().stem().string()});
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
  // Most languages have the name of their grammar.
  struct Other {
    std::string_view language;
    std::string_view grammar;
  };
  constexpr Other others[] = {
      {"csharp", "c_sharp"},   {"html+ejs", "embedded_template"}, {"html+erb", "embedded_template"},
      {"html+jinja", "jinja"}, {"php_embedded", "php_only"},      {"shell", "bash"},
      {"tsq", "query"},
  };
  const auto other = std::ranges::find(others, language, &Other::language);
  const auto builtIn =
      Grammar::builtInFromRawValue(other == std::end(others) ? language : other->grammar);
  if (!builtIn)
    throw std::invalid_argument(fmt::format("No grammar is known for the pack “{}”.", language));
  return Grammar::fromBuiltIn(*builtIn);
}

} // namespace velmar::testing
