#include "VelmarParser/Query/QueryMatch.h"

namespace velmar {

namespace {

/// The runtime numbers the captures lists of matches in progress with 16 bits, but by default lets
/// them become more than that; then they get mixed up. Behind this limit it drops the match that
/// began first.
constexpr std::uint32_t largestMatchLimit = 0xFFFF;

} // namespace

Query::Matches::Iterator::Iterator(const Matches& matches)
    : cursor_(ts_query_cursor_new()), match_(matches.query()) {
  precondition(cursor_ != nullptr, "There is no memory for a query cursor.");
  const auto [lower, upper] = matches.byteRange();
  // To the runtime, an upper bound of 0 means no bound at all.
  if (upper == TreeByte{0} && matches.node().endByte() > TreeByte{0}) {
    isAtEnd_ = true;
    return;
  }
  ts_query_cursor_set_match_limit(cursor_.get(), largestMatchLimit);
  ts_query_cursor_set_byte_range(cursor_.get(), lower.value, upper.value);
  ts_query_cursor_exec(cursor_.get(), matches.query().base(), matches.node().base());
  advance();
}

void Query::Matches::Iterator::advance() {
  TSQueryMatch match;
  if (ts_query_cursor_next_match(cursor_.get(), &match))
    match_.assign(match);
  else
    isAtEnd_ = true;
}

} // namespace velmar
