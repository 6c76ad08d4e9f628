// What a regular expression found. RegularExpression makes these.
#pragma once

#include "VelmarCore/Text/CompiledPattern.h"
#include "VelmarPlatform/Basics/Range.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

/// One match: a collection of elements, of which the first is the whole match and the others are
/// the groups by number.
///
/// All ranges count units of the text that was searched: UTF-16 code units if that was a document's
/// text, bytes if it was a string. Substrings are borrowed from that text and end with it.
template <class Unit>
class RegularExpressionMatch {
public:
  using View = std::basic_string_view<Unit>;

  /// The whole match or a group. Both members are absent for a group that took no part in the
  /// match.
  struct Element {
    std::optional<View> substring;
    std::optional<TextRange> range;
    bool operator==(const Element&) const = default;
  };

  /// The match at `range` of `text`; `elements` are its groups and, first, the whole.
  RegularExpressionMatch(std::shared_ptr<const CompiledPattern> pattern, View text, TextRange range,
                         std::vector<Element> elements)
      : pattern_(std::move(pattern)), range_(range),
        substring_(text.substr(static_cast<std::size_t>(range.lowerBound),
                               static_cast<std::size_t>(range.length()))),
        elements_(std::move(elements)) {}

  [[nodiscard]] View substring() const noexcept { return substring_; }
  [[nodiscard]] TextRange range() const noexcept { return range_; }

  /// The groups of the pattern plus one.
  [[nodiscard]] std::int64_t count() const noexcept {
    return static_cast<std::int64_t>(elements_.size());
  }
  [[nodiscard]] auto begin() const noexcept { return elements_.begin(); }
  [[nodiscard]] auto end() const noexcept { return elements_.end(); }

  /// The group `index`, the whole match for 0; an element with nothing in it for a number that the
  /// pattern doesn't have.
  [[nodiscard]] const Element& operator[](std::int64_t index) const noexcept {
    static const Element nothing;
    return index >= 0 && index < count() ? elements_[static_cast<std::size_t>(index)] : nothing;
  }
  /// The group of that name; absent if it took no part, or if the pattern has no such group.
  [[nodiscard]] std::optional<Element> groupNamed(std::string_view name) const {
    const std::optional<std::int64_t> number = pattern_->groupNamed(name);
    if (!number || !(*this)[*number].range)
      return std::nullopt;
    return (*this)[*number];
  }
  /// The text of that group, empty if it took no part.
  [[nodiscard]] View textOf(std::string_view name) const {
    const std::optional<std::int64_t> number = pattern_->groupNamed(name);
    return number ? (*this)[*number].substring.value_or(View()) : View();
  }

  /// The elements, for their memory to be used for another match; this one is of no use afterwards.
  [[nodiscard]] std::vector<Element> takeElements() && noexcept { return std::move(elements_); }

private:
  std::shared_ptr<const CompiledPattern> pattern_;
  TextRange range_;
  View substring_;
  std::vector<Element> elements_;
};

} // namespace velmar
