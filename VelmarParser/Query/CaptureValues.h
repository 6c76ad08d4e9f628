// The texts of a match's captures, put together and rewritten as the pattern says. Symbols get
// their names this way:
// `((pair key: (string) @name) (#strip! @name "^['\"]|['\"]$"))`.
#pragma once

#include "VelmarParser/Query/QueryMatches.h"
#include "VelmarParser/Query/TextEnumeration.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velmar {

/// The text of a capture and where it is from.
struct CaptureValue {
  /// All nodes of the capture with a blank between them, and then as the transforms have left it.
  std::u16string text;
  /// UTF-16 code units of the document, from the first of those nodes to the last. Transforms don't
  /// change it.
  TextRange range;
  bool isTransformed = false;
  bool operator==(const CaptureValue&) const = default;
};

enum class CaptureTrimming {
  none,
  /// White space and line breaks at both ends of each node's text are left out, in its range too.
  trim,
};

/// The captures that an enumeration names and a match has.
template <TextEnumeration T>
using CaptureValues = std::map<T, CaptureValue>;

namespace detail {

/// The values by the case that a capture's name is; absent where the match has none.
using IndexedCaptureValues = std::vector<std::optional<CaptureValue>>;

/// `names` are the texts of an enumeration, and `isWanted` has one element for each of them, or
/// none at all where all are wanted.
[[nodiscard]] IndexedCaptureValues indexedCaptureValues(const Query::Match& match,
                                                        QueryContext context,
                                                        std::span<const std::string_view> names,
                                                        const std::vector<bool>& isWanted,
                                                        CaptureTrimming trimming);

} // namespace detail

/// The values of those captures whose names are cases of `T`; with `limitingTo`, only of those
/// cases. Transforms see only those too.
template <TextEnumeration T>
[[nodiscard]] CaptureValues<T>
captureValues(const Query::Match& match, QueryContext context,
              const std::optional<std::set<T>>& limitingTo = std::nullopt,
              CaptureTrimming trimming = CaptureTrimming::none) {
  const std::span<const std::string_view> names = rawValuesOf(T{});
  std::vector<bool> isWanted;
  if (limitingTo) {
    isWanted.resize(names.size());
    for (const T key : *limitingTo)
      isWanted[static_cast<std::size_t>(key)] = true;
  }
  CaptureValues<T> result;
  auto values = detail::indexedCaptureValues(match, context, names, isWanted, trimming);
  for (std::size_t index = 0; index < values.size(); ++index) {
    if (values[index])
      result.emplace(static_cast<T>(index), std::move(*values[index]));
  }
  return result;
}

/// The capture whose values make up the result of a query that computes a text.
enum class ResultBuilderCapture { result };

inline std::span<const std::string_view> rawValuesOf(ResultBuilderCapture) {
  static constexpr std::array<std::string_view, 1> texts{"result"};
  return texts;
}

/// Runs a query that computes texts from `node`: the trimmed value of the capture "result" of each
/// match that survives, in order. Matches without that capture give nothing.
[[nodiscard]] std::vector<CaptureValue>
evaluateResultBuilder(const std::shared_ptr<const Query>& query, ParseNode node,
                      QueryContext context);

} // namespace velmar
