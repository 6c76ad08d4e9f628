// The conversions between UTF-8 and UTF-16 on any bytes at all: what they repair is valid, what
// they accept comes back as it was, and they agree with each other on which is which.

#include "VelmarPlatform/Unicode/UTF.h"

#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

using namespace velmar;

namespace {

/// How often U+FFFD is written out in `text`. Its first byte can't be inside another character, so
/// a search finds it.
std::size_t replacementCharactersIn(std::string_view text) {
  constexpr std::string_view encoded = "\xEF\xBF\xBD";
  std::size_t count = 0;
  for (std::size_t at = text.find(encoded); at != text.npos; at = text.find(encoded, at + 1))
    ++count;
  return count;
}

void checkFromUTF8(std::string_view bytes) {
  std::size_t repairs = 0;
  const std::u16string text = utf16RepairingUTF8(bytes, &repairs);
  precondition(isValidUTF16(text), "Repaired UTF-16 is valid.");
  const auto replacements = std::ranges::count(text, u'\uFFFD');
  precondition(static_cast<std::size_t>(replacements) == repairs + replacementCharactersIn(bytes),
               "Each repair puts in one U+FFFD.");

  const std::string repaired = repairedUTF8(bytes);
  precondition(isValidUTF8(repaired), "Repaired UTF-8 is valid.");
  precondition(utf8FromUTF16(text) == repaired, "Both encodings are repaired alike.");

  const bool valid = isValidUTF8(bytes);
  precondition(valid == (repairs == 0), "Only what is invalid is repaired.");
  precondition(utf16FromUTF8(bytes) == (valid ? std::optional(text) : std::nullopt),
               "The checked form gives what the repairing one does, or nothing.");
  precondition(!valid || repaired == bytes, "Valid text comes back as it was.");
}

void checkFromUTF16(std::u16string_view units) {
  const std::string text = utf8RepairingUTF16(units);
  precondition(isValidUTF8(text), "Repaired UTF-8 is valid.");
  const bool valid = isValidUTF16(units);
  precondition(utf8FromUTF16(units) == (valid ? std::optional(text) : std::nullopt),
               "The checked form gives what the repairing one does, or nothing.");
  // A lone surrogate becomes one U+FFFD, so the length stays in any case.
  const std::u16string back = utf16FromUTF8(text).value_or(std::u16string());
  precondition(back.size() == units.size(), "No unit is lost.");
  precondition(!valid || back == units, "Valid text comes back as it was.");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  checkFromUTF8(bytes);

  std::u16string units(size / sizeof(char16_t), u'\0');
  std::memcpy(units.data(), data, units.size() * sizeof(char16_t));
  checkFromUTF16(units);
  return 0;
}
