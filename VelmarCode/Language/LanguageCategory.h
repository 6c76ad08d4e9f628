// What sort of language a language is, for menus and defaults.
#pragma once

#include "VelmarPlatform/Coding/Forward.h"

#include <array>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string_view>

namespace velmar {

enum class LanguageCategory : std::uint8_t {
  markup,
  stylesheet,
  scripting,
  system,
  structured,
  configuration,
};

inline constexpr std::array allLanguageCategories = {
    LanguageCategory::markup, LanguageCategory::stylesheet, LanguageCategory::scripting,
    LanguageCategory::system, LanguageCategory::structured, LanguageCategory::configuration,
};

/// The category's name, which is also its JSON form: "markup" and so on.
/// The same words, by which a document has one.
[[nodiscard]] std::span<const Word<LanguageCategory>> wordsOf(LanguageCategory category);
[[nodiscard]] std::string_view descriptionOf(LanguageCategory category);
/// The category of that name.
[[nodiscard]] std::optional<LanguageCategory> languageCategoryNamed(std::string_view name);

/// Writes the name.
std::ostream& operator<<(std::ostream& stream, LanguageCategory category);

} // namespace velmar
