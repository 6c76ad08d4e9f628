// Dates, and the text form of ISO 8601 in which logs, receipts and protocols carry them.
//
//   formatISO8601(date)                         "2024-02-29T12:30:05Z"
//   parseISO8601("2024-02-29T13:30:05+01:00")   the same date
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace velmar {

/// A moment, told by the system's clock; some 290,000 years around 1970.
using Date = std::chrono::sys_time<std::chrono::microseconds>;

/// The moment of the call.
[[nodiscard]] Date currentDate() noexcept;

enum class SecondFraction {
  none,        ///< Cut off: what every reader understands.
  whereNeeded, ///< Three or six digits if the date has a fraction, so that nothing is lost.
};

/// The date in Greenwich time: "2024-02-29T12:30:05Z". Years outside 0 to 9999 have a sign and six
/// digits: "-000044-03-15T00:00:00Z".
[[nodiscard]] std::string formatISO8601(Date date, SecondFraction fraction = SecondFraction::none);

/// The date that `text` tells, which must be all of it: year, month and day; "T"; hour, minute and
/// second, with or without a fraction behind "." or ","; and "Z" or an offset, "+01:00", "+0100" or
/// "+01". Digits of a fraction beyond the sixth are dropped, a second 60 is the one behind 59, and
/// "t" and "z" will do. Absent for everything else, such as a 30th of February and a time without
/// an offset. Each date that `formatISO8601` writes is read.
[[nodiscard]] std::optional<Date> parseISO8601(std::string_view text);

} // namespace velmar
