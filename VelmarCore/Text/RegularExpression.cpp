#include "VelmarCore/Text/RegularExpression.h"

#include "VelmarCore/Text/LiteralPattern.h"
#include "VelmarCore/Text/RegularExpressionElements.h"
#include "VelmarCore/Text/RegularExpressionMatches.h"
#include "VelmarCore/Text/TranscodedText.h"
#include "VelmarPlatform/Coding/Coder.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <utility>

namespace velmar {

namespace {

using Start = CompiledPattern::Start;

/// Quicker searches aren't worth an account in a pass.
constexpr std::chrono::nanoseconds notableTime = std::chrono::microseconds(100);

template <class Unit>
bool isDigit(Unit unit) {
  return unit >= '0' && unit <= '9';
}

/// Takes the number at the front of `rest`, of at most so many digits as `largest` has.
template <class Unit>
std::optional<std::int64_t> takeNumber(std::basic_string_view<Unit>& rest, std::int64_t largest) {
  if (rest.empty() || !isDigit(rest.front()))
    return std::nullopt;
  std::int64_t number = 0;
  do {
    number = number * 10 + (rest.front() - '0');
    rest.remove_prefix(1);
    largest /= 10;
  } while (largest > 0 && !rest.empty() && isDigit(rest.front()));
  return number;
}

/// Takes `{name}` off the front of `rest`; the name must be letters and digits, as those of groups
/// are.
template <class Unit>
std::optional<std::string> takeBracedName(std::basic_string_view<Unit>& rest) {
  const std::size_t end = rest.find(Unit('}'));
  if (rest.empty() || rest.front() != '{' || end == std::basic_string_view<Unit>::npos)
    return std::nullopt;
  std::string name;
  for (const Unit unit : rest.substr(1, end - 1)) {
    if (unit >= 0x80 || unit <= 0)
      return std::nullopt;
    name.push_back(static_cast<char>(unit));
  }
  rest.remove_prefix(end + 1);
  return name;
}

template <class Unit>
std::basic_string<Unit> expand(const RegularExpressionMatch<Unit>& match,
                               const CompiledPattern& pattern, std::basic_string_view<Unit> rest) {
  std::basic_string<Unit> result;
  const auto appendGroup = [&](std::int64_t number) {
    result += match[number].substring.value_or(std::basic_string_view<Unit>());
  };
  while (!rest.empty()) {
    const Unit unit = rest.front();
    rest.remove_prefix(1);
    if (unit == '\\' && !rest.empty()) {
      result.push_back(rest.front());
      rest.remove_prefix(1);
    } else if (unit != '$') {
      result.push_back(unit);
    } else if (const auto number = takeNumber(rest, match.count() - 1)) {
      appendGroup(*number);
    } else {
      auto behindName = rest;
      const std::optional<std::string> name = takeBracedName(behindName);
      const auto named = name ? pattern.groupNamed(*name) : std::nullopt;
      if (named) {
        appendGroup(*named);
        rest = behindName;
      } else {
        result.push_back(unit);
      }
    }
  }
  return result;
}

} // namespace

RegularExpression::RegularExpression() {
  static const RegularExpression empty{std::string("(?:)")};
  compiled_ = empty.compiled_;
}

RegularExpression::RegularExpression(std::string pattern, Options options) {
  auto compiled = CompiledPattern::compile(std::move(pattern), options);
  if (!compiled)
    throw compiled.error();
  compiled_ = std::move(*compiled);
}

Result<RegularExpression, RegularExpressionError> RegularExpression::compile(std::string pattern,
                                                                             Options options) {
  auto compiled = CompiledPattern::compile(std::move(pattern), options);
  if (!compiled)
    return Failure(compiled.error());
  return RegularExpression(std::move(*compiled));
}

std::set<std::string> RegularExpression::captureNames() const {
  static const RegularExpression opening(R"(\?<([\w\a_-]*)>)", Options::dotMatchesLineSeparators);
  const std::string_view text = pattern();
  std::set<std::string> names;
  for (std::size_t index = text.find_first_of("\\("); index < text.size();
       index = text.find_first_of("\\(", index)) {
    if (text[index] == '\\') {
      // The character behind it isn't looked at; only a backslash or a parenthesis would matter.
      index += 2;
      continue;
    }
    ++index;
    if (const auto group = opening.prefixMatchIn(text.substr(index)))
      names.emplace((*group)[1].substring.value_or(std::string_view()));
  }
  return names;
}

bool RegularExpression::hasMatchIn(std::u16string_view text, RegularExpressionPass* pass) const {
  return search(text, Start::anywhere, pass, nullptr);
}

bool RegularExpression::hasMatchIn(std::string_view text, RegularExpressionPass* pass) const {
  if (const LiteralPattern* literal = compiled_->literal())
    return literal->find(text, 0, false).has_value();
  return search(TranscodedText(text).units(), Start::anywhere, pass, nullptr);
}

std::optional<RegularExpression::DocumentMatch>
RegularExpression::firstMatchIn(std::u16string_view text, RegularExpressionPass* pass) const {
  return matchIn(text, Start::anywhere, pass);
}

std::optional<RegularExpression::Match>
RegularExpression::firstMatchIn(std::string_view text, RegularExpressionPass* pass) const {
  return matchIn(text, Start::anywhere, pass);
}

std::optional<RegularExpression::DocumentMatch>
RegularExpression::prefixMatchIn(std::u16string_view text, RegularExpressionPass* pass) const {
  return matchIn(text, Start::anchored, pass);
}

std::optional<RegularExpression::Match>
RegularExpression::prefixMatchIn(std::string_view text, RegularExpressionPass* pass) const {
  return matchIn(text, Start::anchored, pass);
}

std::optional<RegularExpression::DocumentMatch>
RegularExpression::wholeMatchIn(std::u16string_view text, RegularExpressionPass* pass) const {
  std::optional<DocumentMatch> match = matchIn(text, Start::anchored, pass);
  if (match && match->substring().size() != text.size())
    return std::nullopt;
  return match;
}

std::optional<RegularExpression::Match>
RegularExpression::wholeMatchIn(std::string_view text, RegularExpressionPass* pass) const {
  std::optional<Match> match = matchIn(text, Start::anchored, pass);
  if (match && match->substring().size() != text.size())
    return std::nullopt;
  return match;
}

RegularExpressionMatches<char16_t> RegularExpression::matchesIn(std::u16string_view text) const {
  return {*this, text};
}

RegularExpressionMatches<char> RegularExpression::matchesIn(std::string_view text) const {
  return {*this, text};
}

RegularExpressionMatches<char16_t>
RegularExpression::matchesIn(std::u16string_view text,
                             RegularExpressionMatchesOptions options) const {
  return {*this, text, options};
}

RegularExpressionMatches<char>
RegularExpression::matchesIn(std::string_view text, RegularExpressionMatchesOptions options) const {
  return {*this, text, options};
}

std::string RegularExpression::replacementFor(const Match& match,
                                              std::string_view replacement) const {
  return expand(match, *compiled_, replacement);
}

std::u16string RegularExpression::replacementFor(const DocumentMatch& match,
                                                 std::u16string_view replacement) const {
  return expand(match, *compiled_, replacement);
}

bool RegularExpression::operator==(const RegularExpression& other) const noexcept {
  return compiled_ == other.compiled_ ||
         (pattern() == other.pattern() && options() == other.options());
}

std::chrono::nanoseconds RegularExpression::timeLimitOf(const RegularExpressionPass* pass) {
  return pass != nullptr ? pass->limits().perSearch : RegularExpressionPass::Limits().perSearch;
}

bool RegularExpression::isOff(const RegularExpressionPass* pass) const noexcept {
  return pass != nullptr && pass->isPatternOff(compiled_.get());
}

bool RegularExpression::settle(CompiledPattern::Search search, RegularExpressionPass* pass) const {
  const bool wasStopped = search.outcome == CompiledPattern::Outcome::stopped;
  if (pass != nullptr && (wasStopped || search.time > notableTime))
    pass->charge(compiled_, search.time, wasStopped);
  return search.outcome == CompiledPattern::Outcome::found;
}

bool RegularExpression::search(std::u16string_view text, Start start, RegularExpressionPass* pass,
                               CompiledPattern::Groups* groups) const {
  return !isOff(pass) && settle(compiled_->search(text, 0, start, timeLimitOf(pass), groups), pass);
}

std::optional<RegularExpression::DocumentMatch>
RegularExpression::matchIn(std::u16string_view text, Start start,
                           RegularExpressionPass* pass) const {
  CompiledPattern::Groups groups;
  if (!search(text, start, pass, &groups))
    return std::nullopt;
  return matchOf(compiled_, text, groups);
}

std::optional<RegularExpression::Match>
RegularExpression::matchIn(std::string_view text, Start start, RegularExpressionPass* pass) const {
  CompiledPattern::Groups groups;
  const TranscodedText transcoded(text);
  if (!search(transcoded.units(), start, pass, &groups))
    return std::nullopt;
  return matchOf(compiled_, transcoded, groups);
}

std::ostream& operator<<(std::ostream& stream, const RegularExpression& expression) {
  return stream << '/' << expression.pattern() << '/'
                << static_cast<std::uint32_t>(expression.options());
}

bool Coder<RegularExpression>::decode(Decoder from, RegularExpression& into) {
  KeyedDecodingContainer table;
  std::string pattern;
  std::uint32_t options = 0;
  if (!from.open(table) || !table.read("pattern", pattern) || !table.read("options", options))
    return false;
  auto expression =
      RegularExpression::compile(std::move(pattern), RegularExpressionOptions(options));
  if (!expression)
    return from.fail(DecodingErrorKind::dataCorrupted, "Could not decode regular expression.",
                     std::make_exception_ptr(expression.error()));
  into = *std::move(expression);
  return true;
}

void Coder<RegularExpression>::encode(const RegularExpression& value, Encoder& into) {
  into.table([&](TableEncoder& table) {
    table.write("pattern", value.pattern());
    table.write("options", static_cast<std::uint32_t>(value.options()));
  });
}

} // namespace velmar
