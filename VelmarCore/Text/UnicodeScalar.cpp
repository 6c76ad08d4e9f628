#include "VelmarCore/Text/UnicodeScalar.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <cstddef>

namespace velmar {

std::optional<FoundUnicodeScalar> unicodeScalarAt(std::u16string_view text, std::int64_t index) {
  const auto count = static_cast<std::int64_t>(text.size());
  precondition(index >= 0 && index < count, "A scalar was looked for outside the text.");
  const auto unitAt = [&](std::int64_t at) { return text[static_cast<std::size_t>(at)]; };
  const char16_t unit = unitAt(index);
  if (!isSurrogate(unit))
    return FoundUnicodeScalar{unit, {index, index + 1}};

  const std::int64_t lead = isLeadSurrogate(unit) ? index : index - 1;
  const std::int64_t trail = lead + 1;
  if (lead < 0 || trail >= count || !isLeadSurrogate(unitAt(lead)) ||
      !isTrailSurrogate(unitAt(trail)))
    return std::nullopt;
  return FoundUnicodeScalar{scalarOfPair(unitAt(lead), unitAt(trail)), {lead, trail + 1}};
}

std::optional<char32_t> unicodeScalar(char16_t lead, char16_t trail) {
  precondition(lead >= 0xD800 && trail >= 0xDC00, "A pair isn't made of surrogates.");
  const char32_t scalar = scalarOfPair(lead, trail);
  if (scalar > 0x10FFFF)
    return std::nullopt;
  return scalar;
}

} // namespace velmar
