// The query texts that grammars bring with them, for languages without a pack. They are written in
// a dialect of their own; what of it our queries don't know is left out here.
#pragma once

#include "VelmarParser/Grammar/Grammar.h"
#include "host/PackReader.h"

#include <memory>
#include <optional>
#include <string_view>

namespace velmar::host {

/// What the grammar of `language` brings for a category such as "highlights", its files below
/// `folder` put together; absent if it brings nothing. Reads files.
[[nodiscard]] std::optional<PackText>
shippedTextFor(std::string_view language, std::string_view category, const FilePath& folder);

/// `text` so that it compiles: predicates with an equal of another name get that name, and patterns
/// with a condition that nobody here can check become blanks, for without it they would match too
/// much. Every byte keeps its place. Throws QueryError or QueryPredicateError for what is beyond
/// that. Compiles the text once.
[[nodiscard]] PackText adaptedToQueries(PackText text,
                                        const std::shared_ptr<const Grammar>& grammar);

} // namespace velmar::host
