#include "VelmarPlatform/Coding/JSON/JSONTextWriter.h"

#include "VelmarPlatform/Coding/JSON/JSONScan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace velmar {
namespace {

/// More than any number takes.
constexpr std::size_t roomForNumber = 32;
constexpr std::size_t roomForEscape = 6;
constexpr std::size_t indent = 2;

/// The letter behind the backslash, or 0 where the escape needs a number.
constexpr char shortEscape(char letter) {
  switch (letter) {
  case '"':
  case '\\':
    return letter;
  case '\b':
    return 'b';
  case '\f':
    return 'f';
  case '\n':
    return 'n';
  case '\r':
    return 'r';
  case '\t':
    return 't';
  default:
    return 0;
  }
}

template <class Part>
Part loadPart(const char* from) {
  Part part = 0;
  std::memcpy(&part, from, sizeof part);
  return part;
}

/// Copies a text of 2 to 32 bytes that needs no escape to `to`, and gives its end there; null for
/// any other, with nothing of worth at `to`. Keys and words are such, and loads that overlap are
/// cheaper than a loop.
inline char* copyShort(std::string_view text, char* to) {
  const std::size_t size = text.size();
  const auto copied = [&]<class Part>(Part /*type*/) {
    const auto first = loadPart<Part>(text.data());
    const auto last = loadPart<Part>(text.data() + size - sizeof(Part));
    std::memcpy(to, &first, sizeof first);
    std::memcpy(to + size - sizeof(Part), &last, sizeof last);
    constexpr std::uint64_t everywhere = ~std::uint64_t{0} / std::numeric_limits<Part>::max();
    return detail::needsEscape(first * everywhere, last * everywhere) ? nullptr : to + size;
  };
  constexpr std::size_t word = sizeof(std::uint64_t);
  if (size > 4 * word || size < word / 4)
    return nullptr;
  if (size > 2 * word) {
    constexpr std::size_t block = 2 * word;
    const std::size_t last = size - block;
    const bool needsEscape =
        detail::needsEscape(loadPart<std::uint64_t>(text.data()),
                            loadPart<std::uint64_t>(text.data() + word)) ||
        detail::needsEscape(loadPart<std::uint64_t>(text.data() + last),
                            loadPart<std::uint64_t>(text.data() + last + word));
    std::memcpy(to, text.data(), block);
    std::memcpy(to + last, text.data() + last, block);
    return needsEscape ? nullptr : to + size;
  }
  if (size >= word)
    return copied(std::uint64_t{});
  return size >= word / 2 ? copied(std::uint32_t{}) : copied(std::uint16_t{});
}

} // namespace

JSONTextWriter::JSONTextWriter(std::string& text, JSONTextOptions options)
    : EncodingSink(options.sortedKeys), text_(text), options_(options), start_(text.size()),
      at_(text.data() + text.size()), end_(at_) {}

JSONTextWriter::~JSONTextWriter() {
  if (!isFinished_)
    text_.resize(start_);
}

void JSONTextWriter::nil() {
  putLiteral("null");
}

void JSONTextWriter::boolean(bool value) {
  putLiteral(value ? "true" : "false");
}

void JSONTextWriter::integer(std::int64_t value) {
  beginValue(roomForNumber);
  putInteger(value);
  endValue();
}

void JSONTextWriter::integers(std::span<const std::int64_t> values) {
  if (options_.pretty)
    return EncodingSink::integers(values);
  beginArray();
  for (const std::int64_t value : values) {
    reserve(roomForNumber);
    putInteger(value);
    put(',');
  }
  if (!values.empty())
    --at_;
  endArray();
}

void JSONTextWriter::unsignedInteger(std::uint64_t value) {
  beginValue(roomForNumber);
  putDigits(value);
  endValue();
}

void JSONTextWriter::floating(double value) {
  putFloating(value);
}

void JSONTextWriter::floating(float value) {
  putFloating(value);
}

void JSONTextWriter::text(std::string_view value) {
  beginValue(0);
  putQuoted(value);
  endValue();
}

void JSONTextWriter::beginArray() {
  beginContainer('[');
}

void JSONTextWriter::endArray() {
  endContainer(']');
}

void JSONTextWriter::beginTable() {
  beginContainer('{');
  if (options_.sortedKeys)
    sorter_.beginTable(written() - 1);
}

void JSONTextWriter::key(std::string_view key) {
  if (options_.pretty || options_.sortedKeys) [[unlikely]]
    return putKeyInLayout(key);
  constexpr std::size_t roomBesideKey = 4; // a comma, the quotes, a colon
  reserve(key.size() + roomBesideKey);
  char* at = at_;
  if (!isFirst_)
    *at++ = ',';
  *at++ = '"';
  if (char* const behind = copyShort(key, at)) [[likely]] {
    *behind = '"';
    behind[1] = ':';
    at_ = behind + 2;
  } else {
    at_ = at;
    putEscaped(key);
    put('"');
    reserve(1);
    put(':');
  }
  isInPlace_ = true;
}

void JSONTextWriter::putKeyInLayout(std::string_view key) {
  if (options_.sortedKeys && !isFirst_)
    sorter_.endMember(written());
  putSeparator();
  const std::size_t start = written();
  putQuoted(key);
  if (options_.sortedKeys)
    sorter_.beginMember({text_.data(), written()}, start, key);
  constexpr std::size_t roomForColon = 2;
  reserve(roomForColon);
  put(':');
  if (options_.pretty)
    put(' ');
  isInPlace_ = true;
}

