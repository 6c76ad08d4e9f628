#include "VelmarCore/Text/RegularExpressionMatches.h"

#include "VelmarCore/Text/RegularExpressionElements.h"
#include "VelmarCore/Text/TranscodedText.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <type_traits>

namespace velmar {

template <class Unit>
RegularExpressionMatches<Unit>::Iterator::Iterator(const RegularExpressionMatches& matches)
    : matches_(&matches) {
  if constexpr (std::is_same_v<Unit, char>) {
    transcoded_ = std::make_unique<TranscodedText>(matches.text_);
    units_ = transcoded_->units();
  } else {
    units_ = matches.text_;
  }
  advance();
}

template <class Unit>
RegularExpressionMatches<Unit>::Iterator::Iterator(Iterator&&) noexcept = default;
template <class Unit>
typename RegularExpressionMatches<Unit>::Iterator&
RegularExpressionMatches<Unit>::Iterator::operator=(Iterator&&) noexcept = default;
template <class Unit>
RegularExpressionMatches<Unit>::Iterator::~Iterator() = default;

template <class Unit>
void RegularExpressionMatches<Unit>::Iterator::advance() {
  match_.reset();
  CompiledPattern::Groups groups;
  const RegularExpression& expression = matches_->expression_;
  if (index_ >= units_.size() || !expression.search(units_, index_, matches_->options_.start,
                                                    matches_->options_.pass, &groups)) {
    index_ = units_.size();
    return;
  }
  const TextRange whole = *groups.front();
  index_ = static_cast<std::size_t>(whole.upperBound);
  if (whole.isEmpty() && index_ < units_.size())
    index_ += decodeUTF16(units_, index_).length;

  if constexpr (std::is_same_v<Unit, char>)
    match_ = matchOf(expression.compiled_, *transcoded_, groups);
  else
    match_ = matchOf(expression.compiled_, units_, groups);
}

template class RegularExpressionMatches<char>;
template class RegularExpressionMatches<char16_t>;

} // namespace velmar
