// How a line of a document ends, as two bits.
#pragma once

#include "VelmarCore/Text/LineEnding.h"

#include <cstdint>
#include <string>

namespace velmar {

/// A set of the terminator units that a line ends with. No bits: the line has no terminator, as the
/// last one of a text.
struct LineFlags {
  std::uint8_t rawValue = 0;

  static const LineFlags none;
  static const LineFlags cr;
  static const LineFlags lf;
  static const LineFlags crlf;

  /// The flags of a line that ends so.
  [[nodiscard]] static constexpr LineFlags of(LineEnding ending) noexcept;

  [[nodiscard]] constexpr bool isEmpty() const noexcept { return rawValue == 0; }
  /// How many code units the terminator takes: 0, 1 or 2.
  [[nodiscard]] constexpr std::int64_t lineEndingCount() const noexcept {
    return (rawValue & 1) + (rawValue >> 1);
  }
  /// "CR", "LF", "CRLF" or "".
  [[nodiscard]] std::string description() const {
    return std::string(rawValue & 1 ? "CR" : "") + (rawValue & 2 ? "LF" : "");
  }

  constexpr LineFlags& operator|=(LineFlags other) noexcept {
    rawValue = static_cast<std::uint8_t>(rawValue | other.rawValue);
    return *this;
  }
  constexpr bool operator==(const LineFlags&) const = default;
};

inline constexpr LineFlags LineFlags::none{0};
inline constexpr LineFlags LineFlags::cr{1};
inline constexpr LineFlags LineFlags::lf{2};
inline constexpr LineFlags LineFlags::crlf{3};

constexpr LineFlags LineFlags::of(LineEnding ending) noexcept {
  switch (ending) {
  case LineEnding::lf:
    return lf;
  case LineEnding::cr:
    return cr;
  case LineEnding::crlf:
    return crlf;
  }
  return none;
}

} // namespace velmar