void JSONTextWriter::endTable() {
  if (options_.sortedKeys && !isFirst_) [[unlikely]]
    sorter_.endMember(written());
  endContainer('}');
}

inline void JSONTextWriter::beginContainer(char bracket) {
  beginValue(1);
  put(bracket);
  ++depth_;
  isFirst_ = true;
}

inline void JSONTextWriter::endContainer(char bracket) {
  --depth_;
  if (options_.pretty && !isFirst_) [[unlikely]]
    putNewLine();
  reserve(1);
  put(bracket);
  if (bracket == '}' && options_.sortedKeys) [[unlikely]]
    sorter_.endTable(text_.data(), written());
  endValue();
}

/// Whatever belongs in front of a value, and then room for so many letters.
inline void JSONTextWriter::beginValue(std::size_t room) {
  if (!isInPlace_)
    putSeparator();
  isInPlace_ = false;
  reserve(room);
}

inline void JSONTextWriter::endValue() {
  isFirst_ = false;
  if (depth_ == 0)
    finish();
}

void JSONTextWriter::finish() {
  text_.resize(written());
  isFinished_ = true;
}

void JSONTextWriter::putSeparator() {
  if (!isFirst_) {
    reserve(1);
    put(',');
  }
  if (options_.pretty)
    putNewLine();
}

void JSONTextWriter::putNewLine() {
  reserve(1 + depth_ * indent);
  put('\n');
  at_ = std::fill_n(at_, depth_ * indent, ' ');
}

void JSONTextWriter::putLiteral(std::string_view letters) {
  beginValue(letters.size());
  at_ = std::ranges::copy(letters, at_).out;
  endValue();
}

inline void JSONTextWriter::putDigits(std::uint64_t value) {
  constexpr std::uint64_t manyDigits = 1000;
  if (value >= manyDigits)
    return putManyDigits(value);
  char* at = at_;
  if (value >= 100)
    *at++ = static_cast<char>('0' + value / 100);
  if (value >= 10)
    *at++ = static_cast<char>('0' + value / 10 % 10);
  *at++ = static_cast<char>('0' + value % 10);
  at_ = at;
}

[[gnu::noinline]] void JSONTextWriter::putManyDigits(std::uint64_t value) {
  at_ = std::to_chars(at_, at_ + roomForNumber, value).ptr;
}

inline void JSONTextWriter::putInteger(std::int64_t value) {
  if (value >= 0)
    return putDigits(static_cast<std::uint64_t>(value));
  put('-');
  putDigits(-static_cast<std::uint64_t>(value)); // the lowest has no positive of its own
}

template <class Floating>
void JSONTextWriter::putFloating(Floating value) {
  if (!std::isfinite(value))
    throw EncodingFailure{"JSON has no number for NaN and the infinities."};
  // Else 100000 would be written as 1e+05, which readers of whole numbers may not take.
  constexpr auto wholeBelow = static_cast<Floating>(1e21);
  const bool isWhole = std::trunc(value) == value && std::abs(value) < wholeBelow;
  beginValue(roomForNumber);
  char* const end = at_ + roomForNumber;
  at_ = isWhole ? std::to_chars(at_, end, value, std::chars_format::fixed).ptr
                : std::to_chars(at_, end, value).ptr;
  endValue();
}

void JSONTextWriter::putQuoted(std::string_view value) {
  constexpr std::size_t quotes = 2;
  reserve(value.size() + quotes);
  put('"');
  if (char* const behind = copyShort(value, at_)) [[likely]]
    at_ = behind;
  else
    putEscaped(value);
  put('"');
}

/// The inside of a string, for which there is room if nothing must be escaped.
void JSONTextWriter::putEscaped(std::string_view value) {
  const char* at = value.data();
  const char* const end = at + value.size();
  for (;;) {
    const char* const plain = at;
    at = detail::skipUnescaped(at, end);
    at_ = std::copy(plain, at, at_);
    if (at == end)
      return;
    reserve(static_cast<std::size_t>(end - at) + roomForEscape + 1);
    putEscape(*at++);
  }
}

void JSONTextWriter::putEscape(char letter) {
  constexpr std::string_view digits = "0123456789abcdef";
  put('\\');
  if (const char behind = shortEscape(letter)) {
    put(behind);
    return;
  }
  at_ = std::ranges::copy(std::string_view("u00"), at_).out;
  put(digits[static_cast<unsigned char>(letter) >> 4]);
  put(digits[static_cast<unsigned char>(letter) & 0xF]);
}

inline void JSONTextWriter::reserve(std::size_t room) {
  if (static_cast<std::size_t>(end_ - at_) < room) [[unlikely]]
    grow(room);
}

void JSONTextWriter::grow(std::size_t room) {
  constexpr std::size_t atLeast = 128;
  const std::size_t size = written();
  text_.resize(std::max(size + room, 2 * size + atLeast));
  at_ = text_.data() + size;
  end_ = text_.data() + text_.size();
}

std::size_t JSONTextWriter::written() const {
  return static_cast<std::size_t>(at_ - text_.data());
}

} // namespace velmar
