#include "VelmarParser/Query/CaptureValues.h"

#include "VelmarCore/Text/RegularExpressionMatches.h"
#include "VelmarParser/Query/NodeText.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Unicode/CaseMapping.h"
#include "VelmarPlatform/Unicode/Characters.h"

#include <algorithm>
#include <ranges>

namespace velmar {

namespace {

using QueryPredicates::CaptureTransform;

/// White space is never outside the first plane, so unit by unit will do.
bool isSpace(char16_t unit) {
  return isWhitespaceScalar(unit);
}

/// What is left of `text` without white space at its ends, as a range of it; at its end if nothing
/// is left.
TextRange trimmedRange(std::u16string_view text) {
  const auto* const start = std::ranges::find_if_not(text, isSpace);
  const auto* end = text.end();
  while (end != start && isSpace(end[-1]))
    --end;
  return {start - text.begin(), end - text.begin()};
}

std::u16string_view substring(std::u16string_view text, TextRange range) {
  return text.substr(static_cast<std::size_t>(range.lowerBound),
                     static_cast<std::size_t>(range.length()));
}

std::optional<std::size_t> indexOf(std::string_view name, std::span<const std::string_view> names) {
  const auto found = std::ranges::find(names, name);
  return found != names.end() ? std::optional(static_cast<std::size_t>(found - names.begin()))
                              : std::nullopt;
}

/// Adds a node's text to what the capture has already.
void add(std::u16string_view text, TextRange range, std::optional<CaptureValue>& value) {
  if (!value) {
    value = {.text = std::u16string(text), .range = range, .isTransformed = false};
    return;
  }
  value->text += u' ';
  value->text += text;
  value->range = {std::min(value->range.lowerBound, range.lowerBound),
                  std::max(value->range.upperBound, range.upperBound)};
}

/// All matches of `regex` in `text` that `isWanted`, each replaced by what `replacement` gives for
/// it.
template <class IsWanted, class Replacement>
std::u16string replacingMatches(const RegularExpression& regex, const std::u16string& text,
                                RegularExpressionPass* pass, IsWanted&& isWanted,
                                Replacement&& replacement) {
  std::u16string result;
  std::size_t end = 0;
  for (const auto& match : regex.matchesIn(std::u16string_view(text), {.pass = pass})) {
    if (!isWanted(match.range()))
      continue;
    result.append(text, end, static_cast<std::size_t>(match.range().lowerBound) - end);
    result += replacement(match);
    end = static_cast<std::size_t>(match.range().upperBound);
  }
  return result.append(text, end);
}

/// Rewrites the values of one match.
class Transformer {
public:
  Transformer(detail::IndexedCaptureValues& values, std::span<const std::string_view> names,
              RegularExpressionPass* pass)
      : values_(values), names_(names), pass_(pass) {}

  void apply(const CaptureTransform& transform) {
    CaptureValue* const value = valueOf(transform.capture);
    if (!value)
      return;
    value->text = std::visit([&](const auto& action) { return transformed(value->text, action); },
                             transform.action);
    value->isTransformed = true;
  }

private:
  std::u16string transformed(const std::u16string& text, const CaptureTransform::Prefix& action) {
    return joined(action.arguments) + text;
  }
  std::u16string transformed(const std::u16string& text, const CaptureTransform::Append& action) {
    return text + joined(action.arguments);
  }
  std::u16string transformed(const std::u16string& text, const CaptureTransform::Strip& action) {
    if (!action.regex)
      return std::u16string(substring(text, trimmedRange(text)));
    const auto touchesAnEnd = [&](TextRange match) {
      return match.lowerBound == 0 || match.upperBound == static_cast<std::int64_t>(text.size());
    };
    return replacingMatches(*action.regex, text, pass_, touchesAnEnd,
                            [](const auto&) { return u""; });
  }
  std::u16string transformed(const std::u16string& text, const CaptureTransform::Replace& action) {
    return replacingMatches(
        action.regex, text, pass_, [](TextRange) { return true; },
        [&](const auto& match) {
          return action.regex.replacementFor(match, action.replacement.units);
        });
  }
  std::u16string transformed(const std::u16string& text, const CaptureTransform::Downcase&) {
    return lowercased(text);
  }
  std::u16string transformed(const std::u16string& text, const CaptureTransform::Upcase&) {
    return uppercased(text);
  }

  std::u16string joined(std::span<const QueryPredicateArgument> arguments) {
    std::u16string result;
    for (const QueryPredicateArgument& argument : arguments) {
      if (const auto* const string = std::get_if<QueryPredicateString>(&argument))
        result += string->units;
      else if (const auto* const value = valueOf(std::get<QueryPredicateCapture>(argument)))
        result += value->text;
    }
    return result;
  }

  CaptureValue* valueOf(const QueryPredicateCapture& capture) {
    const auto index = indexOf(capture.name, names_);
    return index && values_[*index] ? &*values_[*index] : nullptr;
  }

  detail::IndexedCaptureValues& values_;
  std::span<const std::string_view> names_;
  RegularExpressionPass* pass_;
};

} // namespace

namespace detail {

IndexedCaptureValues indexedCaptureValues(const Query::Match& match, QueryContext context,
                                          std::span<const std::string_view> names,
                                          const std::vector<bool>& isWanted,
                                          CaptureTrimming trimming) {
  IndexedCaptureValues values(names.size());
  std::u16string scratch;
  for (const Query::Match::Capture capture : match.captures()) {
    const auto index = indexOf(capture.name(), names);
    if (!index || (!isWanted.empty() && !isWanted[*index]))
      continue;
    const std::u16string_view text = textOfNode(capture.node(), context.text, scratch);
    const TextRange kept = trimming == CaptureTrimming::trim
                               ? trimmedRange(text)
                               : TextRange(0, static_cast<std::int64_t>(text.size()));
    const std::int64_t start = capture.node().utf16Range().lowerBound;
    add(substring(text, kept), {start + kept.lowerBound, start + kept.upperBound}, values[*index]);
  }
  Transformer transformer(values, names, context.pass);
  for (const CaptureTransform& transform :
       match.query().captureTransformPredicates()[static_cast<std::size_t>(match.patternIndex())])
    transformer.apply(transform);
  return values;
}

} // namespace detail

std::vector<CaptureValue> evaluateResultBuilder(const std::shared_ptr<const Query>& query,
                                                ParseNode node, QueryContext context) {
  std::vector<CaptureValue> results;
  for (const QueryMatches::Element& match :
       QueryMatches(query, node, node.utf16Range(), context.text, {}, context.pass)) {
    auto values = captureValues<ResultBuilderCapture>(match.base, context, std::nullopt,
                                                      CaptureTrimming::trim);
    if (const auto result = values.find(ResultBuilderCapture::result); result != values.end())
      results.push_back(std::move(result->second));
  }
  return results;
}

} // namespace velmar
