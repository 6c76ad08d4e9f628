#include "VelmarPlatform/Coding/EncodingSink.h"

#include "VelmarPlatform/Coding/Base64.h"

namespace velmar {

void EncodingSink::date(Date value) {
  text(formatISO8601(value));
}

void EncodingSink::data(std::span<const std::byte> value) {
  text(encodeBase64(value));
}

void EncodingSink::integers(std::span<const std::int64_t> values) {
  beginArray();
  for (const std::int64_t value : values)
    integer(value);
  endArray();
}

} // namespace velmar
