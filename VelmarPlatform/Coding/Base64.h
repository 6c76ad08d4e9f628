// Bytes as text of the letters A to Z, a to z, 0 to 9, "+" and "/", four for each three bytes,
// filled up with "=".
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar {

[[nodiscard]] std::string encodeBase64(std::span<const std::byte> bytes);

/// The bytes that `text` stands for, or nothing if it has any other letter, white space included, a
/// length that isn't a multiple of four, or bits left over behind the last byte.
[[nodiscard]] std::optional<Bytes> decodeBase64(std::string_view text);

} // namespace velmar
