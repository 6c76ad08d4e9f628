#include "VelmarCore/Text/ShiftedOffsets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace velmar {
namespace {

TEST(ShiftedOffsets, BehavesAsAVectorThatIsShiftedAtOnce) {
  std::mt19937 random(17);
  ShiftedOffsets offsets;
  std::vector<std::int64_t> model;
  for (int step = 0; step < 20'000; ++step) {
    SCOPED_TRACE(step);
    // A splice that keeps the offsets in order: `removed` of them go, `fresh` come, and those
    // behind move so far that there is room.
    const std::size_t first = random() % (model.size() + 1);
    const std::size_t last = std::min(model.size(), first + random() % 4);
    const std::int64_t lower = first > 0 ? model[first - 1] : 0;
    const std::size_t fresh = model.size() > 200 ? 0 : random() % 4;
    const std::int64_t behind = last < model.size() ? model[last] : lower;
    const std::int64_t delta = lower + static_cast<std::int64_t>(fresh + random() % 3) - behind;
    const auto place = offsets.replace(first, last, fresh, delta);
    ASSERT_EQ(place.size(), fresh);
    for (std::size_t k = last; k < model.size(); ++k)
      model[k] += delta;
    auto at = model.erase(model.begin() + static_cast<std::ptrdiff_t>(first),
                          model.begin() + static_cast<std::ptrdiff_t>(last));
    for (std::size_t k = 0; k < fresh; ++k) {
      place[k] = lower + static_cast<std::int64_t>(k);
      at = model.insert(at, place[k]) + 1;
    }
    if (first + fresh < model.size() && random() % 4 == 0)
      offsets.set(first + fresh, model[first + fresh]);

    ASSERT_EQ(offsets.size(), model.size());
    for (std::size_t k = 0; k < model.size(); ++k)
      ASSERT_EQ(offsets[k], model[k]) << "at " << k;
    const std::int64_t probe = static_cast<std::int64_t>(random() % 300);
    const auto expected =
        std::ranges::count_if(model, [&](auto offset) { return offset <= probe; });
    ASSERT_EQ(offsets.countUpTo(probe), static_cast<std::size_t>(expected));
  }
}

} // namespace
} // namespace velmar
