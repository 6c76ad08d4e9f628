// Pieces of query texts, for showing them to people.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

/// The predicates in the text of a pattern, `(#eq? @name "self")` and the like, in their order,
/// each on one line. `#set!` and its kin are among them.
[[nodiscard]] std::vector<std::string> predicatesIn(std::string_view pattern);

} // namespace velmar::host
