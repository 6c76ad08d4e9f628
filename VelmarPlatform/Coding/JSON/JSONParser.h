// Makes words of a JSON text; JSONTape's own. It goes through the text once and calls nothing of
// its own again while it is in it: how deep a text is nested costs no stack.
#pragma once

#include "VelmarPlatform/Coding/JSON/JSONWord.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace velmar::detail {

/// For one text and one call of `parse`.
class JSONParser {
public:
  static constexpr std::size_t maximumDepth = 512;

  /// `words` must have room for `greatestWordCount(text.size())`.
  JSONParser(std::string_view text, JSONWord* words);

  /// The most words that a text of so many bytes can need: half as many; and then one for each two
  /// brackets that are never closed, of a text that is refused in the end.
  static constexpr std::size_t greatestWordCount(std::size_t bytes) {
    return (bytes + std::min(bytes, maximumDepth)) / 2 + 2;
  }

  /// How many words there are. Throws DecodingError.
  std::size_t parse();

private:
  /// An array or object whose end isn't reached: its word, and what is in it so far.
  struct Open {
    JSONWord* word;
    std::uint32_t count;
    bool isTable;
  };

  bool readValue();
  bool readBehindValue();
  bool readUpToValue();
  bool open(JSONTag tag, char end);
  void close();
  void readKey();

  void readText();
  void readUnusualText(const char* start, const char* at);
  void readTextWithEscapes(const char* start, const char* escape);
  const char* readEscape(const char* at, char*& copy);
  const char* readUnicodeEscape(const char* at, char*& copy);
  std::uint32_t readFourDigits(const char* at);

  void readNumbers();
  void readNumbersInArray();
  void readShortIntegers();
  void readNumber();
  void readAnyNumber();
  bool isCommaBeforeDigit() const;
  void readLongOrFractional(const char* digits);
  void addInteger(std::int64_t value);
  void addWide(JSONTag tag, JSONWord value);
  void addFloating(double value);
  const char* skipDigits(const char* at);

  void readLiteral(std::string_view literal, JSONTag tag);

  /// The byte at `at`, or NUL at the end; NUL is never right where this is asked.
  [[nodiscard]] char peek(const char* at) const { return at != end_ ? *at : '\0'; }
  void skipSpace();
  [[noreturn]] void fail(std::string_view what, const char* where) const;
  [[noreturn]] void failInText(const char* where, const char* start) const;

  const char* start_;
  const char* end_;
  const char* at_;
  JSONWord* words_;
  JSONWord* next_;
  Open* innermost_;                         // open_[0] stands for no array or object at all
  std::array<Open, maximumDepth + 1> open_; // filled only as far as it is used
};

} // namespace velmar::detail
