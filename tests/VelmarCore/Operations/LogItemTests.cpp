#include "VelmarCore/Operations/LogItem.h"

#include "VelmarPlatform/Files/FilePath.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <unordered_set>

namespace velmar {
namespace {

const Date date = *parseISO8601("2024-02-29T12:30:05Z");

TEST(LogItem, IsOneLine) {
  const auto line = [](std::string message, LogItemSeverity severity, LogItemSource source) {
    return LogItem{std::move(message), severity, std::move(source), date}.description();
  };
  EXPECT_EQ(line("x", LogItemSeverity::warning, {"a", "b"}),
            "2024-02-29T12:30:05Z WARN  [a::b] x\n");
  EXPECT_EQ(line("x\n", LogItemSeverity::error, "a"), "2024-02-29T12:30:05Z ERROR [a] x\n");
  EXPECT_EQ(line("x\ny\n\n", LogItemSeverity::info, {}), "2024-02-29T12:30:05Z INFO  [] x\ny\n\n");
  EXPECT_EQ(line("", LogItemSeverity::debug, "a"), "2024-02-29T12:30:05Z DEBUG [a] \n");
}

TEST(LogItem, SeveritiesHaveNumbers) {
  for (int number = -3; number < 12; ++number) {
    const auto severity = logItemSeverityOf(number);
    EXPECT_EQ(severity.has_value(), number == -1 || number == 0 || number == 5 || number == 9);
    if (severity)
      EXPECT_EQ(static_cast<int>(*severity), number);
  }
}

TEST(LogItem, EqualItemsHashAlike) {
  const LogItem item{"x", LogItemSeverity::info, {"a", "b"}, date};
  LogItem other = item;
  std::unordered_set<LogItem> items = {item, other};
  EXPECT_EQ(items.size(), 1U);
  other.source[1] = "c";
  items.insert(other);
  EXPECT_EQ(items.size(), 2U);
}

TEST(LogItemMessage, QuotesValuesAndNotLiterals) {
  const std::string text = "value";
  const std::vector<std::string> list = {"a", "b"};
  EXPECT_EQ(LogItemMessage("literal").text, "literal");
  EXPECT_EQ(LogItemMessage("Got ", text, " and ", 5).text, R"(Got "value" and "5")");
  EXPECT_EQ(LogItemMessage("At ", FilePath("/base/x")).text, R"(At "/base/x")");
  EXPECT_EQ(LogItemMessage("All of ", list, std::vector<int>()).text, R"(All of ["a", "b"][])");
  EXPECT_EQ(LogItemMessage("Why: ", std::runtime_error("it broke")).text, "Why: it broke");
  EXPECT_EQ(LogItemMessage(std::make_exception_ptr(std::runtime_error("it broke"))).text,
            "it broke");
  EXPECT_EQ(LogItemMessage(verbatim(text), " ", verbatim(5), " ", verbatim(list)).text,
            "value 5 [a, b]");
}

} // namespace
} // namespace velmar
