// Taking in a file: bytes that are probably UTF-8 become the UTF-16 of a document.

#include "VelmarPlatform/Unicode/UTF.h"

#include "bench/Pair.h"

#include <unicode/ustring.h>

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
const std::string mixed =
    repeated("// «größer» → 日本語のコメント 😀\nfor (int index = 0;;) total += prices[index];\n");

/// The least for text that is ASCII alone: each byte is widened.
void widen(bench::State& state) {
  for (auto _ : state) {
    std::u16string result(ascii.size(), u'\0');
    for (std::size_t index = 0; index < ascii.size(); ++index)
      result[index] = static_cast<unsigned char>(ascii[index]);
    benchmark::DoNotOptimize(result.data());
  }
}

void convertWithICU(const std::string& text) {
  std::u16string result(text.size(), u'\0');
  std::int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8WithSub(result.data(), static_cast<std::int32_t>(result.size()), &length,
                       text.data(), static_cast<std::int32_t>(text.size()), 0xFFFD, nullptr,
                       &status);
  result.resize(static_cast<std::size_t>(length));
  benchmark::DoNotOptimize(result.data());
}

void mixedWithICU(bench::State& state) {
  for (auto _ : state)
    convertWithICU(mixed);
}

void asciiWithOurs(bench::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(utf16RepairingUTF8(ascii));
}

void mixedWithOurs(bench::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(utf16RepairingUTF8(mixed));
}

VELMAR_PAIR("utf/utf16RepairingUTF8/ascii", 2.5, widen, asciiWithOurs);
VELMAR_PAIR("utf/utf16RepairingUTF8/mixed", 2, mixedWithICU, mixedWithOurs);

void checkValidity(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(isValidUTF8(mixed));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(mixed.size()));
}
BENCHMARK(checkValidity)->Name("utf/isValidUTF8/mixed");

} // namespace

} // namespace velmar
