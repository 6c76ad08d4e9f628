#include "VelmarParser/Highlight/HighlightResults.h"

#include "VelmarPlatform/Basics/Precondition.h"

namespace velmar {

HighlightResults::Match HighlightResults::match(std::int64_t index) const {
  precondition(index >= 0 && index < matchCount(), "A match's index lies outside the results.");
  return {*this, static_cast<std::size_t>(index)};
}

std::span<const HighlightResults::Capture> HighlightResults::Match::captures() const {
  const std::size_t begin = index_ == 0 ? 0 : results_->matches_[index_ - 1].captures;
  return std::span(results_->captures_).subspan(begin, record().captures - begin);
}

std::optional<std::string_view>
HighlightResults::Match::property(std::optional<std::int64_t> captureID,
                                  std::string_view key) const {
  const std::size_t begin = index_ == 0 ? 0 : results_->matches_[index_ - 1].properties;
  for (const Property& property :
       std::span(results_->properties_).subspan(begin, record().properties - begin)) {
    if (property.captureID == captureID && property.key == key)
      return property.value;
  }
  return std::nullopt;
}

} // namespace velmar
