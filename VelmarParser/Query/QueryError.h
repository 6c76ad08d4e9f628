// Why the text of a query doesn't compile, as far as its form and its grammar go. Faults in a
// predicate's arguments are a QueryPredicateError.
#pragma once

#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarPlatform/Basics/Error.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace velmar {

/// The message reads "Invalid node type in query: (strinh) @string": what is wrong, and the line
/// that it is in.
class QueryError : public Error {
public:
  enum class Kind {
    unknownError,
    syntaxError,
    nodeTypeError,
    fieldError,
    captureError,
    structureError,
    languageError,
  };

  /// Where the fault is.
  struct Context {
    /// The line of the query text, without its line break.
    std::string string;
    /// UTF-8 bytes from the start of the whole query text.
    std::int64_t offset = 0;
    bool operator==(const Context&) const = default;

    /// The line of `queryText` that holds `offset`, which may be its end. Bytes that aren't UTF-8
    /// are replaced.
    [[nodiscard]] static Context at(std::int64_t offset, std::string_view queryText);
  };

  /// A failure without a place.
  [[nodiscard]] static QueryError unknownError(std::string_view text);
  /// A failure of one of the kinds with a context: all but `unknownError` and `languageError`.
  [[nodiscard]] static QueryError inContext(Kind kind, Context context);
  /// The grammar's format isn't one that the runtime reads.
  [[nodiscard]] static QueryError languageError(std::shared_ptr<const Grammar> grammar);

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  [[nodiscard]] const std::optional<Context>& context() const noexcept { return context_; }
  /// Only for `languageError`; else null.
  [[nodiscard]] const std::shared_ptr<const Grammar>& grammar() const noexcept { return grammar_; }

private:
  QueryError(Kind kind, std::string message) : Error(std::move(message)), kind_(kind) {}

  Kind kind_;
  std::optional<Context> context_;
  std::shared_ptr<const Grammar> grammar_;
};

} // namespace velmar
