#include "host/ShippedQueries.h"

#include "VelmarParser/Query/Query.h"
#include "VelmarPlatform/Files/FileContents.h"

#include <algorithm>
#include <array>
#include <utility>

namespace velmar::host {

namespace {

struct Row {
  std::string_view language;
  std::string_view category;
  std::string_view file;
};

// The last row keeps the table from being empty.
constexpr Row table[] = {
#include "ShippedQueries.inc"
    {"", "", ""},
};

/// Their equals take no more room, and a name is followed by blanks anyway.
constexpr std::array<std::pair<std::string_view, std::string_view>, 2> renamedPredicates{{
    {"#any-of? ", "#eq?     "},
    {"#not-any-of? ", "#not-eq?     "},
}};

void renamePredicates(std::string& text) {
  for (const auto& [theirs, ours] : renamedPredicates) {
    for (std::size_t at = text.find(theirs); at != std::string::npos; at = text.find(theirs, at))
      text.replace(at, theirs.size(), ours);
  }
}

bool hasUnknownCondition(const Query& query, std::int64_t pattern) {
  const auto& others = query.otherPredicates()[static_cast<std::size_t>(pattern)];
  return std::ranges::any_of(
      others, [](const Query::OtherPredicate& predicate) { return predicate.name.ends_with('?'); });
}

void blank(std::string& text, Range<std::int64_t> range) {
  for (std::int64_t at = range.lowerBound; at < range.upperBound; ++at) {
    char& letter = text[static_cast<std::size_t>(at)];
    letter = letter == '\n' ? '\n' : ' ';
  }
}

} // namespace

std::optional<PackText> shippedTextFor(std::string_view language, std::string_view category,
                                       const FilePath& folder) {
  PackText made;
  for (const Row& row : table) {
    if (row.language.empty() || row.language != language || row.category != category)
      continue;
    std::string text;
    try {
      text = charactersOf(readFile(folder.appending(row.file)));
    } catch (const SystemError&) {
      continue; // Installed without it: as if the grammar brought none.
    }
    made.pieces.push_back({.start = std::ssize(made.text), .file = std::string(row.file)});
    made.text += text;
    made.text += '\n';
  }
  return made.pieces.empty() ? std::nullopt : std::optional(std::move(made));
}

PackText adaptedToQueries(PackText text, const std::shared_ptr<const Grammar>& grammar) {
  renamePredicates(text.text);
  std::string adapted = text.text;
  const Query query(text.text, grammar);
  for (const Query::Pattern pattern : query.patterns()) {
    if (hasUnknownCondition(query, pattern.index()))
      blank(adapted, pattern.byteRange());
  }
  text.text = std::move(adapted);
  return text;
}

} // namespace velmar::host
