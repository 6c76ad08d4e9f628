// A place of a file as people write it on a command line: "main.cpp:12:8".
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"

#include <cstdint>
#include <string>

namespace velmar::host {

/// Lines and columns count from 1.
struct NamedPlace {
  std::string path;
  std::int64_t line = 1;
  std::int64_t column = 1;
};

/// Reads "FILE:LINE:COLUMN"; without a column it is the first. Throws UsageError for anything else.
[[nodiscard]] NamedPlace placeNamed(const std::string& operand);

/// Throws Error for a place that the text doesn't have. The column behind a line's last unit is its
/// terminator, or the text's end.
[[nodiscard]] std::int64_t offsetOf(const NamedPlace& place, const DocumentText& text);

} // namespace velmar::host
