// JSON text, parsed. Strictly by RFC 8259: no comments, no trailing commas, no NaN; but a
// byte-order mark at the start is skipped, as editors on other systems leave one.
//
//     const JSONTape tape(R"({"line": 3})");   // throws DecodingError
//     CodedChildren walk = tape.children(tape.root());
//
// The document becomes one flat row of words. It takes at most 4 bytes for each byte of the text,
// in one allocation, and so does its parse. That allocation has room for 2 KB more, which only a
// text writes to that is refused in the end: brackets that are never closed take more words. What
// stands in the text without escapes is read from there: nothing is copied. Keys keep their order, and repeated ones are all there.
//
// Integers are exact from -2^63 to 2^64-1 and doubles beyond; "-0" is the double. A number that is
// too large for a double is refused, one that is too small is zero. Bad UTF-8 is refused; half a
// surrogate pair, written as an escape, is read as U+FFFD, for there are peers that cut text in the
// middle of a pair, and one message isn't worth the session. More than 512 arrays and objects in
// each other are refused, and more text than 4 GB.
#pragma once

#include "VelmarPlatform/Coding/DecodingSource.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace velmar {

/// Immutable: several threads may read one.
class JSONTape final : public DecodingSource {
public:
  /// Parses `text`, which is borrowed and must outlive the tape. O(size).
  ///
  /// Throws DecodingError of the kind `dataCorrupted`, with the byte and the line and column, if
  /// `text` isn't JSON. Takes a few KB of stack, however `text` is nested.
  explicit JSONTape(std::string_view text);

  /// The value that the text is.
  [[nodiscard]] CodedValue root() const noexcept { return {0}; }
  /// How many bytes the tape takes beside the text.
  [[nodiscard]] std::int64_t byteCount() const noexcept;

  [[nodiscard]] ValueKind kind(CodedValue value) const override;
  [[nodiscard]] bool boolean(CodedValue value) const override;
  [[nodiscard]] std::int64_t integer(CodedValue value) const override;
  [[nodiscard]] std::uint64_t unsignedInteger(CodedValue value) const override;
  [[nodiscard]] double floating(CodedValue value) const override;
  [[nodiscard]] std::string_view text(CodedValue value) const override;

  /// O(1) up to 2^28-2 children.
  [[nodiscard]] std::int64_t count(CodedValue value) const override;
  [[nodiscard]] CodedChildren children(CodedValue value) const override;
  /// O(1) whatever the element holds, as is `nextMember`.
  bool nextElement(CodedChildren& walk, CodedValue& element) const override;
  bool nextMember(CodedChildren& walk, std::string_view& key, CodedValue& member) const override;
  [[nodiscard]] bool enterTable(CodedValue value, CodedChildren& walk) const override;
  [[nodiscard]] bool readInteger(CodedValue value, std::int64_t& into) const override;
  [[nodiscard]] bool readText(CodedValue value, std::string_view& into) const override;
  [[nodiscard]] bool readIntegers(CodedValue array,
                                  std::vector<std::int64_t>& integers) const override;

private:
  struct Freed {
    void operator()(std::uint64_t* words) const noexcept { std::free(words); }
  };

  /// One whose key is written with escapes, or is very long.
  bool nextUnusualMember(CodedChildren& walk, std::string_view& key, CodedValue& member) const;
  [[nodiscard]] std::uint64_t behind(std::uint64_t index) const noexcept;

  std::string_view text_;
  std::unique_ptr<std::uint64_t[], Freed> words_;
  std::size_t wordCount_ = 0;
};

} // namespace velmar
