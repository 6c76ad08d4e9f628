#include "VelmarCode/Language/LanguageCategory.h"

#include "VelmarPlatform/Basics/Precondition.h"

#include <source_location>

namespace velmar {

std::string_view descriptionOf(LanguageCategory category) {
  switch (category) {
  case LanguageCategory::markup:
    return "markup";
  case LanguageCategory::stylesheet:
    return "stylesheet";
  case LanguageCategory::scripting:
    return "scripting";
  case LanguageCategory::system:
    return "system";
  case LanguageCategory::structured:
    return "structured";
  case LanguageCategory::configuration:
    return "configuration";
  }
  preconditionFailed("There is no such category of languages.", std::source_location::current());
}

std::optional<LanguageCategory> languageCategoryNamed(std::string_view name) {
  for (const LanguageCategory category : allLanguageCategories)
    if (descriptionOf(category) == name)
      return category;
  return std::nullopt;
}

std::ostream& operator<<(std::ostream& stream, LanguageCategory category) {
  return stream << descriptionOf(category);
}

} // namespace velmar
