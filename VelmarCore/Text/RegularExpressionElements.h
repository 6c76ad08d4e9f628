// From the engine's ranges to a match. Private to the regular expressions.
#pragma once

#include "VelmarCore/Text/RegularExpressionMatch.h"
#include "VelmarCore/Text/TranscodedText.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

template <class Unit>
[[nodiscard]] typename RegularExpressionMatch<Unit>::Element
elementOf(std::basic_string_view<Unit> text, TextRange range) {
  return {text.substr(static_cast<std::size_t>(range.lowerBound),
                      static_cast<std::size_t>(range.length())),
          range};
}

/// The match for a search in document text; `storage` gives its memory.
[[nodiscard]] inline std::optional<RegularExpressionMatch<char16_t>>
matchOf(const std::shared_ptr<const CompiledPattern>& pattern, std::u16string_view text,
        const CompiledPattern::Groups& groups,
        std::vector<RegularExpressionMatch<char16_t>::Element> storage = {}) {
  storage.assign(groups.size(), {});
  for (std::size_t i = 0; i < groups.size(); ++i)
    if (groups[i])
      storage[i] = elementOf(text, *groups[i]);
  return RegularExpressionMatch<char16_t>(pattern, std::move(storage));
}

/// The match for a search in a string. A group that doesn't begin and end between characters
/// becomes absent, and so does the match if it is the whole: a pattern that ends in half a
/// surrogate pair can do that.
[[nodiscard]] inline std::optional<RegularExpressionMatch<char>>
matchOf(const std::shared_ptr<const CompiledPattern>& pattern, const TranscodedText& text,
        const CompiledPattern::Groups& groups,
        std::vector<RegularExpressionMatch<char>::Element> storage = {}) {
  storage.assign(groups.size(), {});
  for (std::size_t i = 0; i < groups.size(); ++i) {
    if (!groups[i])
      continue;
    const auto lower = text.byteOffset(groups[i]->lowerBound);
    const auto upper = text.byteOffset(groups[i]->upperBound);
    if (lower && upper)
      storage[i] = elementOf(text.bytes(), TextRange(*lower, *upper));
  }
  if (!storage.front().range)
    return std::nullopt;
  return RegularExpressionMatch<char>(pattern, std::move(storage));
}

} // namespace velmar
