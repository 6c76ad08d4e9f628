#include "VelmarPlatform/Unicode/Characters.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>

#include <algorithm>
#include <memory>
#include <source_location>

namespace velmar {

namespace {

// Most boundaries follow from the two scalars beside them, so those are settled here by the rules
// that Unicode gives for pairs. Only where more of the context counts is ICU's break iterator
// asked: it is exact, but hundreds of times dearer for a single question. Its answer covers what
// its rules add to the pairs (emoji sequences, flags, Indic conjuncts).

enum class Verdict { apart, together, dependsOnContext };

bool isControl(int kind) {
  return kind == U_GCB_CONTROL || kind == U_GCB_CR || kind == U_GCB_LF;
}

/// Whether `kind` can only extend what stands in front of it.
bool extends(int kind) {
  return kind == U_GCB_EXTEND || kind == U_GCB_ZWJ || kind == U_GCB_SPACING_MARK;
}

/// How Hangul letters join into syllables.
bool joinsAsSyllable(int left, int right) {
  switch (left) {
  case U_GCB_L:
    return right == U_GCB_L || right == U_GCB_V || right == U_GCB_LV || right == U_GCB_LVT;
  case U_GCB_LV:
  case U_GCB_V:
    return right == U_GCB_V || right == U_GCB_T;
  case U_GCB_LVT:
  case U_GCB_T:
    return right == U_GCB_T;
  default:
    return false;
  }
}

int kindOf(char32_t scalar) {
  return u_getIntPropertyValue(static_cast<UChar32>(scalar), UCHAR_GRAPHEME_CLUSTER_BREAK);
}

/// Whether a scalar that looks like any other can belong to what stands in front of a mark: an
/// emoji behind a joiner, or a letter of an Indic script, which may be part of a conjunct.
bool mayContinue(int leftKind, char32_t right) {
  if (right < 0x80)
    return false;
  const auto scalar = static_cast<UChar32>(right);
  if (leftKind == U_GCB_ZWJ && u_hasBinaryProperty(scalar, UCHAR_EXTENDED_PICTOGRAPHIC))
    return true;
  return u_getIntPropertyValue(scalar, UCHAR_INDIC_SYLLABIC_CATEGORY) != U_INSC_OTHER;
}

Verdict verdictBetween(char32_t leftScalar, char32_t rightScalar) {
  const int left = kindOf(leftScalar);
  const int right = kindOf(rightScalar);
  if (left == U_GCB_CR && right == U_GCB_LF)
    return Verdict::together;
  if (isControl(left) || isControl(right))
    return Verdict::apart;
  if (extends(right) || left == U_GCB_PREPEND || joinsAsSyllable(left, right))
    return Verdict::together;
  if (left == U_GCB_REGIONAL_INDICATOR && right == U_GCB_REGIONAL_INDICATOR)
    return Verdict::dependsOnContext;
  if (extends(left) && right == U_GCB_OTHER && mayContinue(left, rightScalar))
    return Verdict::dependsOnContext;
  return Verdict::apart;
}

/// A scalar and where it lies: U+FFFD for a bad piece.
struct ScalarAt {
  char32_t scalar = 0;
  std::int64_t start = 0;
  std::int64_t end = 0;
};

ScalarAt scalarFrom(std::string_view text, std::int64_t index) {
  const DecodedScalar decoded = decodeUTF8(text, static_cast<std::size_t>(index));
  return {decoded.scalar, index, index + decoded.length};
}

ScalarAt scalarFrom(std::u16string_view text, std::int64_t index) {
  const DecodedScalar decoded = decodeUTF16(text, static_cast<std::size_t>(index));
  return {decoded.scalar, index, index + decoded.length};
}

/// The scalar, or bad piece, that holds the unit in front of `index`; it ends behind `index` if
/// that lies inside it.
ScalarAt scalarBefore(std::string_view text, std::int64_t index) {
  // A byte that isn't a continuation always starts a piece, and no piece is longer than four bytes.
  const auto isContinuation = [&](std::int64_t at) {
    return (static_cast<unsigned char>(text[static_cast<std::size_t>(at)]) & 0xC0) == 0x80;
  };
  std::int64_t start = index - 1;
  while (start > 0 && index - start < 4 && isContinuation(start))
    --start;
  const ScalarAt found = scalarFrom(text, start);
  return found.end >= index ? found : scalarFrom(text, index - 1);
}

ScalarAt scalarBefore(std::u16string_view text, std::int64_t index) {
  if (index >= 2) {
    const ScalarAt found = scalarFrom(text, index - 2);
    if (found.end == index)
      return found;
  }
  return scalarFrom(text, index - 1);
}

struct BreakIteratorDeleter {
  void operator()(UBreakIterator* iterator) const noexcept { ubrk_close(iterator); }
};

/// ICU's break iterator with the text record that it reads through, both reused for every question
/// of one thread.
class ContextBreaker {
public:
  ContextBreaker() {
    UErrorCode status = U_ZERO_ERROR;
    iterator_.reset(ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status));
    if (U_FAILURE(status))
      preconditionFailed("ICU has no data to break text into characters.",
                         std::source_location::current());
  }
  ~ContextBreaker() { utext_close(&text_); }
  ContextBreaker(const ContextBreaker&) = delete;
  ContextBreaker& operator=(const ContextBreaker&) = delete;

