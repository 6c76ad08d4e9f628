// Finds what the writer of a pattern may have meant, for messages about names that a grammar
// doesn't have.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar::testing {

/// How many letters have to be put in, taken out or changed to make one word of the other.
[[nodiscard]] int editDistance(std::string_view left, std::string_view right);

/// The name that is closest to `wanted`, the first of several; absent if there are none.
[[nodiscard]] std::optional<std::string> nearestName(std::string_view wanted,
                                                     std::span<const std::string> names);

} // namespace velmar::testing
