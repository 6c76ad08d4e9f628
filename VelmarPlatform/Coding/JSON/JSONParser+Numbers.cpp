#include "VelmarPlatform/Coding/JSON/JSONParser.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <optional>
#include <system_error>

namespace velmar::detail {
namespace {

/// Ten to the power of the index: those that a double holds exactly.
constexpr std::array exactPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t greatestExactInteger = std::uint64_t{1} << 53;

bool isDigit(char letter) {
  return letter >= '0' && letter <= '9';
}

/// A whole number of one to three digits without a sign, as most are.
struct ShortInteger {
  std::uint32_t value = 0;
  int length = 0; ///< 0 if there is none.
};

/// Reads three bytes at `at` at most. What is behind the number is for the caller to look at.
inline ShortInteger shortIntegerAt(const char* at) {
  const auto digitAt = [at](int index) { return static_cast<std::uint32_t>(at[index] - '0'); };
  const std::uint32_t first = digitAt(0);
  const std::uint32_t second = digitAt(1);
  if (first > 9)
    return {};
  if (second > 9)
    return {first, 1};
  if (first == 0)
    return {};
  const std::uint32_t third = digitAt(2);
  const std::uint32_t both = first * 10 + second;
  return third > 9 ? ShortInteger{both, 2} : ShortInteger{both * 10 + third, 3};
}

/// A number of decimal digits as `mantissa` times ten to `exponent`.
struct Decimal {
  std::uint64_t mantissa = 0;
  std::int64_t exponent = 0;
  int digits = 0; ///< Of the mantissa, which has the first 18 that count.
  bool isExact = true;

