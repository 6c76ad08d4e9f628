// Enumerations whose cases have a text: capture names, property keys, predicate names, query
// categories.
//
// An enumeration takes part by a function beside it that gives the texts in the order of its cases,
// counted from 0:
//
//     enum class TagCapture { open, close };
//     inline std::span<const std::string_view> rawValuesOf(TagCapture) {
//       static constexpr std::array<std::string_view, 2> texts{"tag.open", "tag.close"};
//       return texts;
//     }
//     rawValueOf(TagCapture::close);           // "tag.close"
//     fromRawValue<TagCapture>("tag.open");    // TagCapture::open
#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

namespace velmar {

template <class T>
concept TextEnumeration = std::is_enum_v<T> && requires(T value) {
  { rawValuesOf(value) } -> std::convertible_to<std::span<const std::string_view>>;
};

/// The number of cases.
template <TextEnumeration T>
[[nodiscard]] std::size_t caseCount() {
  return std::span<const std::string_view>(rawValuesOf(T{})).size();
}

/// The text of a case, for as long as the process.
template <TextEnumeration T>
[[nodiscard]] std::string_view rawValueOf(T value) {
  return std::span<const std::string_view>(rawValuesOf(value))[static_cast<std::size_t>(value)];
}

/// The case with that text. O(cases).
template <TextEnumeration T>
[[nodiscard]] std::optional<T> fromRawValue(std::string_view text) {
  const std::span<const std::string_view> texts = rawValuesOf(T{});
  for (std::size_t index = 0; index < texts.size(); ++index) {
    if (texts[index] == text)
      return static_cast<T>(index);
  }
  return std::nullopt;
}

} // namespace velmar
