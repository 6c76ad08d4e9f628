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
  storage.clear();
  storage.push_back(elementOf(text, groups.whole));
  for (const std::optional<TextRange>& capture : groups.captures) {
    storage.emplace_back();
    if (capture)
      storage.back() = elementOf(text, *capture);
  }
  return RegularExpressionMatch<char16_t>(pattern, text, groups.whole, std::move(storage));
}

/// The range in the bytes of `text`; absent if it doesn't begin and end between characters.
[[nodiscard]] inline std::optional<TextRange> rangeInBytes(const TranscodedText& text,
                                                           TextRange range) {
  const std::optional<std::int64_t> lower = text.byteOffset(range.lowerBound);
  const std::optional<std::int64_t> upper = text.byteOffset(range.upperBound);
  if (!lower || !upper)
    return std::nullopt;
  return TextRange(*lower, *upper);
}

/// The match for a search in a string. A group that doesn't begin and end between characters
/// becomes absent, and so does the match if it is the whole: a pattern that ends in half a
/// surrogate pair can do that.
[[nodiscard]] inline std::optional<RegularExpressionMatch<char>>
matchOf(const std::shared_ptr<const CompiledPattern>& pattern, const TranscodedText& text,
        const CompiledPattern::Groups& groups,
        std::vector<RegularExpressionMatch<char>::Element> storage = {}) {
  const std::optional<TextRange> whole = rangeInBytes(text, groups.whole);
  if (!whole)
    return std::nullopt;
  storage.clear();
  storage.push_back(elementOf(text.bytes(), *whole));
  for (const std::optional<TextRange>& capture : groups.captures) {
    storage.emplace_back();
    if (const auto range = capture ? rangeInBytes(text, *capture) : std::nullopt)
      storage.back() = elementOf(text.bytes(), *range);
  }
  return RegularExpressionMatch<char>(pattern, text.bytes(), *whole, std::move(storage));
}

} // namespace velmar
