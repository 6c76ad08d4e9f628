#include "VelmarPlatform/Dates/ISO8601.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>

namespace velmar {
namespace {

Date at(std::int64_t microseconds) {
  return Date(std::chrono::microseconds(microseconds));
}

struct FormatCase {
  std::int64_t microseconds;
  std::string_view whole;
  std::string_view exact;
};

TEST(ISO8601, WritesDatesInGreenwichTime) {
  // Seconds since 1970 are those that `date -u` tells.
  const FormatCase cases[] = {
      {0, "1970-01-01T00:00:00Z", "1970-01-01T00:00:00Z"},
      {-1, "1969-12-31T23:59:59Z", "1969-12-31T23:59:59.999999Z"},
      {1'709'209'805'250'000, "2024-02-29T12:30:05Z", "2024-02-29T12:30:05.250Z"},
      {1'709'209'805'000'001, "2024-02-29T12:30:05Z", "2024-02-29T12:30:05.000001Z"},
      {4'107'542'400'000'000, "2100-03-01T00:00:00Z", "2100-03-01T00:00:00Z"},
      {-62'167'219'200'000'000, "0000-01-01T00:00:00Z", "0000-01-01T00:00:00Z"},
      {-62'167'219'200'000'001, "-000001-12-31T23:59:59Z", "-000001-12-31T23:59:59.999999Z"},
      {253'402'300'800'000'000, "+010000-01-01T00:00:00Z", "+010000-01-01T00:00:00Z"},
  };
  for (const FormatCase& row : cases) {
    EXPECT_EQ(formatISO8601(at(row.microseconds)), row.whole);
    EXPECT_EQ(formatISO8601(at(row.microseconds), SecondFraction::whereNeeded), row.exact);
    EXPECT_EQ(parseISO8601(row.exact), at(row.microseconds)) << row.exact;
  }
}

TEST(ISO8601, ReachesTheEndsOfTime) {
  const Date last = at(std::numeric_limits<std::int64_t>::max());
  const Date first = at(std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(formatISO8601(last), "+294247-01-10T04:00:54Z");
  EXPECT_EQ(formatISO8601(first), "-290308-12-21T19:59:05Z");
  EXPECT_EQ(parseISO8601("+294247-01-10T04:00:54.775807Z"), last);
  EXPECT_EQ(parseISO8601("+294247-01-10T04:00:54.775808Z"), std::nullopt);
  EXPECT_EQ(parseISO8601("-290308-12-21T19:59:05.224192Z"), first);
  EXPECT_EQ(parseISO8601("-290308-12-21T19:59:05.224191Z"), std::nullopt);
}

TEST(ISO8601, ReadsOtherSpellings) {
  const Date date = at(1'709'209'805'000'000);
  for (const std::string_view text :
       {"2024-02-29T12:30:05Z", "2024-02-29t12:30:05z", "2024-02-29T13:30:05+01:00",
        "2024-02-29T13:30:05+0100", "2024-02-29T13:30:05+01", "2024-02-28T23:45:05-12:45",
        "2024-02-29T12:30:05.0000009Z", "2024-02-29T12:30:05,0Z", "+002024-02-29T12:30:05Z"})
    EXPECT_EQ(parseISO8601(text), date) << text;
  EXPECT_EQ(parseISO8601("2016-12-31T23:59:60Z"), parseISO8601("2017-01-01T00:00:00Z"));
  EXPECT_EQ(parseISO8601("2024-02-29T12:30:05.1234567Z"), date + std::chrono::microseconds(123456));
}

TEST(ISO8601, RefusesWhatIsNoDate) {
  for (const std::string_view text : {"",
                                      "2024",
                                      "2024-02-29",
                                      "2024-02-29T12:30:05",
                                      "2024-02-29 12:30:05Z",
                                      "2024-02-29T12:30Z",
                                      "2023-02-29T12:30:05Z",
                                      "2024-13-01T12:30:05Z",
                                      "2024-00-01T12:30:05Z",
                                      "2024-01-00T12:30:05Z",
                                      "2024-02-29T24:00:00Z",
                                      "2024-02-29T12:60:05Z",
                                      "2024-02-29T12:30:61Z",
                                      "2024-02-29T12:30:05.Z",
                                      "2024-02-29T12:30:05Z ",
                                      " 2024-02-29T12:30:05Z",
                                      "2024-02-29T12:30:05+1",
                                      "2024-02-29T12:30:05+01:",
                                      "2024-02-29T12:30:05+24:00",
                                      "24-02-29T12:30:05Z",
                                      "+2024-02-29T12:30:05Z",
                                      "+999999-01-01T00:00:00Z",
                                      "2024-2-29T12:30:05Z",
                                      "٢٠٢٤-02-29T12:30:05Z"})
    EXPECT_EQ(parseISO8601(text), std::nullopt) << text;
}

TEST(ISO8601, ReadsWhatItWrites) {
  std::mt19937_64 random(1);
  for (int step = 0; step < 10'000; ++step) {
    const Date date = at(static_cast<std::int64_t>(random()));
    const std::string text = formatISO8601(date, SecondFraction::whereNeeded);
    ASSERT_EQ(parseISO8601(text), date) << text;
  }
}

} // namespace
} // namespace velmar
