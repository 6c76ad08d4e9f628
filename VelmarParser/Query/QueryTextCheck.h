// Keeps texts away from the runtime's query compiler that it can't survive.
//
// The compiler trusts its input in a few places: it recurses without a limit, it writes outside its
// memory for a capture or a field on a predicate, it never comes back from a repetition of
// something that may be empty, such as `((comment)?)+`, and it loses memory at an unknown field.
// Query texts are files that people edit, so such a text must be an error like any other.
#pragma once

#include "VelmarParser/Query/QueryNodeTypes.h"

#include <tree_sitter/api.h>

#include <cstdint>
#include <optional>
#include <string_view>

namespace velmar {

struct QueryTextReport {
  /// The offset in bytes of the first pattern that the compiler can't survive, or with which there
  /// are too many of them; absent for all other texts, right or wrong.
  std::optional<std::int64_t> unsafeOffset;

  /// A predicate that begins with a capture or has nothing in it, where the compiler only sees an
  /// error of syntax.
  struct NamelessPredicate {
    std::int64_t patternIndex = 0;
    /// Where the compiler stops, in bytes.
    std::int64_t offset = 0;
  };
  std::optional<NamelessPredicate> namelessPredicate;

  /// The offset in bytes of a field that the language doesn't have, if that is the first fault of
  /// the text.
  std::optional<std::int64_t> unknownFieldOffset;

  /// Of a text without faults.
  QueryNodeTypes nodeTypes;
};

/// Looks at a query's text before the compiler does. O(n).
[[nodiscard]] QueryTextReport checkedQueryText(std::string_view queryText,
                                               const TSLanguage* language);

/// How many patterns, fields and brackets may stand inside each other. Each costs the compiler a
/// stack frame.
inline constexpr int largestQueryNesting = 200;

} // namespace velmar
