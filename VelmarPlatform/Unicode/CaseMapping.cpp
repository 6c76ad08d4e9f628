#include "VelmarPlatform/Unicode/CaseMapping.h"

#include <unicode/ustring.h>

#include <cstdint>
#include <limits>

namespace velmar {

namespace {

using Mapping = std::int32_t (*)(UChar*, std::int32_t, const UChar*, std::int32_t, const char*,
                                 UErrorCode*);

/// The text unchanged if it is too long for the library, or if there is no memory for the result
/// there.
std::u16string mapped(std::u16string_view text, Mapping mapping) {
  if (text.size() > std::numeric_limits<std::int32_t>::max() / 3)
    return std::u16string(text);
  std::u16string result(text.size(), u'\0');
  const auto map = [&] {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        mapping(result.data(), static_cast<std::int32_t>(result.size()), text.data(),
                static_cast<std::int32_t>(text.size()), "", &status);
    if (U_FAILURE(status) && status != U_BUFFER_OVERFLOW_ERROR)
      return false;
    const bool fits = static_cast<std::size_t>(length) <= result.size();
    result.resize(static_cast<std::size_t>(length));
    return fits;
  };
  if (!map() && !map()) // the first try tells the length where that differs
    return std::u16string(text);
  return result;
}

} // namespace

std::u16string uppercased(std::u16string_view text) {
  return mapped(text, u_strToUpper);
}

std::u16string lowercased(std::u16string_view text) {
  return mapped(text, u_strToLower);
}

} // namespace velmar
