#include "VelmarCore/Text/LineBreaks.h"

#include <bit>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace velmar {

std::size_t indexOfLineBreak(std::u16string_view text, std::size_t from) noexcept {
  const char16_t* const units = text.data();
  std::size_t index = from;
#if defined(__SSE2__)
  const __m128i carriageReturn = _mm_set1_epi16('\r');
  const __m128i lineFeed = _mm_set1_epi16('\n');
  for (; index + 8 <= text.size(); index += 8) {
    const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units + index));
    const __m128i found =
        _mm_or_si128(_mm_cmpeq_epi16(eight, carriageReturn), _mm_cmpeq_epi16(eight, lineFeed));
    const auto mask = static_cast<std::uint32_t>(_mm_movemask_epi8(found));
    if (mask != 0)
      return index + static_cast<std::size_t>(std::countr_zero(mask)) / 2;
  }
#endif
  while (index < text.size() && units[index] != u'\n' && units[index] != u'\r')
    ++index;
  return index;
}

} // namespace velmar
