#include "VelmarCode/Language/LanguageDetection.h"

#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Unicode/Characters.h"

#include <algorithm>

namespace velmar::LanguageDetection {

namespace {

/// The length of the line break that `text` begins with, 0 if it begins with none.
std::size_t lineBreakLength(std::string_view text) {
  if (text.starts_with("\r\n") || text.starts_with("\u0085"))
    return 2;
  if (text.starts_with("\u2028") || text.starts_with("\u2029"))
    return 3;
  return text.front() >= '\n' && text.front() <= '\r' ? 1 : 0;
}

} // namespace

Confidence Filename::confidenceFor(std::string_view,
                                   std::optional<std::string_view> filename) const {
  const bool holds = filename && std::ranges::find(filenames_, *filename) != filenames_.end();
  return holds ? Confidence::required : Confidence::failed;
}

Confidence PathExtension::confidenceFor(std::string_view,
                                        std::optional<std::string_view> filename) const {
  if (!filename)
    return Confidence::failed;
  const FilePath path(*filename);
  const auto holds = [&](const std::optional<std::string>& extension) {
    return extension && std::ranges::find(extensions_, *extension) != extensions_.end();
  };
  const std::optional<std::string> compound = path.compoundExtension();
  if (holds(compound))
    return Confidence::required;
  const std::optional<std::string> extension = path.extension();
  return extension != compound && holds(extension) ? Confidence::high : Confidence::failed;
}

std::optional<std::string_view> LineReader::next() {
  if (rest_.empty())
    return std::nullopt;
  // The first bytes of all line breaks.
  constexpr std::string_view firstBytes = "\n\v\f\r\xC2\xE2";
  std::size_t end = rest_.size();
  for (std::size_t index = rest_.find_first_of(firstBytes); index < rest_.size();
       index = rest_.find_first_of(firstBytes, index + 1)) {
    if (const std::size_t length = lineBreakLength(rest_.substr(index)); length > 0) {
      end = index + length;
      break;
    }
  }
  const std::string_view line = rest_.substr(0, end);
  rest_.remove_prefix(end);
  return line;
}

bool isFoundIn(std::string_view text, const RegularExpression& pattern,
               RegularExpressionPass& pass) {
  return pattern.hasMatchIn(text, &pass);
}

bool isFoundIn(std::string_view text, const std::string& pattern, RegularExpressionPass&) {
  return text.find(pattern) != std::string_view::npos;
}

bool isFoundIn(std::string_view text, const CharacterClass& pattern, RegularExpressionPass&) {
  return std::ranges::any_of(CharacterView(text), pattern);
}

Confidence Compound::confidenceFor(std::string_view text,
                                   std::optional<std::string_view> filename) const {
  if (subrules_.empty())
    return Confidence::failed;
  float sum = 0;
  for (const LanguageDetectionRulePointer& rule : subrules_)
    sum += rule->confidenceFor(text, filename).rawValue * rule->priority().rawValue;
  return sum / static_cast<float>(subrules_.size());
}

} // namespace velmar::LanguageDetection
