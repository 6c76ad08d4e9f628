#include "VelmarPlatform/Coding/JSON/JSONTape.h"

#include "VelmarPlatform/Coding/JSON/JSONParser.h"
#include "VelmarPlatform/Coding/JSON/JSONWord.h"

#include <array>
#include <bit>
#include <new>
#include <string>

namespace velmar {

using namespace detail;

namespace {

constexpr std::array<ValueKind, 16> kindOfTag = [] {
  std::array<ValueKind, 16> kinds{};
  const auto set = [&kinds](JSONTag tag, ValueKind kind) {
    kinds[static_cast<std::size_t>(tag)] = kind;
  };
  set(JSONTag::nil, ValueKind::nil);
  set(JSONTag::no, ValueKind::boolean);
  set(JSONTag::yes, ValueKind::boolean);
  set(JSONTag::minusZero, ValueKind::floating);
  set(JSONTag::integer, ValueKind::integer);
  set(JSONTag::wideInteger, ValueKind::integer);
  set(JSONTag::unsignedInteger, ValueKind::unsignedInteger);
  set(JSONTag::floating, ValueKind::floating);
  set(JSONTag::text, ValueKind::text);
  set(JSONTag::longText, ValueKind::text);
  set(JSONTag::copiedText, ValueKind::text);
  set(JSONTag::array, ValueKind::array);
  set(JSONTag::table, ValueKind::table);
  return kinds;
}();

/// How many words there are of a tag; 0 where the word itself tells.
constexpr std::array<std::uint8_t, 16> widthOfTag = [] {
  std::array<std::uint8_t, 16> widths{};
  widths.fill(1);
  const auto set = [&widths](JSONTag tag, std::uint8_t width) {
    widths[static_cast<std::size_t>(tag)] = width;
  };
  for (const JSONTag tag :
       {JSONTag::wideInteger, JSONTag::unsignedInteger, JSONTag::floating, JSONTag::longText})
    set(tag, 2);
  for (const JSONTag tag : {JSONTag::copiedText, JSONTag::array, JSONTag::table})
    set(tag, 0);
  return widths;
}();

DecodingError refusal(std::string description) {
  return {{DecodingErrorKind::dataCorrupted, std::move(description)}, {}};
}

} // namespace

JSONTape::JSONTape(std::string_view text) : text_(text) {
  if (text.size() > greatestOffset)
    throw refusal("A JSON text of " + std::to_string(text.size()) +
                  " bytes is too long; it may have up to 4294967295.");
  // All that the text could need: pages that nobody writes to cost nothing, and nothing ever moves.
  const std::size_t most = JSONParser::greatestWordCount(text.size());
  words_.reset(static_cast<JSONWord*>(std::malloc(most * sizeof(JSONWord))));
  if (words_ == nullptr)
    throw std::bad_alloc();
  wordCount_ = JSONParser(text, words_.get()).parse();

  constexpr std::size_t worthShrinking = 4096;
  if (most - wordCount_ > worthShrinking) {
    if (void* less = std::realloc(words_.get(), wordCount_ * sizeof(JSONWord))) {
      static_cast<void>(words_.release());
      words_.reset(static_cast<JSONWord*>(less));
    }
  }
}

std::int64_t JSONTape::byteCount() const noexcept {
  return static_cast<std::int64_t>(wordCount_ * sizeof(JSONWord));
}

ValueKind JSONTape::kind(CodedValue value) const {
  return kindOfTag[static_cast<std::size_t>(tagOf(words_[value.handle]))];
}

bool JSONTape::boolean(CodedValue value) const {
  return tagOf(words_[value.handle]) == JSONTag::yes;
}

std::int64_t JSONTape::integer(CodedValue value) const {
  const JSONWord word = words_[value.handle];
  return tagOf(word) == JSONTag::integer ? integerOf(word)
                                         : static_cast<std::int64_t>(words_[value.handle + 1]);
}

std::uint64_t JSONTape::unsignedInteger(CodedValue value) const {
  return words_[value.handle + 1];
}

double JSONTape::floating(CodedValue value) const {
  return tagOf(words_[value.handle]) == JSONTag::minusZero
             ? -0.0
             : std::bit_cast<double>(words_[value.handle + 1]);
}

std::string_view JSONTape::text(CodedValue value) const {
  const JSONWord* const word = &words_[value.handle];
  if (tagOf(*word) == JSONTag::text) [[likely]]
    return {text_.data() + offsetOf(*word), lengthOf(*word)};
  if (tagOf(*word) == JSONTag::longText)
    return {text_.data() + offsetOf(*word), word[1]};
  return {reinterpret_cast<const char*>(word + 1), payloadOf(*word)};
}

/// The index of what stands behind a value.
inline std::uint64_t JSONTape::behind(std::uint64_t index) const noexcept {
  const JSONWord word = words_[index];
  const std::uint8_t width = widthOfTag[static_cast<std::size_t>(tagOf(word))];
  if (width != 0) [[likely]]
    return index + width;
  return tagOf(word) == JSONTag::copiedText ? index + 1 + wordsFor(payloadOf(word))
                                            : offsetOf(word);
}

std::int64_t JSONTape::count(CodedValue value) const {
  const JSONWord word = words_[value.handle];
  if (lengthOf(word) < greatestLength) [[likely]]
    return static_cast<std::int64_t>(lengthOf(word));
  std::int64_t values = 0;
  for (std::uint64_t index = value.handle + 1; index < offsetOf(word); index = behind(index))
    ++values;
  return tagOf(word) == JSONTag::table ? values / 2 : values;
}

CodedChildren JSONTape::children(CodedValue value) const {
  return {value.handle + 1, offsetOf(words_[value.handle])};
}

bool JSONTape::nextElement(CodedChildren& walk, CodedValue& element) const {
  if (walk.next == walk.end)
    return false;
  element.handle = walk.next;
  walk.next = behind(walk.next);
  return true;
}

bool JSONTape::nextMember(CodedChildren& walk, std::string_view& key, CodedValue& member) const {
  const std::uint64_t index = walk.next;
  if (index == walk.end)
    return false;
  const JSONWord word = words_[index];
  if (tagOf(word) != JSONTag::text) [[unlikely]]
    return nextUnusualMember(walk, key, member);
  walk.next = behind(index + 1);
  key = {text_.data() + offsetOf(word), lengthOf(word)};
  member.handle = index + 1;
  return true;
}

bool JSONTape::nextUnusualMember(CodedChildren& walk, std::string_view& key,
                                 CodedValue& member) const {
  key = text({walk.next});
  member.handle = behind(walk.next);
  walk.next = behind(member.handle);
  return true;
}

bool JSONTape::enterTable(CodedValue value, CodedChildren& walk) const {
  const JSONWord word = words_[value.handle];
  if (tagOf(word) != JSONTag::table)
    return false;
  walk = {value.handle + 1, offsetOf(word)};
  return true;
}

bool JSONTape::readInteger(CodedValue value, std::int64_t& into) const {
  const JSONWord word = words_[value.handle];
  if (tagOf(word) == JSONTag::integer) [[likely]] {
    into = integerOf(word);
    return true;
  }
  return DecodingSource::readInteger(value, into);
}

bool JSONTape::readText(CodedValue value, std::string_view& into) const {
  if (JSONTape::kind(value) != ValueKind::text)
    return false;
  into = JSONTape::text(value);
  return true;
}

bool JSONTape::readIntegers(CodedValue array, std::vector<std::int64_t>& integers) const {
  const std::size_t before = integers.size();
  integers.resize(before + static_cast<std::size_t>(count(array)));
  std::int64_t* into = integers.data() + before;
  const auto [first, end] = children(array);
  std::uint64_t at = first;
  for (; at != end; ++into) {
    const JSONWord word = words_[at];
    if (tagOf(word) == JSONTag::integer) {
      *into = integerOf(word);
      ++at;
    } else if (tagOf(word) == JSONTag::wideInteger) {
      *into = static_cast<std::int64_t>(words_[at + 1]);
      at += 2;
    } else {
      break;
    }
  }
  integers.resize(static_cast<std::size_t>(into - integers.data()));
  return at == end;
}

} // namespace velmar
