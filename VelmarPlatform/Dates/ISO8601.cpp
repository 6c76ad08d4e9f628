#include "VelmarPlatform/Dates/ISO8601.h"

#include <cstddef>
#include <cstdint>
#include <fmt/format.h>

namespace velmar {

namespace {

using namespace std::chrono;

/// Six digits; whether a Date reaches that far is found out at the end.
constexpr std::int64_t greatestYear = 999'999;

bool isDigit(char character) {
  return character >= '0' && character <= '9';
}

/// Takes pieces from the front of a text. What doesn't match is left there.
class Scanner {
public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool isAtEnd() const { return rest_.empty(); }

  /// Takes one of `characters`.
  std::optional<char> take(std::string_view characters) {
    if (rest_.empty() || characters.find(rest_.front()) == std::string_view::npos)
      return std::nullopt;
    const char taken = rest_.front();
    rest_.remove_prefix(1);
    return taken;
  }
  /// Takes exactly `count` digits whose number is at most `greatest`.
  std::optional<std::int64_t> number(std::size_t count, std::int64_t greatest) {
    if (rest_.size() < count)
      return std::nullopt;
    std::int64_t value = 0;
    for (const char character : rest_.substr(0, count)) {
      if (!isDigit(character))
        return std::nullopt;
      value = value * 10 + (character - '0');
    }
    if (value > greatest)
      return std::nullopt;
    rest_.remove_prefix(count);
    return value;
  }
  [[nodiscard]] bool isAtDigit() const { return !rest_.empty() && isDigit(rest_.front()); }

private:
  std::string_view rest_;
};

std::optional<sys_days> scanDay(Scanner& scanner) {
  const auto sign = scanner.take("+-");
  const auto number = sign ? scanner.number(6, greatestYear) : scanner.number(4, 9999);
  if (!number || !scanner.take("-"))
    return std::nullopt;
  const auto monthNumber = scanner.number(2, 12);
  if (!monthNumber || !scanner.take("-"))
    return std::nullopt;
  const auto dayNumber = scanner.number(2, 31);
  if (!dayNumber)
    return std::nullopt;

  // The calendar's own years have 16 bits. It repeats every 400 years, which have 146,097 days.
  const std::int64_t yearNumber = sign == '-' ? -*number : *number;
  std::int64_t cycles = yearNumber / 400;
  if (yearNumber % 400 < 0)
    --cycles;
  const year_month_day date(year(static_cast<int>(yearNumber - cycles * 400)),
                            month(static_cast<unsigned>(*monthNumber)),
                            day(static_cast<unsigned>(*dayNumber)));
  if (!date.ok())
    return std::nullopt;
  return sys_days(date) + days(cycles * 146'097);
}

struct TimeOfDay {
  seconds whole;
  microseconds fraction;
};

std::optional<TimeOfDay> scanTime(Scanner& scanner) {
  const auto hour = scanner.number(2, 23);
  if (!hour || !scanner.take(":"))
    return std::nullopt;
  const auto minute = scanner.number(2, 59);
  if (!minute || !scanner.take(":"))
    return std::nullopt;
  const auto second = scanner.number(2, 60);
  if (!second)
    return std::nullopt;
  TimeOfDay time{hours(*hour) + minutes(*minute) + seconds(*second), {}};
  if (!scanner.take(".,"))
    return time;
  if (!scanner.isAtDigit())
    return std::nullopt;
  for (std::int64_t unit = 100'000; scanner.isAtDigit(); unit /= 10)
    time.fraction += microseconds(*scanner.number(1, 9) * unit);
  return time;
}

/// What local time is ahead of Greenwich.
std::optional<minutes> scanOffset(Scanner& scanner) {
  if (scanner.take("Zz"))
    return minutes(0);
  const auto sign = scanner.take("+-");
  if (!sign)
    return std::nullopt;
  const auto hour = scanner.number(2, 23);
  if (!hour)
    return std::nullopt;
  std::optional<std::int64_t> minute = 0;
  if (scanner.take(":") || scanner.isAtDigit())
    minute = scanner.number(2, 59);
  if (!minute)
    return std::nullopt;
  const minutes offset = hours(*hour) + minutes(*minute);
  return sign == '-' ? -offset : offset;
}

/// Absent where a Date doesn't reach.
std::optional<Date> dateOf(sys_seconds second, microseconds fraction) {
  // Before 1970 counted down from the next second, which is there even for the first Date of all.
  const bool isBefore = second.time_since_epoch().count() < 0;
  std::int64_t count = second.time_since_epoch().count() + (isBefore ? 1 : 0);
  const std::int64_t rest = fraction.count() - (isBefore ? 1'000'000 : 0);
  if (__builtin_mul_overflow(count, 1'000'000, &count) ||
      __builtin_add_overflow(count, rest, &count))
    return std::nullopt;
  return Date(microseconds(count));
}

/// What has passed since the last whole second, also before 1970.
microseconds fractionOf(Date date) {
  const std::int64_t rest = date.time_since_epoch().count() % 1'000'000;
  return microseconds(rest < 0 ? rest + 1'000'000 : rest);
}

std::string formatFraction(microseconds fraction) {
  const std::int64_t count = fraction.count();
  if (count == 0)
    return "";
  return count % 1000 == 0 ? fmt::format(".{:03}", count / 1000) : fmt::format(".{:06}", count);
}

} // namespace

Date currentDate() noexcept {
  return floor<microseconds>(system_clock::now());
}

std::string formatISO8601(Date date, SecondFraction fraction) {
  // By way of seconds: the first day of all began before the first microsecond.
  const auto second = floor<seconds>(date);
  const auto day = floor<days>(second);
  const hh_mm_ss time(second - day);
  // As above: the same day in the 400 years from 2000 on, and how far these are away.
  const auto sinceCycle = day - sys_days(year(2000) / 1 / 1);
  const auto cycles = floor<duration<std::int64_t, std::ratio<86'400LL * 146'097>>>(sinceCycle);
  const year_month_day inCycle{sys_days(year(2000) / 1 / 1) +
                               duration_cast<days>(sinceCycle - cycles)};
  const std::int64_t yearNumber = int{inCycle.year()} + cycles.count() * 400;

  const std::string yearText = yearNumber >= 0 && yearNumber <= 9999
                                   ? fmt::format("{:04}", yearNumber)
                                   : fmt::format("{:+07}", yearNumber);
  const std::string fractionText =
      fraction == SecondFraction::none ? "" : formatFraction(fractionOf(date));
  return fmt::format("{}-{:02}-{:02}T{:02}:{:02}:{:02}{}Z", yearText, unsigned{inCycle.month()},
                     unsigned{inCycle.day()}, time.hours().count(), time.minutes().count(),
                     time.seconds().count(), fractionText);
}

std::optional<Date> parseISO8601(std::string_view text) {
  Scanner scanner(text);
  const auto day = scanDay(scanner);
  if (!day || !scanner.take("Tt"))
    return std::nullopt;
  const auto time = scanTime(scanner);
  if (!time)
    return std::nullopt;
  const auto offset = scanOffset(scanner);
  if (!offset || !scanner.isAtEnd())
    return std::nullopt;
  return dateOf(sys_seconds(*day) + time->whole - *offset, time->fraction);
}

} // namespace velmar