  /// The first boundary behind the start of `text`.
  template <class TextView>
  std::int64_t firstBoundary(TextView text) {
    read(text.substr(0, window));
    return ubrk_following(iterator_.get(), 0);
  }

  /// The last boundary in front of the end of `text`.
  template <class TextView>
  std::int64_t lastBoundary(TextView text) {
    const std::size_t left = text.size() - std::min(text.size(), window);
    text.remove_prefix(left);
    read(text);
    return static_cast<std::int64_t>(left) +
           ubrk_preceding(iterator_.get(), static_cast<std::int32_t>(text.size()));
  }

private:
  // ICU's indices have 32 bits; no character that means anything is nearly as long.
  static constexpr std::size_t window = std::size_t{1} << 30;

  void read(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    utext_openUTF8(&text_, text.data(), static_cast<std::int64_t>(text.size()), &status);
    ubrk_setUText(iterator_.get(), &text_, &status);
    check(status);
  }
  void read(std::u16string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    utext_openUChars(&text_, text.data(), static_cast<std::int64_t>(text.size()), &status);
    ubrk_setUText(iterator_.get(), &text_, &status);
    check(status);
  }
  static void check(UErrorCode status) {
    // Bad text is no failure for ICU; only memory can run out.
    if (U_FAILURE(status))
      preconditionFailed("ICU could not read a text.", std::source_location::current());
  }

