// Scalars in UTF-16 text that may hold lone surrogates, as document text may.
#pragma once

#include "VelmarPlatform/Basics/Range.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmar {

/// A scalar and the UTF-16 units that it takes: one or two.
struct FoundUnicodeScalar {
  char32_t scalar = 0;
  TextRange range;

  bool operator==(const FoundUnicodeScalar&) const = default;
};

/// The scalar that the unit at `index` belongs to, with the range of the whole scalar: either unit
/// of a surrogate pair gives the pair. Absent for a lone surrogate. An index outside the text stops
/// the process. O(1).
[[nodiscard]] std::optional<FoundUnicodeScalar> unicodeScalarAt(std::u16string_view text,
                                                                std::int64_t index);

/// The scalar that two surrogates make: (lead - 0xD800) * 1024 + (trail - 0xDC00) + 0x10000. A lead
/// below 0xD800 or a trail below 0xDC00 stops the process; absent where the units lie so far above
/// their blocks that no scalar comes out.
[[nodiscard]] std::optional<char32_t> unicodeScalar(char16_t lead, char16_t trail);

} // namespace velmar
