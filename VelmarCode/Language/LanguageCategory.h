// What sort of language a language is, for menus and defaults.
#pragma once

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
[[nodiscard]] std::string_view descriptionOf(LanguageCategory category);
/// The category of that name.
[[nodiscard]] std::optional<LanguageCategory> languageCategoryNamed(std::string_view name);

/// Writes the name.
std::ostream& operator<<(std::ostream& stream, LanguageCategory category);

} // namespace velmar
