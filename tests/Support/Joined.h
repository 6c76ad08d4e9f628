// Lists of texts in the rows of tables, which are easier to read as one text.
#pragma once

#include <string>
#include <vector>

namespace velmar::testing {

/// `texts` with " | " between them; "" for none.
[[nodiscard]] inline std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts)
    all += (all.empty() ? "" : " | ") + text;
  return all;
}

} // namespace velmar::testing
