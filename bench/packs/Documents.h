// Documents as people write them, with other languages inside, in any length; and their languages
// as the host resolves them. The same text on every run.
#pragma once

#include "VelmarParser/Document/ParseConfiguration.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace velmar::bench {

/// Classes with doc comments, expressions, template strings and types.
[[nodiscard]] std::u16string typeScript(std::int64_t lines);
/// Functions, literals, regular expressions and templates; of `units` and a little more.
[[nodiscard]] std::u16string javaScript(std::int64_t units);
/// Includes, namespaces, templates, comments and raw strings.
[[nodiscard]] std::u16string cPlusPlus(std::int64_t lines);
/// Decorated classes, doc strings, comprehensions and formatted strings.
[[nodiscard]] std::u16string python(std::int64_t lines);
/// Paragraphs, lists and fences in five languages.
[[nodiscard]] std::u16string markdown(std::int64_t fences);
/// A line of text in front of each fence; five lines for each.
[[nodiscard]] std::u16string shortMarkdown(std::int64_t fences);
/// Sections with a script each, and with styles and handlers in attributes.
[[nodiscard]] std::u16string html(std::int64_t scripts);
/// C++ with classes, comments and templates; in the second line a string has no end.
[[nodiscard]] std::u16string openQuote(std::int64_t lines);
/// An argument list of commas alone, which no grammar takes.
[[nodiscard]] std::u16string commas(std::int64_t count);
/// JSON in one line, of records like those of a log.
[[nodiscard]] std::u16string oneLine(std::int64_t units);

/// With the packs of the source tree. Always the same one for the same language, so what it has
/// compiled stays at hand; for one thread.
[[nodiscard]] ParseConfiguration packedLanguage(std::string_view id);

} // namespace velmar::bench