  void add(char digit, bool isFraction) {
    constexpr int mostDigits = 18;
    if (digits == mostDigits) {
      isExact = isExact && digit == '0';
      exponent += isFraction ? 0 : 1;
      return;
    }
    mantissa = mantissa * 10 + static_cast<std::uint64_t>(digit - '0');
    digits += mantissa != 0 ? 1 : 0;
    exponent -= isFraction ? 1 : 0;
  }
};

/// Both factors are exact, so the result is rounded once: to the nearest double, as it must be.
std::optional<double> quickDouble(const Decimal& decimal) {
  constexpr auto mostPower = static_cast<std::int64_t>(exactPowersOfTen.size()) - 1;
  if (!decimal.isExact || decimal.mantissa > greatestExactInteger || decimal.exponent > mostPower ||
      decimal.exponent < -mostPower)
    return std::nullopt;
  const auto mantissa = static_cast<double>(decimal.mantissa);
  if (decimal.exponent < 0)
    return mantissa / exactPowersOfTen[static_cast<std::size_t>(-decimal.exponent)];
  return mantissa * exactPowersOfTen[static_cast<std::size_t>(decimal.exponent)];
}

/// The digits of an exponent, kept within what no text can make up for by its length.
std::int64_t exponentOf(const char* at, const char* end) {
  constexpr std::int64_t enough = std::int64_t{1} << 40;
  std::int64_t exponent = 0;
  for (; at != end; ++at)
    exponent = std::min(exponent * 10 + (*at - '0'), enough);
  return exponent;
}

} // namespace

/// A number, and in an array those behind it as far as nothing but a comma stands in between: long
/// arrays of numbers are what takes longest.
void JSONParser::readNumbers() {
  if (innermost_->isTable || innermost_ == open_.data())
    readNumber();
  else
    readNumbersInArray();
}

void JSONParser::readNumbersInArray() {
  for (;;) {
    readShortIntegers();
    readNumber();
    if (!isCommaBeforeDigit())
      return;
    ++innermost_->count;
    ++at_;
  }
}

/// Reads the elements of an array as long as they are short integers with a comma and one more
/// digit behind them: the last number is left.
inline void JSONParser::readShortIntegers() {
  constexpr std::ptrdiff_t mostBytes = 5; // three digits, a comma, a digit
  const char* at = at_;
  JSONWord* const first = next_;
  JSONWord* next = first;
  while (end_ - at >= mostBytes) {
    const auto [value, length] = shortIntegerAt(at);
    if (length == 0 || at[length] != ',' || !isDigit(at[length + 1]))
      break;
    *next++ = makeWord(JSONTag::integer, value);
    at += length + 1;
  }
  innermost_->count += static_cast<std::uint32_t>(next - first);
  next_ = next;
  at_ = at;
}

bool JSONParser::isCommaBeforeDigit() const {
  return end_ - at_ >= 2 && at_[0] == ',' && isDigit(at_[1]);
}

inline void JSONParser::readNumber() {
  constexpr std::ptrdiff_t mostBytes = 4; // three digits and what ends them
  if (end_ - at_ >= mostBytes) [[likely]] {
    const auto [value, length] = shortIntegerAt(at_);
    const char behind = at_[length];
    if (length != 0 && (behind == ',' || behind == '}' || behind == ']')) [[likely]] {
      at_ += length;
      *next_++ = makeWord(JSONTag::integer, value);
      return;
    }
  }
  readAnyNumber();
}

void JSONParser::readAnyNumber() {
  constexpr std::ptrdiff_t mostDigits = 18;
  const char* at = at_;
  const bool isNegative = peek(at) == '-';
  at += isNegative ? 1 : 0;
  const char* const digits = at;
  std::int64_t value = 0;
  const char* const limit = digits + std::min(mostDigits, end_ - digits);
  while (at != limit && isDigit(*at))
    value = value * 10 + (*at++ - '0');
  const char behind = peek(at);
  if (at == digits)
    fail(isNegative ? "Expected a digit behind “-”" : "Expected a value", at);
  if (*digits == '0' && at - digits > 1)
    fail("Expected no more digits behind a number's leading 0", digits + 1);
  if (isDigit(behind) || behind == '.' || (behind | 0x20) == 'e')
    return readLongOrFractional(digits);
  at_ = at;
  if (isNegative && value == 0)
    *next_++ = makeWord(JSONTag::minusZero);
  else
    addInteger(isNegative ? -value : value);
}

/// What isn't a whole number of at most 18 digits. `digits` is behind the sign.
void JSONParser::readLongOrFractional(const char* digits) {
  const char* const start = at_;
  const bool isNegative = digits != start;
  Decimal decimal;
  const char* at = digits;
  for (; isDigit(peek(at)); ++at)
    decimal.add(*at, false);
  const bool isWhole = peek(at) != '.' && (peek(at) | 0x20) != 'e';
  if (peek(at) == '.') {
    const char* const fraction = ++at;
    for (; isDigit(peek(at)); ++at)
      decimal.add(*at, true);
    if (at == fraction)
      fail("Expected a digit behind a number's point", at);
  }
  if ((peek(at) | 0x20) == 'e') {
    ++at;
    const bool isSmall = peek(at) == '-';
    at += isSmall || peek(at) == '+' ? 1 : 0;
    const char* const exponent = at;
    at = skipDigits(at);
    if (at == exponent)
      fail("Expected a digit in a number's exponent", at);
    decimal.exponent += isSmall ? -exponentOf(exponent, at) : exponentOf(exponent, at);
  }
  at_ = at;

  if (isWhole) {
    std::int64_t value = 0;
    if (std::from_chars(start, at, value).ec == std::errc())
      return addInteger(value);
    std::uint64_t large = 0;
    if (!isNegative && std::from_chars(start, at, large).ec == std::errc())
      return addWide(JSONTag::unsignedInteger, large);
  }
  if (const auto quick = quickDouble(decimal))
    return addFloating(isNegative ? -*quick : *quick);
  double value = 0;
  if (std::from_chars(start, at, value).ec == std::errc::result_out_of_range) {
    // Told of both ends of the range; below its lower one numbers are zero.
    if (decimal.exponent + decimal.digits > 0)
      fail("Expected a number that isn't beyond the range of a double", start);
    value = isNegative ? -0.0 : 0.0;
  }
  addFloating(value);
}

const char* JSONParser::skipDigits(const char* at) {
  while (isDigit(peek(at)))
    ++at;
  return at;
}

void JSONParser::addInteger(std::int64_t value) {
  if (value >= -greatestInteger && value <= greatestInteger)
    *next_++ = makeIntegerWord(value);
  else
    addWide(JSONTag::wideInteger, static_cast<JSONWord>(value));
}

void JSONParser::addWide(JSONTag tag, JSONWord value) {
  *next_++ = makeWord(tag);
  *next_++ = value;
}

void JSONParser::addFloating(double value) {
  addWide(JSONTag::floating, std::bit_cast<JSONWord>(value));
}

} // namespace velmar::detail
