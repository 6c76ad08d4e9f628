#include "VelmarPlatform/Coding/JSON/JSONParser.h"

#include "VelmarPlatform/Coding/DecodingError.h"
#include "VelmarPlatform/Coding/JSON/JSONScan.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace velmar::detail {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// "line 2, column 4", both from 1, for the end of `text`; columns count scalars.
std::string placeBehind(std::string_view text) {
  const auto line = std::ranges::count(text, '\n') + 1;
  const std::string_view lastLine = text.substr(text.rfind('\n') + 1); // npos + 1 is 0
  const auto column =
      std::ranges::count_if(lastLine, [](char byte) { return (byte & 0xC0) != 0x80; }) + 1;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

int valueOfHexDigit(char digit) {
  if (digit >= '0' && digit <= '9')
    return digit - '0';
  const char lower = static_cast<char>(digit | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

JSONParser::JSONParser(std::string_view text, JSONWord* words)
    : start_(text.data()), end_(text.data() + text.size()), at_(start_), words_(words),
      next_(words) {
  if (text.starts_with(byteOrderMark))
    at_ += byteOrderMark.size();
  open_[0] = {};
  innermost_ = open_.data();
}

std::size_t JSONParser::parse() {
  do {
    while (readValue()) {
    }
  } while (readBehindValue());
  skipSpace();
  if (at_ != end_)
    fail("Expected nothing more behind the value", at_);
  return static_cast<std::size_t>(next_ - words_);
}

/// Reads a value, or the start of an array or object. True if what follows is a value again: the
/// first one in what was opened.
inline bool JSONParser::readValue() {
  skipSpace();
  switch (peek(at_)) {
  case '"':
    readText();
    return false;
  case '[':
    return open(JSONTag::array, ']');
  case '{':
    return open(JSONTag::table, '}');
  case 't':
    readLiteral("true", JSONTag::yes);
    return false;
  case 'f':
    readLiteral("false", JSONTag::no);
    return false;
  case 'n':
    readLiteral("null", JSONTag::nil);
    return false;
  default:
    readNumbers();
    return false;
  }
}

/// Ends what ends behind a value. True if a value follows.
inline bool JSONParser::readBehindValue() {
  if (at_ == end_ || *at_ != ',' || innermost_ == open_.data())
    return readUpToValue();
  ++innermost_->count;
  ++at_;
  if (innermost_->isTable)
    readKey();
  return true;
}

/// As readBehindValue, for all that may stand there.
bool JSONParser::readUpToValue() {
  while (innermost_ != open_.data()) {
    ++innermost_->count;
    const bool isTable = innermost_->isTable;
    skipSpace();
    const char letter = peek(at_);
    if (letter == ',') {
      ++at_;
      if (isTable)
        readKey();
      return true;
    }
    if (letter != (isTable ? '}' : ']'))
      fail(isTable ? "Expected “,” or “}” behind an object's member"
                   : "Expected “,” or “]” behind an array's element",
           at_);
    ++at_;
    close();
  }
  return false;
}

/// Starts an array or object. False if it is empty, and thus ended.
inline bool JSONParser::open(JSONTag tag, char end) {
  if (innermost_ == &open_.back())
    fail("Arrays and objects may not be nested more than 512 deep", at_);
  ++at_;
  *++innermost_ = {next_, 0, tag == JSONTag::table};
  *next_++ = makeWord(tag);
  skipSpace();
  if (peek(at_) == end) {
    ++at_;
    close();
    return false;
  }
  if (tag == JSONTag::table)
    readKey();
  return true;
}

inline void JSONParser::close() {
  const Open& ended = *innermost_--;
  *ended.word = makeWord(tagOf(*ended.word), std::min<JSONWord>(ended.count, greatestLength),
                         static_cast<JSONWord>(next_ - words_));
}

inline void JSONParser::readKey() {
  if (peek(at_) != '"') [[unlikely]] {
    skipSpace();
    if (peek(at_) != '"')
      fail("Expected a key in double quotes", at_);
  }
  readText();
  if (peek(at_) != ':') [[unlikely]] {
    skipSpace();
    if (peek(at_) != ':')
      fail("Expected “:” behind a key", at_);
  }
  ++at_;
}

void JSONParser::readLiteral(std::string_view literal, JSONTag tag) {
  if (!std::string_view(at_, end_).starts_with(literal))
    fail("Expected a value; a word may be “true”, “false” or “null”", at_);
  at_ += literal.size();
  *next_++ = makeWord(tag);
}

void JSONParser::skipSpace() {
  at_ = skipJSONSpace(at_, end_);
}

inline void JSONParser::readText() {
  const char* const start = at_ + 1;
  const char* const at = skipPlainASCII(start, end_);
  const auto length = static_cast<JSONWord>(at - start);
  if (at == end_ || *at != '"' || length > greatestLength) [[unlikely]]
    return readUnusualText(start, at);
  at_ = at + 1;
  *next_++ = makeWord(JSONTag::text, length, static_cast<JSONWord>(start - start_));
}

/// What isn't short and plain ASCII, which it is from `start` to `at`.
void JSONParser::readUnusualText(const char* start, const char* at) {
  while (at != end_ && (*at & 0x80) != 0) {
    const int length = lengthOfScalar(at, end_);
    if (length == 0)
      failInText(at, start);
    at += length;
    if (at != end_ && (*at & 0x80) == 0)
      at = skipPlainASCII(at, end_);
  }
  if (peek(at) == '\\')
    return readTextWithEscapes(start, at);
  if (peek(at) != '"')
    failInText(at, start);
  at_ = at + 1;
  const auto length = static_cast<JSONWord>(at - start);
  const auto offset = static_cast<JSONWord>(start - start_);
  if (length <= greatestLength) {
    *next_++ = makeWord(JSONTag::text, length, offset);
  } else {
    *next_++ = makeWord(JSONTag::longText, offset);
    *next_++ = length;
  }
}

/// A copy is never longer than what it is made of, so it fits where the words may grow.
void JSONParser::readTextWithEscapes(const char* start, const char* escape) {
  char* const copyStart = reinterpret_cast<char*>(next_ + 1);
  char* copy = copyStart;
  const char* plain = start; // from here to `at` nothing is copied yet
  const char* at = escape;
  for (;;) {
    const char letter = peek(at);
    if (letter == '"')
      break;
    if (letter == '\\') {
      copy = std::copy(plain, at, copy);
      at = plain = readEscape(at, copy);
    } else if ((letter & 0x80) != 0 && lengthOfScalar(at, end_) != 0) {
      at += lengthOfScalar(at, end_);
    } else {
      failInText(at, start);
    }
    at = skipPlainASCII(at, end_);
  }
  copy = std::copy(plain, at, copy);
  at_ = at + 1;
  const auto length = static_cast<JSONWord>(copy - copyStart);
  *next_++ = makeWord(JSONTag::copiedText, length);
  next_ += wordsFor(length);
}

/// Puts what the escape at `at` stands for behind `copy`. Returns where it ends.
const char* JSONParser::readEscape(const char* at, char*& copy) {
  switch (peek(at + 1)) {
  case '"':
  case '\\':
  case '/':
    *copy++ = at[1];
    break;
  case 'b':
    *copy++ = '\b';
    break;
  case 'f':
    *copy++ = '\f';
    break;
  case 'n':
    *copy++ = '\n';
    break;
  case 'r':
    *copy++ = '\r';
    break;
  case 't':
    *copy++ = '\t';
    break;
  case 'u':
    return readUnicodeEscape(at, copy);
  default:
    fail("Expected one of “\"”, “\\”, “/”, “b”, “f”, “n”, “r”, “t”, “u” behind “\\” in a string",
         at + 1);
  }
  return at + 2;
}

const char* JSONParser::readUnicodeEscape(const char* at, char*& copy) {
  constexpr int escapeLength = 6;
  const auto unit = static_cast<char16_t>(readFourDigits(at + 2));
  at += escapeLength;
  char32_t scalar = unit; // a surrogate by itself becomes U+FFFD: appendUTF8 sees to that
  if (isLeadSurrogate(unit) && peek(at) == '\\' && peek(at + 1) == 'u') {
    const auto trail = static_cast<char16_t>(readFourDigits(at + 2));
    if (isTrailSurrogate(trail)) {
      scalar = scalarOfPair(unit, trail);
      at += escapeLength;
    }
  }
  std::string bytes; // short enough to live on the stack
  appendUTF8(bytes, scalar);
  copy = std::ranges::copy(bytes, copy).out;
  return at;
}

std::uint32_t JSONParser::readFourDigits(const char* at) {
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i, ++at) {
    const int digit = valueOfHexDigit(peek(at));
    if (digit < 0)
      fail("Expected four hexadecimal digits behind “\\u”", at);
    value = value << 4 | static_cast<std::uint32_t>(digit);
  }
  return value;
}

/// Why a string, whose inside begins at `start`, can't go on at `where`.
void JSONParser::failInText(const char* where, const char* start) const {
  if (where == end_)
    fail("A string lacks its closing quote; it starts", start - 1);
  if ((*where & 0x80) != 0)
    fail("Expected valid UTF-8 in a string", where);
  fail("Expected control characters in a string to be written as escapes", where);
}

void JSONParser::fail(std::string_view what, const char* where) const {
  const std::string_view before(start_, where);
  std::string description(what);
  if (where == end_)
    description += ", but the text ends";
  description += " at byte " + std::to_string(before.size()) + " (" + placeBehind(before) + ").";
  DecodingError error({DecodingErrorKind::dataCorrupted, std::move(description)}, {});
  error.setByteOffset(static_cast<std::int64_t>(before.size()));
  throw error;
}

} // namespace velmar::detail
