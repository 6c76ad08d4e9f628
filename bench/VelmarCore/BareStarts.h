// The least that any text with lines must do: keep where they start.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace velmar::bench {

/// One array of line starts, searched by halving and shifted behind each edit. It knows LF alone
/// and holds no text.
template <class Start>
class BareStarts {
public:
  void replace(std::int64_t from, std::int64_t to, std::u16string_view text) {
    const auto first = std::upper_bound(starts_.begin(), starts_.end(), static_cast<Start>(from));
    auto last = first;
    while (last != starts_.end() && *last <= static_cast<Start>(to))
      ++last;
    added_.clear();
    for (std::size_t at = text.find(u'\n'); at != text.npos; at = text.find(u'\n', at + 1))
      added_.push_back(static_cast<Start>(from + static_cast<std::int64_t>(at) + 1));
    auto behind = splice(first, last);
    const auto shift = static_cast<Start>(static_cast<std::int64_t>(text.size()) - (to - from));
    for (; behind != starts_.end(); ++behind)
      *behind += shift;
  }

  [[nodiscard]] std::int64_t lineContaining(std::int64_t offset) const {
    return std::upper_bound(starts_.begin(), starts_.end(), static_cast<Start>(offset)) -
           starts_.begin() - 1;
  }
  [[nodiscard]] std::int64_t lineCount() const { return static_cast<std::int64_t>(starts_.size()); }

private:
  using Place = typename std::vector<Start>::iterator;

  /// Puts `added_` in place of the starts from `first` to `last`. Gives the start behind them.
  Place splice(Place first, Place last) {
    const auto common = std::min(last - first, static_cast<std::ptrdiff_t>(added_.size()));
    const auto place = std::copy(added_.begin(), added_.begin() + common, first);
    if (place != last)
      return starts_.erase(place, last);
    const auto rest = added_.begin() + common;
    return starts_.insert(place, rest, added_.end()) + (added_.end() - rest);
  }

  std::vector<Start> starts_{0};
  std::vector<Start> added_;
};

} // namespace velmar::bench
