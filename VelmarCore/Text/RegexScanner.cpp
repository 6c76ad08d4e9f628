#include "VelmarCore/Text/RegexScanner.h"

#include "VelmarCore/Text/RegularExpressionElements.h"
#include "VelmarCore/Text/TranscodedText.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/Characters.h"

#include <utility>

namespace velmar {

namespace {

bool isASCII(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

} // namespace

RegexScanner::RegexScanner(std::string_view text)
    : RegexScanner(text, {0, static_cast<std::int64_t>(text.size())}) {}

RegexScanner::RegexScanner(std::string_view base, TextRange bounds)
    : base_(base), bounds_(bounds), currentIndex_(bounds.lowerBound) {
  precondition(bounds.lowerBound >= 0 &&
                   bounds.upperBound <= static_cast<std::int64_t>(base.size()),
               "A scanner's bounds must lie within its text.");
}

void RegexScanner::setCurrentIndex(std::int64_t index) {
  precondition(index >= bounds_.lowerBound && index <= bounds_.upperBound,
               "A scanner can't leave its bounds.");
  currentIndex_ = index;
}

std::string_view RegexScanner::take(std::int64_t end) {
  const std::int64_t start = std::exchange(currentIndex_, end);
  return textIn({start, end});
}

std::optional<TextRange> RegexScanner::moveTo(std::int64_t index) {
  const std::int64_t start = std::exchange(currentIndex_, index);
  if (start == index)
    return std::nullopt;
  return TextRange(start, index);
}

bool RegexScanner::advance() {
  if (isAtEnd())
    return false;
  currentIndex_ += nextCharacterBoundary(remaining(), 0);
  return true;
}

std::optional<std::string_view> RegexScanner::peek() const {
  if (isAtEnd())
    return std::nullopt;
  return firstCharacter(remaining());
}

bool RegexScanner::peek(std::string_view character) const {
  return !isAtEnd() && firstCharacter(remaining()) == character;
}

bool RegexScanner::peek(const CharacterClass& characters) const {
  return !isAtEnd() && characters.contains(firstCharacter(remaining()));
}

std::optional<std::string_view> RegexScanner::scanCharacter() {
  if (isAtEnd())
    return std::nullopt;
  return take(currentIndex_ + nextCharacterBoundary(remaining(), 0));
}

std::optional<std::string_view> RegexScanner::scan(std::string_view text) {
  const std::string_view rest = remaining();
  const auto length = static_cast<std::int64_t>(text.size());
  if (isAtEnd() || !rest.starts_with(text) || !isCharacterBoundary(rest, length))
    return std::nullopt;
  return take(currentIndex_ + length);
}

std::optional<std::string_view> RegexScanner::scan(const CharacterClass& characters) {
  if (!peek(characters))
    return std::nullopt;
  return scanCharacter();
}

std::optional<std::string_view> RegexScanner::scan(const CharacterRun& run) {
  const std::int64_t end = endOfRun(run.characters);
  if (end == currentIndex_)
    return std::nullopt;
  return take(end);
}

std::optional<RegularExpression::Match> RegexScanner::scan(const RegularExpression& expression,
                                                           RegularExpressionPass* pass) {
  CompiledPattern::Groups groups;
  if (isAtEnd() || !search(expression, CompiledPattern::Start::anchored, pass, groups))
    return std::nullopt;
  std::optional<RegularExpression::Match> match =
      matchOf(expression.compiled_, *transcoded_, groups);
  if (match)
    currentIndex_ = match->range().upperBound;
  return match;
}

std::optional<TextRange> RegexScanner::scanUpTo(std::string_view text) {
  const std::string_view rest = remaining();
  std::size_t start = rest.find(text);
  while (start != std::string_view::npos &&
         (!isCharacterBoundary(rest, static_cast<std::int64_t>(start)) ||
          !isCharacterBoundary(rest, static_cast<std::int64_t>(start + text.size()))))
    start = rest.find(text, start + 1);
  return moveTo(start == std::string_view::npos ? bounds_.upperBound
                                                : currentIndex_ + static_cast<std::int64_t>(start));
}

std::optional<TextRange> RegexScanner::scanUpTo(const CharacterClass& characters) {
  return moveTo(endOfRun(!characters));
}

std::optional<TextRange> RegexScanner::scanUpTo(const RegularExpression& expression,
                                                RegularExpressionPass* pass) {
  CompiledPattern::Groups groups;
  if (isAtEnd() || !search(expression, CompiledPattern::Start::anywhere, pass, groups))
    return moveTo(bounds_.upperBound);
  return moveTo(transcoded_->byteOffset(groups.whole.lowerBound).value_or(bounds_.upperBound));
}

std::int64_t RegexScanner::endOfRun(const CharacterClass& characters) const {
  const std::string_view rest = remaining();
  std::size_t index = 0;
  while (index < rest.size()) {
    // Two ASCII bytes in a row are two characters, but for CR LF.
    if (isASCII(rest[index]) && (index + 1 == rest.size() || isASCII(rest[index + 1])) &&
        rest[index] != '\r') {
      if (!characters.containsASCII(rest[index]))
        break;
      ++index;
      continue;
    }
    const std::string_view character = firstCharacter(rest.substr(index));
    if (!characters.contains(character))
      break;
    index += character.size();
  }
  return currentIndex_ + static_cast<std::int64_t>(index);
}

bool RegexScanner::search(const RegularExpression& expression, CompiledPattern::Start start,
                          RegularExpressionPass* pass, CompiledPattern::Groups& groups) {
  if (transcoded_ == nullptr)
    transcoded_ = std::make_shared<const TranscodedText>(
        base_.substr(0, static_cast<std::size_t>(bounds_.upperBound)));
  const std::int64_t unitsBefore = transcoded_->unitOffset(currentIndex_);
  if (!expression.search(transcoded_->units().substr(static_cast<std::size_t>(unitsBefore)), start,
                         pass, &groups))
    return false;
  const auto shift = [&](TextRange& range) {
    range = {range.lowerBound + unitsBefore, range.upperBound + unitsBefore};
  };
  shift(groups.whole);
  for (std::optional<TextRange>& capture : groups.captures)
    if (capture)
      shift(*capture);
  return true;
}

} // namespace velmar