  UText text_ = UTEXT_INITIALIZER;
  std::unique_ptr<UBreakIterator, BreakIteratorDeleter> iterator_;
};

ContextBreaker& contextBreaker() {
  thread_local ContextBreaker breaker;
  return breaker;
}

template <class TextView>
std::int64_t endOfCharacter(TextView text, std::int64_t index) {
  const auto count = static_cast<std::int64_t>(text.size());
  ScalarAt left = scalarFrom(text, index);
  while (left.end < count) {
    const ScalarAt right = scalarFrom(text, left.end);
    switch (verdictBetween(left.scalar, right.scalar)) {
    case Verdict::apart:
      return left.end;
    case Verdict::dependsOnContext:
      return index + contextBreaker().firstBoundary(text.substr(static_cast<std::size_t>(index)));
    case Verdict::together:
      left = right;
    }
  }
  return count;
}

template <class TextView>
std::int64_t startOfCharacter(TextView text, std::int64_t index) {
  ScalarAt right = scalarBefore(text, index);
  const std::int64_t end = right.end;
  while (right.start > 0) {
    const ScalarAt left = scalarBefore(text, right.start);
    switch (verdictBetween(left.scalar, right.scalar)) {
    case Verdict::apart:
      return right.start;
    case Verdict::dependsOnContext:
      return contextBreaker().lastBoundary(text.substr(0, static_cast<std::size_t>(end)));
    case Verdict::together:
      right = left;
    }
  }
  return 0;
}

template <class TextView>
bool isBoundary(TextView text, std::int64_t index) {
  const auto count = static_cast<std::int64_t>(text.size());
  precondition(index >= 0 && index <= count,
               "A character boundary was looked for outside the text.");
  if (index == 0 || index == count)
    return true;
  if (scalarBefore(text, index).end != index)
    return false;
  return startOfCharacter(text, scalarFrom(text, index).end) == index;
}

template <class TextView>
TextView first(TextView text) {
  return text.empty() ? text
                      : text.substr(0, static_cast<std::size_t>(nextCharacterBoundary(text, 0)));
}

template <class TextView>
TextView last(TextView text) {
  if (text.empty())
    return text;
  const auto count = static_cast<std::int64_t>(text.size());
  return text.substr(static_cast<std::size_t>(previousCharacterBoundary(text, count)));
}

template <class TextView>
std::int64_t count(TextView text) {
  std::int64_t characters = 0;
  const auto end = static_cast<std::int64_t>(text.size());
  for (std::int64_t index = 0; index < end; index = nextCharacterBoundary(text, index))
    ++characters;
  return characters;
}

bool isNewlineScalar(char32_t scalar) {
  return (scalar >= 0x0A && scalar <= 0x0D) || scalar == 0x85 || scalar == 0x2028 ||
         scalar == 0x2029;
}

} // namespace

namespace detail {

std::int64_t characterEndImpl(std::string_view text, std::int64_t index) {
  return endOfCharacter(text, index);
}
std::int64_t characterEndImpl(std::u16string_view text, std::int64_t index) {
  return endOfCharacter(text, index);
}
std::int64_t characterStartImpl(std::string_view text, std::int64_t index) {
  return startOfCharacter(text, index);
}
std::int64_t characterStartImpl(std::u16string_view text, std::int64_t index) {
  return startOfCharacter(text, index);
}

} // namespace detail

bool isCharacterBoundary(std::string_view text, std::int64_t index) {
  return isBoundary(text, index);
}
bool isCharacterBoundary(std::u16string_view text, std::int64_t index) {
  return isBoundary(text, index);
}

std::string_view firstCharacter(std::string_view text) {
  return first(text);
}
std::u16string_view firstCharacter(std::u16string_view text) {
  return first(text);
}
std::string_view lastCharacter(std::string_view text) {
  return last(text);
}
std::u16string_view lastCharacter(std::u16string_view text) {
  return last(text);
}

std::int64_t characterCount(std::string_view text) {
  return count(text);
}
std::int64_t characterCount(std::u16string_view text) {
  return count(text);
}

bool isWhitespaceScalar(char32_t scalar) noexcept {
  if (scalar < 0x80)
    return scalar == ' ' || (scalar >= 0x09 && scalar <= 0x0D);
  return u_isUWhiteSpace(static_cast<UChar32>(scalar)) != 0;
}

bool isWhitespace(std::string_view character) noexcept {
  return !character.empty() && isWhitespaceScalar(decodeUTF8(character, 0).scalar);
}
bool isWhitespace(std::u16string_view character) noexcept {
  return !character.empty() && isWhitespaceScalar(decodeUTF16(character, 0).scalar);
}

bool isNewline(std::string_view character) noexcept {
  return !character.empty() && isNewlineScalar(decodeUTF8(character, 0).scalar);
}
bool isNewline(std::u16string_view character) noexcept {
  return !character.empty() && isNewlineScalar(decodeUTF16(character, 0).scalar);
}

} // namespace velmar
