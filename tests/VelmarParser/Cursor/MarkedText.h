// Text with the places that a test is about: "«" and "»" around ranges, "¦" at the cursor.
#pragma once

#include "VelmarPlatform/Basics/Range.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::testing {

struct MarkedText {
  explicit MarkedText(std::u16string_view marked) {
    std::vector<std::int64_t> open;
    for (const char16_t unit : marked) {
      const std::int64_t here = std::ssize(text);
      if (unit == u'«') {
        open.push_back(here);
      } else if (unit == u'»') {
        ranges.push_back({open.back(), here});
        open.pop_back();
      } else if (unit == u'¦') {
        cursor = here;
      } else {
        text += unit;
      }
    }
  }

  std::u16string text;
  std::vector<TextRange> ranges; // by their ends
  std::int64_t cursor = 0;
};

} // namespace velmar::testing
