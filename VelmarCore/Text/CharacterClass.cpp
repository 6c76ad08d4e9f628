#include "VelmarCore/Text/CharacterClass.h"

#include "VelmarPlatform/Unicode/Characters.h"

namespace velmar {

bool CharacterClass::contains(std::string_view character) const noexcept {
  if (character.empty())
    return false;
  if (character == "\r\n")
    return lineBreakPair_;
  if (character.size() == 1 && static_cast<unsigned char>(character.front()) < 0x80)
    return containsASCII(character.front());
  switch (others_) {
  case Others::none:
    return false;
  case Others::whitespace:
    return isWhitespace(character);
  case Others::allButWhitespace:
    return !isWhitespace(character);
  case Others::all:
    return true;
  }
  return false;
}

} // namespace velmar
