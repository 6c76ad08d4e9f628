// How the commands put numbers and paragraphs into words.
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace velmar::host {

/// "1 line", "2 lines".
[[nodiscard]] std::string counted(std::int64_t count, std::string_view one, std::string_view many);
/// The same for words whose plural takes an "s".
[[nodiscard]] std::string counted(std::int64_t count, std::string_view one);

/// The lines of `text` as people count them: a terminator at the end ends the last one, and an
/// empty text has none.
[[nodiscard]] std::int64_t lineCountForPeople(const DocumentText& text);

/// `text` with its paragraphs folded at blanks, so that no line has more than `columns` columns,
/// each character counting as one. Line feeds inside of a paragraph count as blanks; empty lines
/// stay, and so do lines that begin with a blank. Ends in a line feed, unless empty. O(length).
[[nodiscard]] std::string foldedParagraphs(std::string_view text, std::int64_t columns);

} // namespace velmar::host
