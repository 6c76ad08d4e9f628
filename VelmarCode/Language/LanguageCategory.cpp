#include "VelmarCode/Language/LanguageCategory.h"

#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Coding/Vocabulary.h"

#include <source_location>

namespace velmar {

std::span<const Word<LanguageCategory>> wordsOf(LanguageCategory /*category*/) {
  static constexpr std::array words{
      Word{LanguageCategory::markup, "markup"},
      Word{LanguageCategory::stylesheet, "stylesheet"},
      Word{LanguageCategory::scripting, "scripting"},
      Word{LanguageCategory::system, "system"},
      Word{LanguageCategory::structured, "structured"},
      Word{LanguageCategory::configuration, "configuration"},
  };
  return words;
}

std::string_view descriptionOf(LanguageCategory category) {
  for (const auto& [value, text] : wordsOf(category))
    if (value == category)
      return text;
  preconditionFailed("There is no such category of languages.", std::source_location::current());
}

std::optional<LanguageCategory> languageCategoryNamed(std::string_view name) {
  for (const auto& [value, text] : wordsOf({}))
    if (text == name)
      return value;
  return std::nullopt;
}

std::ostream& operator<<(std::ostream& stream, LanguageCategory category) {
  return stream << descriptionOf(category);
}

} // namespace velmar
