#include "VelmarPlatform/Coding/Coder.h"

#include <cmath>

namespace velmar {

bool Coder<float>::decode(Decoder from, float& into) {
  double number = 0;
  if (!from.readDouble(number))
    return false;
  into = static_cast<float>(number);
  return std::isfinite(into) || !std::isfinite(number) || from.failToRepresent("Float");
}

bool Coder<FilePath>::decode(Decoder from, FilePath& into) {
  std::string_view text;
  if (!from.readText(text))
    return false;
  into = FilePath(text);
  return true;
}

void Coder<FilePath>::encode(const FilePath& value, Encoder& into) {
  into.text(value.string());
}

bool Coder<UUID>::decode(Decoder from, UUID& into) {
  std::string_view text;
  if (!from.readText(text))
    return false;
  const std::optional<UUID> uuid = UUID::parse(text);
  if (!uuid)
    return from.fail(DecodingErrorKind::dataCorrupted,
                     "Expected a UUID, such as E621E1F8-C36C-495A-93FC-0C247A3E6E5F.");
  into = *uuid;
  return true;
}

} // namespace velmar
