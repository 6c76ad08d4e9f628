// From the engine's ranges to the elements of a match. Private to the regular expressions.
#pragma once

#include "VelmarCore/Text/RegularExpressionMatch.h"
#include "VelmarCore/Text/TranscodedText.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace velmar {

template <class Unit>
[[nodiscard]] typename RegularExpressionMatch<Unit>::Element
elementOf(std::basic_string_view<Unit> text, TextRange range) {
  return {text.substr(static_cast<std::size_t>(range.lowerBound),
                      static_cast<std::size_t>(range.length())),
          range};
}

/// The elements for a search in document text.
[[nodiscard]] inline std::vector<RegularExpressionMatch<char16_t>::Element>
elementsOf(std::u16string_view text, const CompiledPattern::Groups& groups) {
  std::vector<RegularExpressionMatch<char16_t>::Element> elements(groups.size());
  for (std::size_t i = 0; i < groups.size(); ++i)
    if (groups[i])
      elements[i] = elementOf(text, *groups[i]);
  return elements;
}

/// The elements for a search in a string. A range that doesn't begin and end between characters becomes absent; the
/// engine gives none such for the whole match.
[[nodiscard]] inline std::vector<RegularExpressionMatch<char>::Element>
elementsOf(const TranscodedText& text, const CompiledPattern::Groups& groups) {
  std::vector<RegularExpressionMatch<char>::Element> elements(groups.size());
  for (std::size_t i = 0; i < groups.size(); ++i) {
    if (!groups[i])
      continue;
    const auto lower = text.byteOffset(groups[i]->lowerBound);
    const auto upper = text.byteOffset(groups[i]->upperBound);
    if (lower && upper)
      elements[i] = elementOf(text.bytes(), TextRange(*lower, *upper));
  }
  return elements;
}

} // namespace velmar
