// Upper and lower case by Unicode's full rules, which may change the length: "ß" becomes "SS". The
// rules of no particular language apply, so an "i" is never dotted or undotted.
#pragma once

#include <string>
#include <string_view>

namespace velmar {

/// Lone surrogates stay as they are. O(n); any thread.
[[nodiscard]] std::u16string uppercased(std::u16string_view text);
[[nodiscard]] std::u16string lowercased(std::u16string_view text);

} // namespace velmar
