#include "VelmarPlatform/Coding/JSON/JSONTextWriter.h"

#include "VelmarPlatform/Coding/JSON/JSONScan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

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

} // namespace

JSONTextWriter::JSONTextWriter(std::string& text, JSONTextOptions options)
    : text_(text), options_(options), start_(text.size()), at_(text.data() + text.size()),
      end_(at_) {}

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
  if (options_.sortedKeys && !isFirst_)
    sorter_.endMember(written());
  endContainer('}');
}

void JSONTextWriter::beginContainer(char bracket) {
  beginValue(1);
  put(bracket);
  ++depth_;
  isFirst_ = true;
}

void JSONTextWriter::endContainer(char bracket) {
  --depth_;
  if (options_.pretty && !isFirst_)
    putNewLine();
  reserve(1);
  put(bracket);
  if (bracket == '}' && options_.sortedKeys)
    sorter_.endTable(text_.data(), written());
  endValue();
}

/// Whatever belongs in front of a value, and then room for so many letters.
void JSONTextWriter::beginValue(std::size_t room) {
  if (!isInPlace_)
    putSeparator();
  isInPlace_ = false;
  reserve(room);
}

void JSONTextWriter::endValue() {
  isFirst_ = false;
  if (depth_ != 0)
    return;
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

void JSONTextWriter::putDigits(std::uint64_t value) {
  constexpr std::uint64_t twoDigits = 10;
  constexpr std::uint64_t manyDigits = 100;
  if (value >= manyDigits) {
    at_ = std::to_chars(at_, at_ + roomForNumber, value).ptr;
    return;
  }
  if (value >= twoDigits)
    put(static_cast<char>('0' + value / 10));
  put(static_cast<char>('0' + value % 10));
}

void JSONTextWriter::putInteger(std::int64_t value) {
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
  if (!putShort(value))
    putEscaped(value);
  put('"');
}

/// Puts a text of 4 to 16 bytes that needs no escape; any other is left alone. Keys are such, and
/// two loads that overlap are cheaper than a loop.
bool JSONTextWriter::putShort(std::string_view value) {
  const auto copied = [&]<class Half>(Half /*type*/) {
    Half first = 0;
    Half last = 0;
    const std::size_t lastStart = value.size() - sizeof(Half);
    std::memcpy(&first, value.data(), sizeof(Half));
    std::memcpy(&last, value.data() + lastStart, sizeof(Half));
    if constexpr (sizeof(Half) == sizeof(std::uint32_t)) {
      if (detail::needsEscape(std::uint64_t{first} << 32 | last))
        return false;
    } else if (detail::needsEscape(first) || detail::needsEscape(last)) {
      return false;
    }
    std::memcpy(at_, &first, sizeof(Half));
    std::memcpy(at_ + lastStart, &last, sizeof(Half));
    at_ += value.size();
    return true;
  };
  if (value.size() > 2 * sizeof(std::uint64_t) || value.size() < sizeof(std::uint32_t))
    return false;
  return value.size() >= sizeof(std::uint64_t) ? copied(std::uint64_t{}) : copied(std::uint32_t{});
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

void JSONTextWriter::reserve(std::size_t room) {
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
