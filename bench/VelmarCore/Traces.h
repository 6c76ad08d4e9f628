// Recorded editing sessions, which aren't part of the sources: the folder with them is named by the
// variable VELMAR_TRACES.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmar::bench {

struct RecordedEdit {
  std::int64_t offset = 0; ///< In code units: the sessions are ASCII.
  std::int64_t removed = 0;
  std::u16string inserted;
};

struct Trace {
  std::string name;
  std::u16string before;
  std::u16string after;
  std::vector<RecordedEdit> edits;
};

/// The folder that VELMAR_TRACES names; absent where it isn't set.
[[nodiscard]] std::optional<std::string> traceFolder();

/// Reads all "*.json.gz" in the folder. Throws std::runtime_error for what it can't read.
[[nodiscard]] std::vector<Trace> readTraces(const std::string& folder);

} // namespace velmar::bench
