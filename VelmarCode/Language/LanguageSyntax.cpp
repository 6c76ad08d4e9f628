#include "VelmarCode/Language/LanguageSyntax.h"

#include "VelmarPlatform/Unicode/UTF.h"

namespace velmar {

std::optional<BracketPair> BracketPair::fromStrings(std::string_view open, std::string_view close) {
  if (open.empty() || close.empty())
    return std::nullopt;
  return BracketPair{decodeUTF8(open, 0).scalar, decodeUTF8(close, 0).scalar};
}

std::string BracketPair::description() const {
  return utf8FromScalar(open) + utf8FromScalar(close);
}

std::ostream& operator<<(std::ostream& stream, const BracketPair& pair) {
  return stream << pair.description();
}

} // namespace velmar
