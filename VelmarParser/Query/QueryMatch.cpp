#include "VelmarParser/Query/QueryMatch.h"

namespace velmar {

namespace {

std::unique_ptr<TSQueryCursorOptions> optionsFor(const CancellationToken* cancel) {
  if (!cancel)
    return nullptr;
  return std::make_unique<TSQueryCursorOptions>(TSQueryCursorOptions{
      .payload = const_cast<CancellationToken*>(cancel),
      .progress_callback = [](TSQueryCursorState* state) {
        return static_cast<const CancellationToken*>(state->payload)->isCancelled();
      }});
}

} // namespace

QueryCursor::QueryCursor(const Query::Matches& matches, const CancellationToken* cancel)
    : options_(optionsFor(cancel)) {
  const auto [lower, upper] = matches.byteRange();
  // To the runtime, an upper bound of 0 means no bound at all.
  if (upper == TreeByte{0} && matches.node().endByte() > TreeByte{0})
    return;
  base_.reset(ts_query_cursor_new());
  precondition(base_ != nullptr, "There is no memory for a query cursor.");
  ts_query_cursor_set_match_limit(base_.get(), mostMatchesInProgress);
  ts_query_cursor_set_byte_range(base_.get(), lower.value, upper.value);
  ts_query_cursor_exec_with_options(base_.get(), matches.query().base(), matches.node().base(),
                                    options_.get());
}

bool QueryCursor::next(Query::Match& match) {
  TSQueryMatch base;
  if (!base_ || !ts_query_cursor_next_match(base_.get(), &base))
    return false;
  match.assign(base);
  return true;
}

} // namespace velmar
