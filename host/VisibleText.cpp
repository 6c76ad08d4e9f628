#include "host/VisibleText.h"

#include "VelmarPlatform/Unicode/Characters.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <unicode/uchar.h>

#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr char32_t emojiSelector = 0xFE0F;

UChar32 icu(char32_t scalar) {
  return static_cast<UChar32>(scalar);
}

bool isWide(char32_t scalar) {
  const auto width = u_getIntPropertyValue(icu(scalar), UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH;
}

bool isMark(char32_t scalar) {
  const auto type = u_charType(icu(scalar));
  return type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK;
}

/// Whether a character that consists of this scalar alone would go unseen, or would act on the
/// terminal or on the text around it.
bool needsStandIn(char32_t scalar) {
  if (scalar < 0x20 || scalar == 0x7F)
    return true;
  switch (u_charType(icu(scalar))) {
  case U_CONTROL_CHAR:
  case U_LINE_SEPARATOR:
  case U_PARAGRAPH_SEPARATOR:
    return true;
  case U_FORMAT_CHAR: // Some of them are signs that belong to what follows.
    return u_getIntPropertyValue(icu(scalar), UCHAR_GRAPHEME_CLUSTER_BREAK) != U_GCB_PREPEND;
  default:
    return false;
  }
}

std::string standInFor(char32_t scalar) {
  if (scalar < 0x20)
    return utf8FromScalar(0x2400 + scalar);
  if (scalar == 0x7F)
    return utf8FromScalar(0x2421);
  return fmt::format("⟨{:x}⟩", static_cast<std::uint32_t>(scalar));
}

} // namespace

std::int64_t columnsOf(std::u16string_view character) {
  if (character.empty())
    return 0;
  const DecodedScalar first = decodeUTF16(character, 0);
  if (isMark(first.scalar))
    return 0;
  // Flags are two letters, and a selector asks for the picture instead of the sign.
  const bool isFlag = character.size() == 4 && first.scalar >= 0x1F1E6 && first.scalar <= 0x1F1FF;
  const bool isPicture = character.find(static_cast<char16_t>(emojiSelector)) != character.npos;
  return isWide(first.scalar) || isFlag || isPicture ? 2 : 1;
}

const std::vector<VisibleText::Piece>& VisibleText::next(std::u16string_view units) {
  pieces_.clear();
  // Printable ASCII in front of ASCII can't be part of a larger character.
  const auto isPlain = [&](std::size_t at) { return units[at] >= 0x20 && units[at] < 0x7F; };
  std::size_t at = 0;
  while (at < units.size()) {
    std::size_t end = at;
    while (end < units.size() && isPlain(end))
      ++end;
    if (end > at && end < units.size() && units[end] > 0x7F)
      --end; // It may carry an accent.
    if (end > at) {
      append(utf8RepairingUTF16(units.substr(at, end - at)), false);
      column_ += static_cast<std::int64_t>(end - at);
      at = end;
      continue;
    }
    const auto next =
        static_cast<std::size_t>(nextCharacterBoundary(units, static_cast<std::int64_t>(at)));
    if (units[at] == u'\t')
      appendTab();
    else
      appendCharacter(units.substr(at, next - at));
    at = next;
  }
  return pieces_;
}

void VisibleText::append(std::string_view text, bool isStandIn) {
  if (!pieces_.empty() && pieces_.back().isStandIn == isStandIn)
    pieces_.back().text += text;
  else
    pieces_.push_back({.text = std::string(text), .isStandIn = isStandIn});
}

void VisibleText::appendTab() {
  const std::int64_t blanks = tabWidth - column_ % tabWidth;
  append(tabs_ == Tabs::keep ? "\t" : std::string(static_cast<std::size_t>(blanks), ' '), false);
  column_ += blanks;
}

void VisibleText::appendCharacter(std::u16string_view character) {
  const DecodedScalar first = decodeUTF16(character, 0);
  const bool isAlone = first.length == character.size();
  if (!first.valid || (isAlone && needsStandIn(first.scalar))) {
    const std::string text = standInFor(first.valid ? first.scalar : char32_t{character.front()});
    column_ += characterCount(text);
    append(text, true);
    return;
  }
  column_ += columnsOf(character);
  append(utf8RepairingUTF16(character), false);
}

} // namespace velmar::host
