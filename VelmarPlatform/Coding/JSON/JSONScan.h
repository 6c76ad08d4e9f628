// Steps over what most of a JSON text consists of, 16 bytes at a time where the processor can:
// white space, and the inside of strings. The parser's and the writer's own.
#pragma once

#include <bit>
#include <cstdint>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace velmar::detail {

#if defined(__SSE2__)

inline constexpr int blockSize = 16;

inline __m128i loadBlock(const char* at) noexcept {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}
inline __m128i equalTo(__m128i block, char letter) noexcept {
  return _mm_cmpeq_epi8(block, _mm_set1_epi8(letter));
}
inline std::uint32_t maskOf(__m128i block) noexcept {
  return static_cast<std::uint32_t>(_mm_movemask_epi8(block));
}

/// A bit for each byte that must be written as an escape.
inline std::uint32_t maskOfEscaped(__m128i block) noexcept {
  constexpr char lastControl = 0x1F;
  const __m128i control = _mm_cmpeq_epi8(_mm_min_epu8(block, _mm_set1_epi8(lastControl)), block);
  return maskOf(_mm_or_si128(control, _mm_or_si128(equalTo(block, '"'), equalTo(block, '\\'))));
}

#endif

constexpr bool isJSONSpace(char letter) noexcept {
  return letter == ' ' || letter == '\n' || letter == '\r' || letter == '\t';
}

/// As skipJSONSpace where there may be some. Texts of machines have none, so this stays out of the
/// way of what calls it.
[[gnu::noinline]] inline const char* skipSomeJSONSpace(const char* at, const char* end) noexcept {
#if defined(__SSE2__)
  constexpr std::uint32_t allOfThem = 0xFFFF;
  while (end - at >= blockSize) {
    const __m128i block = loadBlock(at);
    const __m128i space = _mm_or_si128(_mm_or_si128(equalTo(block, ' '), equalTo(block, '\n')),
                                       _mm_or_si128(equalTo(block, '\r'), equalTo(block, '\t')));
    const std::uint32_t others = maskOf(space) ^ allOfThem;
    if (others != 0)
      return at + std::countr_zero(others);
    at += blockSize;
  }
#endif
  while (at != end && isJSONSpace(*at))
    ++at;
  return at;
}

/// From `at` on, the first byte that isn't white space, or `end`.
inline const char* skipJSONSpace(const char* at, const char* end) noexcept {
  constexpr unsigned char blank = ' ';
  if (at == end || static_cast<unsigned char>(*at) > blank) [[likely]]
    return at;
  return skipSomeJSONSpace(at, end);
}

constexpr bool isPlainASCII(char letter) noexcept {
  constexpr char firstPlain = ' ';
  return static_cast<signed char>(letter) >= firstPlain && letter != '"' && letter != '\\';
}

#if defined(__SSE2__)

/// A bit for each byte for which isPlainASCII is false.
inline std::uint32_t maskOfUnplain(__m128i block) noexcept {
  constexpr char firstPlain = ' ';
  // Signed, so that bytes above 0x7F are below a blank, too.
  const __m128i low = _mm_cmplt_epi8(block, _mm_set1_epi8(firstPlain));
  return maskOf(_mm_or_si128(low, _mm_or_si128(equalTo(block, '"'), equalTo(block, '\\'))));
}

#endif

/// As skipPlainASCII, however long the text is.
[[gnu::noinline]] inline const char* skipMuchPlainASCII(const char* at, const char* end) noexcept {
#if defined(__SSE2__)
  while (end - at >= blockSize) {
    const std::uint32_t others = maskOfUnplain(loadBlock(at));
    if (others != 0)
      return at + std::countr_zero(others);
    at += blockSize;
  }
#endif
  while (at != end && isPlainASCII(*at))
    ++at;
  return at;
}

/// From `at` on, the first byte of a string's inside that isn't plain ASCII: a quote, a backslash,
/// a control character or a byte above 0x7F; or `end`.
inline const char* skipPlainASCII(const char* at, const char* end) noexcept {
#if defined(__SSE2__)
  // Most texts are keys and end in the first block.
  if (end - at >= blockSize) [[likely]] {
    const std::uint32_t others = maskOfUnplain(loadBlock(at));
    if (others != 0) [[likely]]
      return at + std::countr_zero(others);
    at += blockSize;
  }
#endif
  return skipMuchPlainASCII(at, end);
}

/// From `at` on, the first byte that must be written as an escape, or `end`.
inline const char* skipUnescaped(const char* at, const char* end) noexcept {
  constexpr char lastControl = 0x1F;
#if defined(__SSE2__)
  while (end - at >= blockSize) {
    const __m128i block = loadBlock(at);
    const std::uint32_t others = maskOfEscaped(block);
    if (others != 0)
      return at + std::countr_zero(others);
    at += blockSize;
  }
#endif
  while (at != end && static_cast<unsigned char>(*at) > lastControl && *at != '"' && *at != '\\')
    ++at;
  return at;
}

/// Whether one of sixteen bytes must be written as an escape.
inline bool needsEscape(std::uint64_t first, std::uint64_t last) noexcept {
#if defined(__SSE2__)
  return maskOfEscaped(_mm_set_epi64x(static_cast<std::int64_t>(last),
                                      static_cast<std::int64_t>(first))) != 0;
#else
  constexpr std::uint64_t ones = ~std::uint64_t{0} / 0xFF;
  constexpr std::uint64_t tops = ones << 7;
  const auto hasBelow = [](std::uint64_t eight, std::uint64_t limit) {
    return (eight - ones * limit) & ~eight & tops;
  };
  const auto found = [&](std::uint64_t eight) {
    return hasBelow(eight, ' ') | hasBelow(eight ^ ones * '"', 1) |
           hasBelow(eight ^ ones * '\\', 1);
  };
  return (found(first) | found(last)) != 0;
#endif
}

/// How many bytes the scalar of UTF-8 at `at` takes, or 0 if there is no valid one.
inline int lengthOfScalar(const char* at, const char* end) noexcept {
  const auto byte = [at](int index) { return static_cast<unsigned char>(at[index]); };
  const auto isTail = [&byte](int index) { return (byte(index) & 0xC0) == 0x80; };
  const auto room = end - at;
  const unsigned char lead = byte(0);
  if (lead < 0x80)
    return 1;
  if (lead < 0xE0)
    return lead >= 0xC2 && room >= 2 && isTail(1) ? 2 : 0;
  if (lead < 0xF0) {
    if (room < 3 || !isTail(1) || !isTail(2))
      return 0;
    const bool isOverlong = lead == 0xE0 && byte(1) < 0xA0;
    const bool isLoneSurrogate = lead == 0xED && byte(1) >= 0xA0;
    return isOverlong || isLoneSurrogate ? 0 : 3;
  }
  if (lead > 0xF4 || room < 4 || !isTail(1) || !isTail(2) || !isTail(3))
    return 0;
  const bool isOverlong = lead == 0xF0 && byte(1) < 0x90;
  const bool isBeyond = lead == 0xF4 && byte(1) >= 0x90;
  return isOverlong || isBeyond ? 0 : 4;
}

} // namespace velmar::detail
