#include "host/PackReader.h"

#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <iterator>

namespace velmar::host {

namespace {

/// The names behind "; inherits:" in the first line.
std::vector<std::string> parentsIn(std::string_view text) {
  constexpr std::string_view mark = "; inherits:";
  if (!text.starts_with(mark))
    return {};
  const std::string_view line = text.substr(0, text.find_first_of("\r\n")).substr(mark.size());
  std::vector<std::string> parents;
  std::string name;
  for (const char letter : line) {
    if (letter == ',')
      parents.push_back(std::exchange(name, {}));
    else if (letter != ' ' && letter != '\t')
      name += letter;
  }
  parents.push_back(std::move(name));
  return parents;
}

bool isFolderName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

std::optional<std::string> contentsOf(const FilePath& file) {
  std::ifstream stream(file.string(), std::ios::binary);
  if (!stream)
    return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

} // namespace

/// The text so far, with the packs that are in it and those that wait for their parents.
struct PackReader::Assembly {
  /// Below each pack's folder, without the extension: "highlights".
  std::string textName;
  PackText made = {};
  std::vector<std::string> done = {};
  std::vector<std::string> waiting = {};
};

PackText::Place PackText::placeOf(std::int64_t offset) const {
  precondition(offset >= 0 && offset <= std::ssize(text), "The offset lies outside the text.");
  const auto next = std::ranges::upper_bound(pieces, offset, {}, &Piece::start);
  const Piece& piece = *std::prev(next);
  return {.file = piece.file,
          .line = 1 + std::count(text.begin() + piece.start, text.begin() + offset, '\n')};
}

std::optional<PackText> PackReader::textFor(std::string_view language,
                                            std::string_view category) const {
  Assembly assembly{.textName = std::string(category)};
  if (!isFolderName(category) || !append(language, assembly))
    return std::nullopt;
  return std::move(assembly.made);
}

std::optional<PackText> PackReader::textNamed(std::string_view language,
                                              std::string_view name) const {
  Assembly assembly{.textName = fmt::format("named/{}", name)};
  if (!isFolderName(name) || !append(language, assembly))
    return std::nullopt;
  return std::move(assembly.made);
}

bool PackReader::hasPack(std::string_view language) const {
  std::error_code failure;
  return isFolderName(language) &&
         std::filesystem::is_directory(folder_.appending(language).string(), failure);
}

bool PackReader::append(std::string_view pack, Assembly& assembly) const {
  if (!isFolderName(pack))
    return false;
  std::string file = fmt::format("{}/{}.scm", pack, assembly.textName);
  const auto text = contentsOf(folder_.appending(file));
  if (!text)
    return false;

  assembly.waiting.emplace_back(pack);
  for (const std::string& parent : parentsIn(*text)) {
    if (std::ranges::find(assembly.waiting, parent) != assembly.waiting.end())
      throw PackError(fmt::format("The pack “{}” inherits itself.", file));
    if (std::ranges::find(assembly.done, parent) != assembly.done.end())
      continue;
    if (!append(parent, assembly))
      throw PackError(fmt::format("The pack “{}” inherits “{}”, which has no {}.", file, parent,
                                  assembly.textName));
  }
  assembly.waiting.pop_back();

  PackText& made = assembly.made;
  made.pieces.push_back({.start = std::ssize(made.text), .file = std::move(file)});
  made.text += *text;
  made.text += '\n';
  assembly.done.emplace_back(pack);
  return true;
}

} // namespace velmar::host
