#include "VelmarParser/Grammar/Parser.h"

#include "VelmarParser/Grammar/TreeDisposal.h"
#include "VelmarPlatform/Basics/Precondition.h"

#include <fmt/format.h>

namespace velmar {

Parser::Parser(std::string_view configurationID, std::shared_ptr<const Grammar> grammar,
               std::shared_ptr<const AtomicFlag> isCancelled)
    : grammar_(std::move(grammar)), isCancelled_(std::move(isCancelled)), base_(ts_parser_new()) {
  precondition(base_ != nullptr, "The runtime gave no parser.");
  if (ts_parser_set_language(base_.get(), grammar_->base()))
    return;
  throw ParseError(fmt::format("Failed to load grammar for “{}”; it uses ABI version {}, but the "
                               "supported version range is {}–{}.",
                               configurationID, grammar_->abiVersion().rawValue,
                               Grammar::oldestSupportedABIVersion.rawValue,
                               Grammar::newestSupportedABIVersion.rawValue));
}

std::optional<ParseTree> Parser::parse(const ParseTree* old, TSInput input) {
  const TSParseOptions options{
      .payload = this,
      .progress_callback =
          [](TSParseState* state) {
            return static_cast<const Parser*>(state->payload)->isCancelled_->load();
          },
  };
  TSTree* const tree =
      ts_parser_parse_with_options(base_.get(), old ? old->base() : nullptr, input, options);
  std::optional<ParseTree> result;
  if (tree)
    result.emplace(tree);
  // A parse can also come to its end after the flag was set, on a text that seemed to end early.
  if (result && isCancelled_->load()) {
    disposeInBackground(std::move(*result));
    result.reset();
  }
  holdsCancelledParse_ = !tree;
  return result;
}

void Parser::reset() {
  if (!std::exchange(holdsCancelledParse_, false)) {
    ts_parser_reset(base_.get());
    return;
  }
  disposeInBackground(base_.release());
  base_.reset(ts_parser_new());
  precondition(base_ != nullptr, "The runtime gave no parser.");
  ts_parser_set_language(base_.get(), grammar_->base());
}

bool Parser::setIncludedRanges(std::span<const TSRange> ranges) {
  return ts_parser_set_included_ranges(base_.get(), ranges.data(),
                                       static_cast<std::uint32_t>(ranges.size()));
}

} // namespace velmar
