// Turns text into trees, one parser for each language layer of a document.
#pragma once

#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarParser/Grammar/ParseError.h"
#include "VelmarParser/Grammar/ParseTree.h"
#include "VelmarPlatform/Basics/AtomicFlag.h"

#include <tree_sitter/api.h>

#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace velmar {

/// Owns a parser of the runtime. One thread at a time; only the flag may be set from another.
class Parser {
public:
  /// `configurationID` names the language in the error. Throws ParseError if the grammar's format
  /// isn't supported.
  Parser(std::string_view configurationID, std::shared_ptr<const Grammar> grammar,
         std::shared_ptr<const AtomicFlag> isCancelled);

  /// Parses `input`, using what still holds of `old`, a tree of an earlier text that has been
  /// edited to fit. Absent if the flag was set meanwhile; what the runtime then keeps in order to
  /// resume is dropped by `reset()`.
  [[nodiscard]] std::optional<ParseTree> parse(const ParseTree* old, TSInput input);

  /// Drops what a cancelled parse has left behind, on a background thread.
  void reset();
  /// The only parts of the text that the parser sees; none means all of it. Refused, with the
  /// answer false and the earlier ranges kept, if they overlap or are out of order.
  [[nodiscard]] bool setIncludedRanges(std::span<const TSRange> ranges);

  [[nodiscard]] const Grammar& grammar() const noexcept { return *grammar_; }

private:
  struct Deleter {
    void operator()(TSParser* parser) const noexcept { ts_parser_delete(parser); }
  };
  std::shared_ptr<const Grammar> grammar_; // outlives `base_`, which reads its tables
  std::shared_ptr<const AtomicFlag> isCancelled_;
  std::unique_ptr<TSParser, Deleter> base_;
  bool holdsCancelledParse_ = false;
};

} // namespace velmar
