#include "VelmarCore/Text/Indentation.h"

#include "VelmarPlatform/Unicode/Characters.h"

#include <cstddef>
#include <limits>

namespace velmar {

namespace {

/// `width` and `step`, both at least 0, added; the largest integer where that is too much.
std::int64_t addedWidths(std::int64_t width, std::int64_t step) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  return width > most - step ? most : width + step;
}

template <class TextView>
Indentation measure(TextView text, std::int64_t tabWidth,
                    std::optional<std::int64_t> maxEffectiveSpaces) {
  Indentation found;
  if (tabWidth < 1)
    return found;
  const auto reachedMost = [&] {
    return maxEffectiveSpaces && found.effectiveSpaces >= *maxEffectiveSpaces;
  };
  const auto count = static_cast<std::int64_t>(text.size());

  // Spaces come in groups of a tab width each, but a group adds what it holds and ends at the limit
  // like everything else, so walking blank by blank measures the same.
  std::int64_t index = 0;
  while (index < count && !reachedMost()) {
    const auto unit = text[static_cast<std::size_t>(index)];
    if (unit == '\t') {
      ++found.tabCount;
      found.effectiveSpaces = addedWidths(found.effectiveSpaces, tabWidth);
    } else if (unit == ' ' && nextCharacterBoundary(text, index) == index + 1) {
      ++found.spaceCount;
      found.effectiveSpaces = addedWidths(found.effectiveSpaces, 1);
    } else {
      break;
    }
    ++index;
  }
  found.range = {0, index};
  found.level = found.effectiveSpaces / tabWidth;
  return found;
}

} // namespace

Indentation indentationForTabWidth(std::u16string_view text, std::int64_t tabWidth,
                                   std::optional<std::int64_t> maxEffectiveSpaces) {
  return measure(text, tabWidth, maxEffectiveSpaces);
}

Indentation indentationForTabWidth(std::string_view text, std::int64_t tabWidth,
                                   std::optional<std::int64_t> maxEffectiveSpaces) {
  return measure(text, tabWidth, maxEffectiveSpaces);
}

} // namespace velmar
