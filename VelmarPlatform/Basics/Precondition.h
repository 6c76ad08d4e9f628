// Misuse by the caller stops the process, in every build, with a message and the place.
//
// This is for contracts between pieces of code: an offset outside a text, a reversed range. Nothing
// that a file, a peer or a user sends may reach one; such input gets an error (see Error.h).
#pragma once

#include <source_location>
#include <string_view>

namespace velmar {

/// Prints `message` with `location` on standard error and aborts. Never returns; safe on any
/// thread.
[[noreturn]] void preconditionFailed(std::string_view message,
                                     std::source_location location) noexcept;

/// Stops the process with `message` unless `condition` holds. One branch when it does.
constexpr void
precondition(bool condition, std::string_view message,
             std::source_location location = std::source_location::current()) noexcept {
  if (!condition) [[unlikely]]
    preconditionFailed(message, location);
}

} // namespace velmar
