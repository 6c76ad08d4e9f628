// What an open document takes, by what it is for.
#pragma once

#include <cstdint>

namespace velmar {

/// Bytes, as they were asked for: the allocator's own share isn't counted, nor are the runtime's
/// parsers, of which each layer has one, nor the queries, which belong to the configurations.
struct DocumentMemory {
  /// The code units, with the room for more that edited lines have.
  std::int64_t text = 0;
  /// Where lines start, what they end with, and their objects.
  std::int64_t lines = 0;
  std::int64_t trees = 0;
  std::int64_t lexicalSpans = 0;
  /// Where layers lie, and the layers themselves.
  std::int64_t layers = 0;
  /// What is kept so that an edit costs what it changes: where sublayers lie in one row, and the
  /// edits that some of them haven't heard of yet.
  std::int64_t keystrokes = 0;

  [[nodiscard]] std::int64_t total() const noexcept {
    return text + lines + trees + lexicalSpans + layers + keystrokes;
  }
  bool operator==(const DocumentMemory&) const = default;
};

} // namespace velmar
