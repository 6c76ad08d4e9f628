#include "VelmarPlatform/Unicode/UTF.h"

#include <cstring>

namespace velmar {

namespace {

constexpr char32_t replacement = 0xFFFD;

/// How many leading bytes from `index` on are ASCII, eight at a time.
std::size_t asciiRun(std::string_view text, std::size_t index) noexcept {
  const std::size_t start = index;
  while (index + 8 <= text.size()) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + index, 8);
    if (word & 0x8080808080808080ULL)
      break;
    index += 8;
  }
  while (index < text.size() && static_cast<unsigned char>(text[index]) < 0x80)
    ++index;
  return index - start;
}

void appendUTF16(std::u16string& text, char32_t scalar) {
  if (scalar < 0x10000) {
    text.push_back(static_cast<char16_t>(scalar));
  } else {
    text.push_back(static_cast<char16_t>(0xD800 + ((scalar - 0x10000) >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 + ((scalar - 0x10000) & 0x3FF)));
  }
}

} // namespace

DecodedScalar decodeUTF8(std::string_view text, std::size_t index) noexcept {
  const auto byteAt = [&](std::size_t offset) -> unsigned {
    const std::size_t at = index + offset;
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
  };
  const unsigned lead = byteAt(0);
  if (lead < 0x80)
    return {lead, 1, true};
  // The second byte's bounds depend on the lead, which rules out overlong forms, surrogates and too
  // large values.
  unsigned length = 0;
  unsigned low = 0x80;
  unsigned high = 0xBF;
  char32_t scalar = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
    scalar = lead & 0x1F;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    scalar = lead & 0x0F;
    if (lead == 0xE0)
      low = 0xA0;
    if (lead == 0xED)
      high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    scalar = lead & 0x07;
    if (lead == 0xF0)
      low = 0x90;
    if (lead == 0xF4)
      high = 0x8F;
  } else {
    return {replacement, 1, false};
  }
  for (unsigned offset = 1; offset < length; ++offset) {
    const unsigned byte = byteAt(offset);
    if (byte < low || byte > high)
      return {replacement, static_cast<std::uint8_t>(offset), false};
    scalar = (scalar << 6) | (byte & 0x3F);
    low = 0x80;
    high = 0xBF;
  }
  return {scalar, static_cast<std::uint8_t>(length), true};
}

DecodedScalar decodeUTF16(std::u16string_view text, std::size_t index) noexcept {
  const char16_t unit = text[index];
  if (!isSurrogate(unit))
    return {unit, 1, true};
  if (isLeadSurrogate(unit) && index + 1 < text.size() && isTrailSurrogate(text[index + 1]))
    return {scalarOfPair(unit, text[index + 1]), 2, true};
  return {replacement, 1, false};
}

bool isValidUTF8(std::string_view text) noexcept {
  std::size_t index = 0;
  while (true) {
    index += asciiRun(text, index);
    if (index == text.size())
      return true;
    const DecodedScalar decoded = decodeUTF8(text, index);
    if (!decoded.valid)
      return false;
    index += decoded.length;
  }
}

bool isValidUTF16(std::u16string_view text) noexcept {
  for (std::size_t index = 0; index < text.size();) {
    if (!isSurrogate(text[index])) {
      ++index;
      continue;
    }
    const DecodedScalar decoded = decodeUTF16(text, index);
    if (!decoded.valid)
      return false;
    index += decoded.length;
  }
  return true;
}

std::u16string utf16RepairingUTF8(std::string_view text, std::size_t* repairs) {
  std::u16string result;
  result.reserve(text.size());
  std::size_t repaired = 0;
  std::size_t index = 0;
  while (true) {
    const std::size_t run = asciiRun(text, index);
    const std::size_t start = result.size();
    result.resize(start + run);
    for (std::size_t offset = 0; offset < run; ++offset)
      result[start + offset] =
          static_cast<char16_t>(static_cast<unsigned char>(text[index + offset]));
    index += run;
    if (index == text.size())
      break;
    const DecodedScalar decoded = decodeUTF8(text, index);
    appendUTF16(result, decoded.scalar);
    repaired += decoded.valid ? 0 : 1;
    index += decoded.length;
  }
  if (repairs)
    *repairs = repaired;
  return result;
}

std::optional<std::u16string> utf16FromUTF8(std::string_view text) {
  std::size_t repairs = 0;
  std::u16string result = utf16RepairingUTF8(text, &repairs);
  if (repairs != 0)
    return std::nullopt;
  return result;
}

void appendUTF8(std::string& text, char32_t scalar) {
  if (scalar > 0x10FFFF || (scalar >= 0xD800 && scalar <= 0xDFFF))
    scalar = replacement;
  const auto push = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (scalar < 0x80) {
    push(scalar);
  } else if (scalar < 0x800) {
    push(0xC0 | (scalar >> 6));
    push(0x80 | (scalar & 0x3F));
  } else if (scalar < 0x10000) {
    push(0xE0 | (scalar >> 12));
    push(0x80 | ((scalar >> 6) & 0x3F));
    push(0x80 | (scalar & 0x3F));
  } else {
    push(0xF0 | (scalar >> 18));
    push(0x80 | ((scalar >> 12) & 0x3F));
    push(0x80 | ((scalar >> 6) & 0x3F));
    push(0x80 | (scalar & 0x3F));
  }
}

std::string utf8FromScalar(char32_t scalar) {
  std::string text;
  appendUTF8(text, scalar);
  return text;
}

std::string utf8RepairingUTF16(std::u16string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t index = 0; index < text.size();) {
    const char16_t unit = text[index];
    if (unit < 0x80) {
      result.push_back(static_cast<char>(unit));
      ++index;
      continue;
    }
    const DecodedScalar decoded = decodeUTF16(text, index);
    appendUTF8(result, decoded.scalar);
    index += decoded.length;
  }
  return result;
}

std::optional<std::string> utf8FromUTF16(std::u16string_view text) {
  if (!isValidUTF16(text))
    return std::nullopt;
  return utf8RepairingUTF16(text);
}

std::string repairedUTF8(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  std::size_t index = 0;
  while (true) {
    const std::size_t run = asciiRun(text, index);
    result.append(text, index, run);
    index += run;
    if (index == text.size())
      return result;
    const DecodedScalar decoded = decodeUTF8(text, index);
    appendUTF8(result, decoded.scalar);
    index += decoded.length;
  }
}

} // namespace velmar
