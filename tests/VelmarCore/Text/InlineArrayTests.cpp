#include "VelmarCore/Text/InlineArray.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace velmar {
namespace {

template <class Array>
std::vector<typename Array::value_type> elementsOf(const Array& array) {
  return {array.begin(), array.end()};
}

/// Random splices, copies and moves beside a vector; elements that own memory, so that a sanitizer
/// sees what is lost or freed twice.
TEST(InlineArray, BehavesAsAVectorDoes) {
  std::mt19937 random(5);
  InlineArray<std::string, 3> array;
  std::vector<std::string> model;
  for (int step = 0; step < 10'000; ++step) {
    SCOPED_TRACE(step);
    const std::size_t first = random() % (model.size() + 1);
    const std::size_t last = first + random() % (model.size() - first + 1);
    std::vector<std::string> fresh(random() % 4);
    for (std::string& element : fresh)
      element = std::string(1 + random() % 30, static_cast<char>('a' + random() % 26));
    array.replace(first, last, fresh.size(), [&](std::size_t k) { return fresh[k]; });
    const auto place = model.erase(model.begin() + static_cast<std::ptrdiff_t>(first),
                                   model.begin() + static_cast<std::ptrdiff_t>(last));
    model.insert(place, fresh.begin(), fresh.end());
    ASSERT_EQ(elementsOf(array), model);

    InlineArray<std::string, 3> copy = array;
    InlineArray<std::string, 3> moved = std::move(array);
    ASSERT_TRUE(array.empty()); // NOLINT(bugprone-use-after-move): a moved-from array is empty
    ASSERT_EQ(elementsOf(copy), model);
    copy.pushBack("more");
    if (step % 2 == 0) {
      array = std::move(moved);
    } else {
      array = copy;
      array.truncate(model.size());
    }
    if (model.size() > 12) {
      model.resize(random() % 3);
      array.truncate(model.size());
    }
  }
}

TEST(InlineArray, FewElementsLiveInside) {
  InlineArray<int, 2> array;
  array.pushBack(1);
  array.pushBack(2);
  const auto* const object = reinterpret_cast<const std::byte*>(&array);
  const auto* const data = reinterpret_cast<const std::byte*>(array.data());
  EXPECT_TRUE(data >= object && data < object + sizeof array);
  array.pushBack(3);
  EXPECT_GE(array.capacity(), 3U);
  EXPECT_EQ(elementsOf(array), (std::vector{1, 2, 3}));
}

TEST(InlineArray, HoldsElementsThatCanOnlyBeMoved) {
  InlineArray<std::unique_ptr<int>, 1> array;
  for (int k = 0; k < 5; ++k)
    array.pushBack(std::make_unique<int>(k));
  array.replace(1, 4, 1, [](std::size_t) { return std::make_unique<int>(9); });
  ASSERT_EQ(array.size(), 3U);
  EXPECT_EQ(*array[1], 9);
  EXPECT_EQ(*array.back(), 4);
}

} // namespace
} // namespace velmar
