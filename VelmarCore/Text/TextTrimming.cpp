#include "VelmarCore/Text/TextTrimming.h"

namespace velmar {

std::string_view trimmed(std::string_view text) {
  return trimmedWhere(text, [](std::string_view character) { return isWhitespace(character); });
}

std::vector<std::string_view> splitTrimmed(std::string_view text, std::string_view separator,
                                           SplitOptions options) {
  precondition(!separator.empty() && firstCharacter(separator).size() == separator.size(),
               "A separator is exactly one character.");
  return splitTrimmed(
      text, [&](std::string_view character) { return character == separator; }, options);
}

} // namespace velmar
