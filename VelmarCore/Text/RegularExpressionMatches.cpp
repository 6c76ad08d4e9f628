#include "VelmarCore/Text/RegularExpressionMatches.h"

#include "VelmarCore/Text/RegularExpressionElements.h"
#include "VelmarCore/Text/TranscodedText.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <type_traits>
#include <vector>

namespace velmar {

namespace {

/// The text to be searched, which is UTF-16 already.
struct DocumentSource {
  explicit DocumentSource(std::u16string_view view) : text(view) {}
  [[nodiscard]] std::u16string_view units() const { return text; }
  std::u16string_view text;
};

/// The text to be searched, converted.
struct StringSource {
  explicit StringSource(std::string_view view) : text(view) {}
  [[nodiscard]] std::u16string_view units() const { return text.units(); }
  TranscodedText text;
};

} // namespace

/// What is kept from one search to the next.
template <class Unit>
struct RegularExpressionMatches<Unit>::Iterator::Searches {
  Searches(View text, const CompiledPattern& pattern) : source(text) {
    if (pattern.literal() == nullptr)
      session.emplace(pattern, source.units());
  }

  std::conditional_t<std::is_same_v<Unit, char>, StringSource, DocumentSource> source;
  /// Absent if the pattern can be found without the engine.
  std::optional<PatternSession> session;
  CompiledPattern::Groups groups;
  /// Where the next search begins, in UTF-16 code units.
  std::size_t index = 0;
};

template <class Unit>
RegularExpressionMatches<Unit>::Iterator::Iterator(const RegularExpressionMatches& matches)
    : matches_(&matches),
      searches_(std::make_unique<Searches>(matches.text_, *matches.expression_.compiled_)) {
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
  std::vector<typename Match::Element> storage;
  if (match_)
    storage = std::move(*match_).takeElements();
  match_.reset();

  const RegularExpression& expression = matches_->expression_;
  const RegularExpressionMatchesOptions& options = matches_->options_;
  auto& [source, session, groups, index] = *searches_;
  const std::u16string_view units = source.units();
  if (index >= units.size() || expression.isOff(options.pass))
    return;
  const auto limit = RegularExpression::timeLimitOf(options.pass);
  const CompiledPattern::Search search =
      session ? session->search(index, options.start, limit, &groups)
              : expression.compiled_->search(units, index, options.start, limit, &groups);
  if (!expression.settle(search, options.pass)) {
    index = units.size();
    return;
  }
  const TextRange whole = groups.whole;
  index = static_cast<std::size_t>(whole.upperBound);
  if (whole.isEmpty() && index < units.size())
    index += decodeUTF16(units, index).length;
  match_ = matchOf(expression.compiled_, source.text, groups, std::move(storage));
}

template class RegularExpressionMatches<char>;
template class RegularExpressionMatches<char16_t>;

} // namespace velmar
