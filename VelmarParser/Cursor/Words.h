// The words of a document, for an editor that offers them while one is typed.
#pragma once

#include "VelmarParser/Document/Parse.h"

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace velmar {

/// Hashes a text however it is held.
struct WordHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view word) const noexcept {
    return std::hash<std::string_view>()(word);
  }
};

/// Where each word stands, by layer and then in order, in UTF-16 code units.
using WordRanges =
    std::unordered_map<std::string, std::vector<TextRange>, WordHash, std::equal_to<>>;

/// The words of all layers that have text in `range`. Each such layer is read whole, but for its
/// sublayers and for what has a lexical class, such as comments and strings.
///
/// A word is what `\w+` matches, or with the characters that the language adds to its identifiers
/// (where these make no sense in a pattern, they are left aside). One character alone isn't a word,
/// and neither is what consists of digits and dots. O(text of these layers); what is ASCII, and in
/// a language that adds only plain signs, is read without regular expressions.
[[nodiscard]] WordRanges identifierWordsIn(const Parse& parse, TextRange range);

} // namespace velmar
