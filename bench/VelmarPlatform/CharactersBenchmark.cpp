// Walking a text character by character, against one run of ICU's break iterator over the same
// bytes.

#include "VelmarPlatform/Unicode/Characters.h"

#include "bench/Pair.h"

#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace velmar {

namespace {

constexpr std::size_t textSize = 1'000'000;

/// `sample` over and over, a megabyte of it.
std::string repeated(std::string_view sample) {
  std::string text;
  while (text.size() < textSize)
    text += sample;
  return text;
}

const std::string ascii =
    repeated("for (int index = 0; index < count; ++index) total += values[index];\n");
const std::string words = repeated("Größe ändern, привет мир, 日本語のコメント, 한국어 주석\n");
const std::string clusters = repeated(
    "👩‍👩‍👧‍👦🇩🇪🇫🇷 नमस्ते 👍🏽❤️ e\u0301a\u0308\n");

void countWithICU(const std::string& text) {
  UErrorCode status = U_ZERO_ERROR;
  UText source = UTEXT_INITIALIZER;
  utext_openUTF8(&source, text.data(), static_cast<std::int64_t>(text.size()), &status);
  UBreakIterator* const iterator = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
  ubrk_setUText(iterator, &source, &status);
  std::int64_t characters = 0;
  while (ubrk_next(iterator) != UBRK_DONE)
    ++characters;
  benchmark::DoNotOptimize(characters);
  ubrk_close(iterator);
  utext_close(&source);
}

void asciiWithICU(bench::State& state) {
  for (auto _ : state)
    countWithICU(ascii);
}
void asciiWithOurs(bench::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(characterCount(ascii));
}
void wordsWithICU(bench::State& state) {
  for (auto _ : state)
    countWithICU(words);
}
void wordsWithOurs(bench::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(characterCount(words));
}
void clustersWithICU(bench::State& state) {
  for (auto _ : state)
    countWithICU(clusters);
}
void clustersWithOurs(bench::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(characterCount(clusters));
}

VELMAR_PAIR("characters/count/ascii", 0.1, asciiWithICU, asciiWithOurs);
VELMAR_PAIR("characters/count/words", 1, wordsWithICU, wordsWithOurs);
VELMAR_PAIR("characters/count/clusters", 0, clustersWithICU, clustersWithOurs);

} // namespace

} // namespace velmar
