#include "VelmarCore/Text/LiteralPattern.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <type_traits>

namespace velmar {

namespace {

using Options = RegularExpressionOptions;

constexpr std::u16string_view metacharacters = u"\\*?+[(){}^$|.";

bool isASCIIPunctuation(char16_t unit) {
  return (unit >= u'!' && unit <= u'/') || (unit >= u':' && unit <= u'@') ||
         (unit >= u'[' && unit <= u'`') || (unit >= u'{' && unit <= u'~');
}

/// Takes `prefix` off the front of `rest` if it stands there.
bool take(std::u16string_view& rest, std::u16string_view prefix) {
  if (!rest.starts_with(prefix))
    return false;
  rest.remove_prefix(prefix.size());
  return true;
}

/// The opening of a group, of whatever kind has no effect on what is matched.
bool takeGroupOpening(std::u16string_view& rest) {
  if (take(rest, u"(?:"))
    return true;
  if (rest.starts_with(u"(?<")) {
    const std::size_t end = rest.find(u'>');
    if (end == std::u16string_view::npos || rest.size() < 4 || rest[3] == u'=' || rest[3] == u'!')
      return false;
    rest.remove_prefix(end + 1);
    return true;
  }
  return !rest.starts_with(u"(?") && take(rest, u"(");
}

/// A literal that isn't empty; stops in front of the first metacharacter, which the caller must
/// understand: a quantifier, say, would bind to the last character alone.
std::optional<std::u16string> takeLiteral(std::u16string_view& rest) {
  std::u16string literal;
  while (!rest.empty()) {
    if (rest.size() >= 2 && rest[0] == u'\\' && isASCIIPunctuation(rest[1])) {
      literal.push_back(rest[1]);
      rest.remove_prefix(2);
    } else if (metacharacters.find(rest[0]) == std::u16string_view::npos) {
      literal.push_back(rest[0]);
      rest.remove_prefix(1);
    } else {
      break;
    }
  }
  if (literal.empty())
    return std::nullopt;
  return literal;
}

/// The places where `$` matches, ascending: in front of a line break that ends the text, and at the
/// very end. The middle of a CR LF isn't one.
struct Ends {
  std::array<std::size_t, 2> places{};
  std::size_t count = 0;
  [[nodiscard]] bool contains(std::size_t place) const {
    return places[0] == place || (count == 2 && places[1] == place);
  }
};

template <class Unit>
std::size_t finalLineBreakLength(std::basic_string_view<Unit> text) {
  if (text.empty())
    return 0;
  const Unit last = text.back();
  if (last >= 0x0A && last <= 0x0D)
    return last == 0x0A && text.size() >= 2 && text[text.size() - 2] == 0x0D ? 2 : 1;
  if constexpr (std::is_same_v<Unit, char16_t>)
    return last == 0x85 || last == 0x2028 || last == 0x2029 ? 1 : 0;
  else if (text.ends_with("\xC2\x85"))
    return 2;
  else
    return text.ends_with("\xE2\x80\xA8") || text.ends_with("\xE2\x80\xA9") ? 3 : 0;
}

template <class Unit>
Ends endsOf(std::basic_string_view<Unit> text) {
  const std::size_t length = finalLineBreakLength(text);
  if (length == 0)
    return {{text.size(), text.size()}, 1};
  return {{text.size() - length, text.size()}, 2};
}

} // namespace

std::optional<LiteralPattern> LiteralPattern::fromPattern(std::u16string_view pattern,
                                                          Options options) {
  LiteralPattern result;
  if (holds(options, Options::caseInsensitive))
    return std::nullopt;
  if (holds(options, Options::ignoreMetacharacters)) {
    result.setAlternatives({std::u16string(pattern)});
    return result;
  }
  if (holds(options, Options::allowCommentsAndWhitespace))
    return std::nullopt;

  std::u16string_view rest = pattern;
  result.atStart_ = take(rest, u"^");
  const bool hasGroup = takeGroupOpening(rest);
  std::vector<std::u16string> texts;
  do {
    std::optional<std::u16string> literal = takeLiteral(rest);
    if (!literal)
      return std::nullopt;
    texts.push_back(std::move(*literal));
  } while (hasGroup && take(rest, u"|"));
  if (hasGroup && !take(rest, u")"))
    return std::nullopt;
  result.atEnd_ = take(rest, u"$");

  const bool isAnchored = result.atStart_ || result.atEnd_;
  if (!rest.empty() || (texts.size() > 1 && !result.atStart_) ||
      (isAnchored && holds(options, Options::anchorsMatchLines)))
    return std::nullopt;
  result.setAlternatives(texts);
  return result;
}

void LiteralPattern::setAlternatives(const std::vector<std::u16string>& texts) {
  for (std::size_t order = 0; order < texts.size(); ++order) {
    bytes_.push_back({utf8RepairingUTF16(texts[order]), order});
    units_.push_back({texts[order], order});
  }
  const auto byFirstUnit = [](const auto& a, const auto& b) {
    return a.text.front() != b.text.front() ? a.text.front() < b.text.front() : a.order < b.order;
  };
  std::ranges::sort(units_, byFirstUnit);
  std::ranges::sort(bytes_, byFirstUnit);
}

std::optional<LiteralPattern::Hit> LiteralPattern::find(std::u16string_view text, std::size_t from,
                                                        bool anchored) const {
  return findImpl(units_, text, from, anchored);
}

std::optional<LiteralPattern::Hit> LiteralPattern::find(std::string_view text, std::size_t from,
                                                        bool anchored) const {
  return findImpl(bytes_, text, from, anchored);
}

template <class Unit>
std::optional<LiteralPattern::Hit> LiteralPattern::findImpl(const Alternatives<Unit>& alternatives,
                                                            std::basic_string_view<Unit> text,
                                                            std::size_t from, bool anchored) const {
  if (atStart_ && from > 0)
    return std::nullopt;
  if (atStart_ || anchored)
    return findAt(alternatives, text, from);

  const std::basic_string<Unit>& literal = alternatives.front().text;
  if (!atEnd_) {
    const std::size_t start = text.find(literal, from);
    if (start == std::basic_string_view<Unit>::npos)
      return std::nullopt;
    return Hit{start, start + literal.size()};
  }
  const Ends ends = endsOf(text);
  for (std::size_t i = 0; i < ends.count; ++i) {
    const std::size_t end = ends.places[i];
    if (end >= from + literal.size() && text.substr(0, end).ends_with(literal))
      return Hit{end - literal.size(), end};
  }
  return std::nullopt;
}

template <class Unit>
std::optional<LiteralPattern::Hit> LiteralPattern::findAt(const Alternatives<Unit>& alternatives,
                                                          std::basic_string_view<Unit> text,
                                                          std::size_t start) const {
  const std::basic_string_view<Unit> rest = text.substr(start);
  if (rest.empty())
    return std::nullopt;
  const Ends ends = endsOf(text);
  auto candidate = std::ranges::lower_bound(
      alternatives, rest.front(), {},
      [](const Alternative<Unit>& alternative) { return alternative.text.front(); });
  for (; candidate != alternatives.end() && candidate->text.front() == rest.front(); ++candidate) {
    const std::size_t end = start + candidate->text.size();
    if ((!atEnd_ || ends.contains(end)) && rest.starts_with(candidate->text))
      return Hit{start, end};
  }
  return std::nullopt;
}

} // namespace velmar
