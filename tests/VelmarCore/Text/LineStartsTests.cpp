#include "VelmarCore/Text/LineStarts.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace velmar::detail {
namespace {

std::vector<std::uint32_t> contentsOf(const LineStarts& starts) {
  std::vector<std::uint32_t> contents;
  for (std::size_t index = 0; index < starts.count(); ++index)
    contents.push_back(starts[index]);
  return contents;
}

void fill(LineStarts& starts, std::size_t first, std::size_t end,
          const std::vector<std::uint32_t>& added, std::uint32_t delta) {
  const auto room = starts.replace(first, end, added.size(), delta);
  std::copy(added.begin(), added.end(), room.begin());
}

TEST(LineStarts, ShiftsInFrontOfOlderShiftsAddUp) {
  LineStarts starts;
  fill(starts, 0, 1, {0, 10, 20, 30}, 40);
  starts.shiftBehind(2, 5);
  starts.shiftBehind(0, 100);
  starts.shiftBehind(3, 1000);
  EXPECT_EQ(contentsOf(starts), (std::vector<std::uint32_t>{0, 110, 120, 135, 1145}));
}

TEST(LineStarts, AShiftCanBeNegative) {
  LineStarts starts;
  fill(starts, 0, 1, {0, 10, 20}, 30);
  starts.shiftBehind(1, static_cast<std::uint32_t>(-4));
  EXPECT_EQ(contentsOf(starts), (std::vector<std::uint32_t>{0, 10, 16, 26}));
}

TEST(LineStarts, FindsStartsThatLackALargerShiftThanTheirOffset) {
  LineStarts starts;
  fill(starts, 0, 1, {0, 10, 20, 30, 40, 50}, 60);
  starts.shiftBehind(3, 1000);
  starts.shiftBehind(1, 1); // leaves the starts at 20 and 30 stored as less than nothing
  EXPECT_EQ(starts.lastAtOrBefore(20), 1U);
  EXPECT_EQ(starts.lastAtOrBefore(21), 2U);
  EXPECT_EQ(starts.lastAtOrBefore(31), 3U);
  EXPECT_EQ(starts.lastAtOrBefore(1041), 4U);
}

/// Random edits against a plain array in which every start is moved at once.
TEST(LineStarts, AgreeWithAPlainArray) {
  std::mt19937 random(5);
  const auto below = [&](std::size_t bound) { return random() % bound; };
  LineStarts starts;
  std::vector<std::uint32_t> model = {0, 0};
  for (int step = 0; step < 4000; ++step) {
    SCOPED_TRACE(step);
    const std::size_t first = below(model.size() - 1);
    if (below(3) != 0) {
      // A shift never takes more than the line has.
      const std::uint32_t length = model[first + 1] - model[first];
      const auto delta = static_cast<std::uint32_t>(below(20)) - std::min(length, 9U);
      starts.shiftBehind(first, delta);
      for (std::size_t index = first + 1; index < model.size(); ++index)
        model[index] += delta;
    } else {
      const std::size_t end = first + 1 + below(std::min<std::size_t>(model.size() - 1 - first, 4));
      std::vector<std::uint32_t> added = {model[first]};
      for (std::size_t more = below(model.size() < 200 ? 6 : 3); more > 0; --more)
        added.push_back(added.back() + static_cast<std::uint32_t>(below(12)));
      const std::uint32_t delta = added.back() + static_cast<std::uint32_t>(below(12)) - model[end];
      fill(starts, first, end, added, delta);
      for (std::size_t index = end; index < model.size(); ++index)
        model[index] += delta;
      model.erase(model.begin() + static_cast<std::ptrdiff_t>(first),
                  model.begin() + static_cast<std::ptrdiff_t>(end));
      model.insert(model.begin() + static_cast<std::ptrdiff_t>(first), added.begin(), added.end());
    }
    ASSERT_EQ(contentsOf(starts), model);
    const auto offset = static_cast<std::uint32_t>(below(model.back() + 1));
    // The last line that isn't behind the offset; the end of the text is no line.
    std::size_t line = 0;
    for (std::size_t index = 0; index + 1 < model.size(); ++index)
      line = model[index] <= offset ? index : line;
    ASSERT_EQ(starts.lastAtOrBefore(offset), line);
  }
}

} // namespace
} // namespace velmar::detail
