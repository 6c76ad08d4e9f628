#include "VelmarCore/Text/RegularExpressionSplit.h"

#include "VelmarCore/Text/RegularExpressionMatches.h"
#include "VelmarPlatform/Basics/Precondition.h"

namespace velmar {

std::vector<std::string_view>
splitTrimmed(std::string_view text, const RegularExpression& separator, SplitOptions options) {
  precondition(options.maxSplits >= 0, "A text can't be split fewer than 0 times.");
  std::vector<std::string_view> parts;
  std::size_t partStart = 0;
  const auto addPart = [&](std::size_t end) {
    if (const auto part = trimmed(text.substr(partStart, end - partStart)); !part.empty())
      parts.push_back(part);
  };
  std::int64_t splits = 0;
  if (options.maxSplits > 0) {
    for (const RegularExpression::Match& match : separator.matchesIn(text)) {
      const auto partEnd = static_cast<std::size_t>(match.range().lowerBound);
      addPart(partEnd);
      const bool counts = partEnd > partStart || !options.omittingEmptySubsequences;
      partStart = static_cast<std::size_t>(match.range().upperBound);
      if (counts && ++splits == options.maxSplits)
        break;
    }
  }
  addPart(text.size());
  return parts;
}

} // namespace velmar
