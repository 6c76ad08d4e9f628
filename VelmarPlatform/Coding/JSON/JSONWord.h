// How JSONTape lays a document out in words of 64 bits: the parser writes them and the tape reads
// them, nobody else. A value is one or more words; what an array or an object holds stands behind
// its word in the document's order, a key in front of its value.
//
//     4 bits   28 bits              32 bits
//     tag      bytes of text        where it starts in the source      text, key
//     tag      number of children   index of the word behind the end   array, table
//     tag      60 bits: an integer, or how many bytes follow in words of their own
//
// No value needs more words than half its bytes, with the comma or bracket behind it: "0," has one,
// "1.5," two. That is what bounds the tape's size, and why there is a tag of its own for "-0".
#pragma once

#include <cstddef>
#include <cstdint>

namespace velmar::detail {

enum class JSONTag : std::uint8_t {
  nil,
  no,
  yes,
  minusZero,
  integer,
  wideInteger,     // the value is in the next word
  unsignedInteger, // likewise
  floating,        // likewise
  text,            // as it stands in the source
  longText,        // likewise, its length in the next word
  copiedText,      // without its escapes, in the words that follow
  array,
  table,
};

using JSONWord = std::uint64_t;

inline constexpr int tagShift = 60;
inline constexpr int lengthShift = 32;
inline constexpr JSONWord greatestLength = (JSONWord{1} << (tagShift - lengthShift)) - 1;
inline constexpr JSONWord greatestOffset = (JSONWord{1} << lengthShift) - 1;
inline constexpr std::int64_t greatestInteger = (std::int64_t{1} << (tagShift - 1)) - 1;

constexpr JSONWord makeWord(JSONTag tag, JSONWord payload = 0) noexcept {
  return static_cast<JSONWord>(tag) << tagShift | payload;
}
constexpr JSONWord makeWord(JSONTag tag, JSONWord length, JSONWord offset) noexcept {
  return makeWord(tag, length << lengthShift | offset);
}
/// `value` must lie between -greatestInteger and greatestInteger.
constexpr JSONWord makeIntegerWord(std::int64_t value) noexcept {
  constexpr int tagBits = 64 - tagShift;
  return makeWord(JSONTag::integer, static_cast<JSONWord>(value) << tagBits >> tagBits);
}

constexpr JSONTag tagOf(JSONWord word) noexcept {
  return static_cast<JSONTag>(word >> tagShift);
}
constexpr JSONWord payloadOf(JSONWord word) noexcept {
  return word & ((JSONWord{1} << tagShift) - 1);
}
constexpr JSONWord lengthOf(JSONWord word) noexcept {
  return word >> lengthShift & greatestLength;
}
constexpr JSONWord offsetOf(JSONWord word) noexcept {
  return word & greatestOffset;
}
constexpr std::int64_t integerOf(JSONWord word) noexcept {
  constexpr int tagBits = 64 - tagShift;
  return static_cast<std::int64_t>(word << tagBits) >> tagBits;
}
/// How many words hold that many bytes.
constexpr JSONWord wordsFor(JSONWord bytes) noexcept {
  return (bytes + sizeof(JSONWord) - 1) / sizeof(JSONWord);
}

} // namespace velmar::detail
