#include "tests/packs/NearestName.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace velmar::testing {

int editDistance(std::string_view left, std::string_view right) {
  // The distances from the letters of `left` so far to each start of `right`.
  std::vector<int> row(right.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (const char letter : left) {
    int diagonal = row[0]++;
    for (std::size_t index = 1; index < row.size(); ++index) {
      const int change = diagonal + (letter == right[index - 1] ? 0 : 1);
      diagonal = row[index];
      row[index] = std::min({change, row[index] + 1, row[index - 1] + 1});
    }
  }
  return row.back();
}

std::optional<std::string> nearestName(std::string_view wanted,
                                       std::span<const std::string> names) {
  const auto nearest = std::ranges::min_element(
      names, {}, [&](const auto& name) { return editDistance(wanted, name); });
  return nearest == names.end() ? std::nullopt : std::optional(*nearest);
}

} // namespace velmar::testing
