// Trimming text and splitting it into trimmed parts. Every answer is a view into the given text and
// lives as long as that does. The text is walked by the characters that people see (see
// Characters.h): CR LF goes or stays as one.
#pragma once

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/Characters.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

namespace velmar {

/// A question about one character; what it throws is passed on.
template <class P>
concept CharacterPredicate = std::predicate<P&, std::string_view>;

/// `text` without the white space at its ends, by the Unicode property of each character.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// `text` without the run of characters at each end that satisfy `predicate`. Empty, at the end of
/// the text, if all do.
template <CharacterPredicate Predicate>
[[nodiscard]] std::string_view trimmedWhere(std::string_view text, Predicate predicate) {
  while (!text.empty()) {
    const std::string_view first = firstCharacter(text);
    if (!predicate(first))
      break;
    text.remove_prefix(first.size());
  }
  while (!text.empty()) {
    const std::string_view last = lastCharacter(text);
    if (!predicate(last))
      break;
    text.remove_suffix(last.size());
  }
  return text;
}

/// How a text is split before its parts are trimmed.
struct SplitOptions {
  /// The most separators to split at, at least 0; the last part is all that is left. A separator
  /// between two parts that are dropped for being empty doesn't count.
  std::int64_t maxSplits = std::numeric_limits<std::int64_t>::max();
  /// Whether parts that are empty before trimming are dropped in the course of the splitting. Parts
  /// that are empty after trimming never appear: so this only tells whether empty parts count
  /// against `maxSplits`.
  bool omittingEmptySubsequences = true;
};

/// `text` split at the characters that satisfy `isSeparator`, each part trimmed of white space, and
/// those dropped of which nothing is left. O(n).
template <CharacterPredicate Predicate>
[[nodiscard]] std::vector<std::string_view>
splitTrimmed(std::string_view text, Predicate isSeparator, SplitOptions options = {}) {
  precondition(options.maxSplits >= 0, "A text can't be split fewer than 0 times.");
  std::vector<std::string_view> parts;
  std::int64_t splits = 0;
  std::size_t partStart = 0;
  const auto addPart = [&](std::size_t end) {
    if (const auto part = trimmed(text.substr(partStart, end - partStart)); !part.empty())
      parts.push_back(part);
  };
  for (auto at = CharacterView(text).begin();
       splits < options.maxSplits && at != CharacterView(text).end(); ++at) {
    const std::string_view character = *at;
    if (!isSeparator(character))
      continue;
    const auto partEnd = static_cast<std::size_t>(at.index());
    addPart(partEnd);
    if (partEnd > partStart || !options.omittingEmptySubsequences)
      ++splits;
    partStart = partEnd + character.size();
  }
  addPart(text.size());
  return parts;
}

/// Likewise, split at `separator`, which is one character and found where the same bytes stand;
/// anything but one character stops the process.
[[nodiscard]] std::vector<std::string_view>
splitTrimmed(std::string_view text, std::string_view separator, SplitOptions options = {});

} // namespace velmar
