// Whether a completion provider applies at the cursor, and what its query picked up there.
//
//     ((attribute (attribute_name) @name (quoted_attribute_value) @provider.subtree)
//      (#cursor-in? @provider.subtree) (#eq? @name "class"))
//
// applies inside the value of a class attribute and sets the variable "name".
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Query/QueryPredicate.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace velmar {

/// The predicate that only completion queries know: `(#cursor-in? @capture)`.
struct CompletionFilterPredicate {
  enum class Name : std::uint8_t { cursorIn };
  friend std::span<const std::string_view> rawValuesOf(Name) {
    static constexpr std::array<std::string_view, 1> texts{"cursor-in?"};
    return texts;
  }

  /// Some node of the capture holds the cursor or touches it.
  struct CursorIn {
    QueryPredicateCapture capture;
  };

  /// Throws QueryPredicateError unless the first argument is a capture.
  CompletionFilterPredicate(Name name, QueryPredicateArguments arguments);

  std::variant<CursorIn> test;
};

/// The captures that say where a provider applies. Starts and ends of one match pair in the order
/// of its captures.
enum class CompletionScopingCapture : std::uint8_t {
  /// Behind the node.
  start,
  startBefore,
  /// In front of the node.
  end,
  endAfter,
  subtree,
};

inline std::span<const std::string_view> rawValuesOf(CompletionScopingCapture) {
  static constexpr std::array<std::string_view, 5> texts{"provider.start", "provider.start.before",
                                                         "provider.end", "provider.end.after",
                                                         "provider.subtree"};
  return texts;
}

using CompletionVariables = std::map<std::string, std::string, std::less<>>;

/// Whether `query` has a match at the cursor: one that touches the unit in front of `offset`, whose
/// predicates hold, and one of whose provider ranges, if it has any, holds `offset` or ends there.
///
/// Nodes of a capture that `cursor-in?` names and that the cursor isn't in are hidden, and with
/// them all that lies in them, for predicates and variables alike. Each other capture whose name
/// doesn't start with "_" or "provider." becomes a variable with its node's text; what a match has
/// set stays, also if the match doesn't hold in the end. A predicate that makes no sense reaches
/// the document's error handler under "predicates", and the answer is no. An end in front of its
/// start makes no range.
///
/// Stops the process for an offset outside the text.
[[nodiscard]] bool matchesCompletionQuery(const Parse::Layer& layer,
                                          const std::shared_ptr<const Query>& query,
                                          std::int64_t offset, CompletionVariables& variables);

} // namespace velmar
