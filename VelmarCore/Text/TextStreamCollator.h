// Whole lines out of a stream of bytes that arrives in arbitrary pieces: the output of a child
// process, say.
#pragma once

#include "VelmarPlatform/Basics/Bytes.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace velmar {

/// Collects bytes and delivers them as text. As long as nobody asks for the rest, a delivery ends
/// at a line's end, so a character whose bytes arrive in two pieces is never torn.
///
/// The bytes are taken as UTF-8 and what isn't valid is repaired with U+FFFD: a delivery never
/// fails. It may hold many lines. One owner at a time; a value that can be copied.
class TextStreamCollator {
public:
  /// What a delivery takes: `completeLines` all up to the last line feed, `everything` the rest as
  /// well, torn characters included.
  enum class Delivery { completeLines, everything };

  /// Adds `bytes` and delivers. Absent where there is nothing to deliver. O(number of new bytes)
  /// and what is delivered, however long an unfinished line has grown.
  [[nodiscard]] std::optional<std::string> append(std::span<const std::byte> bytes,
                                                  Delivery delivery = Delivery::completeLines);
  [[nodiscard]] std::optional<std::string> append(std::string_view bytes,
                                                  Delivery delivery = Delivery::completeLines);

  /// Delivers everything that is left; absent if nothing is.
  [[nodiscard]] std::optional<std::string> flush();

  /// The bytes that are not yet delivered.
  [[nodiscard]] const Bytes& buffer() const noexcept { return buffer_; }

private:
  Bytes buffer_; // holds no line feed between two calls
};

} // namespace velmar
