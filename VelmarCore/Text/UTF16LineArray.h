// The text of a document, held as lines.
//
// The array answers which line holds an offset in O(log n), turns offsets into positions and back,
// and takes edits that replace a range with new text while the line table stays exact, also where
// an edit cuts, makes or completes a CR LF pair. Terminators are CR, LF and CR LF, nothing else,
// and a terminator belongs to its line. The last line has none: a text that ends with a terminator
// has an empty line behind it.
//
// With a storage (`UTF16LineArrayStringStorage` in documents) each line owns its text, so an edit
// moves no text but that of the lines it touches. With `NoLineStorage` the same algorithm tracks
// boundaries alone.
//
// Line starts lie in one plain array beside the line objects: the shift behind an edit is at most
// one pass over contiguous memory, none where typing goes on at one place, and any number of lines
// goes in or out in one splice. A text holds at most 2^32 - 1 code units.
//
// Offsets are UTF-16 code units from the start of the text. An offset or range outside the text
// stops the process. There is no lock: one thread at a time uses an array and the lines it gave
// out.
#pragma once

#include "VelmarCore/Text/LineBoundaries.h"
#include "VelmarCore/Text/LineFlags.h"
#include "VelmarCore/Text/LineStarts.h"
#include "VelmarCore/Text/LineStorage.h"
#include "VelmarCore/Text/TextPosition.h"
#include "VelmarPlatform/Basics/Range.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

/// What to change in code units that are copied out, as a set of bits.
enum class LineArrayCodeUnitOptions : std::int64_t {
  none = 0,
  /// A lone CR at the end of a line is delivered as LF; CR LF stays as it is.
  enforceLFLineEnding = 1,
};

/// Storages with text, as opposed to `NoLineStorage`.
template <class Storage>
concept StoringText = UTF16LineArrayStorage<Storage>;

namespace detail {

/// What a line is, apart from its place: it stays the same object while edits go on around and
/// inside it. Counted without atomics, for it belongs to its array's thread.
template <class Storage>
struct LineObject {
  std::uint32_t references = 1;
  LineFlags flags;
  [[no_unique_address]] Storage storage;
};

/// Holds one line object alive.
template <class Storage>
class LineReference {
public:
  explicit LineReference(LineObject<Storage>* object) noexcept : object_(object) {
    ++object_->references;
  }
  LineReference(const LineReference& other) noexcept : LineReference(other.object_) {}
  LineReference(LineReference&& other) noexcept : LineReference(other.object_) {}
  LineReference& operator=(LineReference other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~LineReference() { release(object_); }

  LineObject<Storage>* operator->() const noexcept { return object_; }
  [[nodiscard]] LineObject<Storage>* get() const noexcept { return object_; }

  static void release(LineObject<Storage>* object) noexcept {
    if (--object->references == 0)
      delete object;
  }

private:
  LineObject<Storage>* object_;
};

} // namespace detail

/// Describes a document only until the next edit of its array. Held longer it is harmless: its
/// range and flags are those of the moment it was made, and its text is whatever the line object,
/// in the array or not, holds now.
template <class Storage>
class Line {
public:
  Line(detail::LineObject<Storage>* object, std::int64_t index, TextRange range) noexcept
      : base_(object), index_(index), range_(range), flags_(object->flags) {}

  /// The line's index in the array.
  [[nodiscard]] std::int64_t index() const noexcept { return index_; }
  /// Offsets in the document, terminator included.
  [[nodiscard]] TextRange range() const noexcept { return range_; }
  /// `range()` less the terminator.
  [[nodiscard]] TextRange contentsRange() const noexcept {
    return {range_.lowerBound, range_.upperBound - flags_.lineEndingCount()};
  }
  [[nodiscard]] LineFlags flags() const noexcept { return flags_; }
  /// The number of code units, terminator included.
  [[nodiscard]] std::int64_t count() const noexcept { return range_.length(); }
  /// Names the line object: equal for two lines exactly if they are the same one, wherever edits
  /// have moved it.
  [[nodiscard]] const void* identity() const noexcept { return base_.get(); }

  /// The code unit at `index`, counted from the start of the line.
  [[nodiscard]] char16_t operator[](std::int64_t index) const
    requires StoringText<Storage>
  {
    return base_->storage[index];
  }
  /// The whole line, terminator included, as a view that the next edit ends.
  [[nodiscard]] std::u16string_view codeUnits() const noexcept
    requires ContiguousLineStorage<Storage>
  {
    return base_->storage.codeUnits();
  }
  /// The whole line, terminator included.
  [[nodiscard]] std::u16string substring() const
    requires StoringText<Storage>
  {
    return base_->storage.substringFor({0, base_->storage.count()});
  }
  /// `range` counts from the start of the line.
  [[nodiscard]] std::u16string substringFor(TextRange range) const
    requires StoringText<Storage>
  {
    return base_->storage.substringFor(range);
  }
  /// Copies `range`, counted from the start of the line, to the front of `buffer`, which must have
  /// room for it.
  void copyCodeUnits(TextRange range, LineArrayCodeUnitOptions options,
                     std::span<char16_t> buffer) const
    requires StoringText<Storage>;

  /// "Line<CRLF, 0..<5>".
  [[nodiscard]] std::string description() const;
  /// "Line<address: CRLF, 0..<5>", with the address of the line object.
  [[nodiscard]] std::string debugDescription() const;

private:
  detail::LineReference<Storage> base_;
  std::int64_t index_;
  TextRange range_;
  LineFlags flags_;
};

template <class Storage>
class UTF16LineArray;

/// Some consecutive lines of an array, until its next edit. Its indices are the lines' own indices
/// in the array, from `startIndex()` up to `endIndex()`, not counted from 0.
template <class Storage>
class LineView {
public:
  class Iterator {
  public:
    using value_type = Line<Storage>;
    using difference_type = std::ptrdiff_t;

    Iterator() = default;
    Iterator(const UTF16LineArray<Storage>* array, std::int64_t index)
        : array_(array), index_(index) {}
    Line<Storage> operator*() const { return array_->line(index_); }
    Line<Storage> operator[](difference_type offset) const { return array_->line(index_ + offset); }
    Iterator& operator++() { return *this += 1; }
    Iterator operator++(int) { return std::exchange(*this, *this + 1); }
    Iterator& operator--() { return *this += -1; }
    Iterator operator--(int) { return std::exchange(*this, *this + -1); }
    Iterator& operator+=(difference_type offset) {
      index_ += offset;
      return *this;
    }
    Iterator& operator-=(difference_type offset) { return *this += -offset; }
    friend Iterator operator+(Iterator i, difference_type offset) { return i += offset; }
    friend Iterator operator+(difference_type offset, Iterator i) { return i += offset; }
    friend Iterator operator-(Iterator i, difference_type offset) { return i += -offset; }
    friend difference_type operator-(const Iterator& l, const Iterator& r) {
      return l.index_ - r.index_;
    }
    bool operator==(const Iterator& other) const { return index_ == other.index_; }
    auto operator<=>(const Iterator& other) const { return index_ <=> other.index_; }

  private:
    const UTF16LineArray<Storage>* array_ = nullptr;
    std::int64_t index_ = 0;
  };

  LineView(const UTF16LineArray<Storage>& array, Range<std::int64_t> range)
      : array_(&array), range_(range) {}

  [[nodiscard]] std::int64_t startIndex() const noexcept { return range_.lowerBound; }
  [[nodiscard]] std::int64_t endIndex() const noexcept { return range_.upperBound; }
  [[nodiscard]] std::int64_t count() const noexcept { return range_.length(); }
  [[nodiscard]] bool isEmpty() const noexcept { return range_.isEmpty(); }
  /// The line with this index in the array. Stops the process outside the array.
  [[nodiscard]] Line<Storage> operator[](std::int64_t index) const { return array_->line(index); }
  [[nodiscard]] Iterator begin() const { return {array_, range_.lowerBound}; }
  [[nodiscard]] Iterator end() const { return {array_, range_.upperBound}; }

private:
  const UTF16LineArray<Storage>* array_;
  Range<std::int64_t> range_;
};

template <class Storage = UTF16LineArrayStringStorage>
class UTF16LineArray {
public:
  /// An empty text: one empty line.
  UTF16LineArray();
  UTF16LineArray(const UTF16LineArray&) = delete;
  UTF16LineArray& operator=(const UTF16LineArray&) = delete;
  UTF16LineArray(UTF16LineArray&&) = delete;
  UTF16LineArray& operator=(UTF16LineArray&&) = delete;
  ~UTF16LineArray();

  /// A new array with a new line for each of `source`, with the same range, flags and, if this one
  /// stores it, text. The two share nothing.
  template <class OtherStorage>
    requires(!StoringText<Storage> || StoringText<OtherStorage>)
  [[nodiscard]] static UTF16LineArray fromContentsOf(const UTF16LineArray<OtherStorage>& source) {
    return UTF16LineArray(source, FromContents{});
  }

  /// The number of code units of the text. O(1).
  [[nodiscard]] std::int64_t count() const noexcept { return starts_.back(); }
  [[nodiscard]] bool isEmpty() const noexcept { return count() == 0; }
  [[nodiscard]] std::int64_t lineCount() const noexcept {
    return static_cast<std::int64_t>(objects_.size());
  }

  /// What the array takes, in bytes: its text with the room for more, and all else that is kept of
  /// lines. The allocator's own share isn't counted.
  struct Memory {
    std::int64_t text = 0;
    std::int64_t lines = 0;
    bool operator==(const Memory&) const = default;
  };
  /// O(lines).
  [[nodiscard]] Memory memory() const;

  /// The one edit: puts `text` in place of `range`.
  ///
  /// A line is the same object before and after an edit that stays inside it. CR and LF become one
  /// terminator only at the seams of the edit itself: an LF put directly behind a line that ends in
  /// a lone CR stays a line of its own, for an offset at a line boundary belongs to the line that
  /// starts there. O(log lines), plus the lines touched, plus a pass over the starts between this
  /// edit and the last one; where lines come or go, over those behind.
  void replaceSubrange(TextRange range, std::u16string_view text);
  /// The same with valid UTF-8; what isn't valid is replaced by U+FFFD.
  void replaceSubrange(TextRange range, std::string_view utf8);

  /// All lines.
  [[nodiscard]] LineView<Storage> lines() const { return {*this, {0, lineCount()}}; }
  /// The line with this index.
  [[nodiscard]] Line<Storage> line(std::int64_t index) const {
    precondition(index >= 0 && index < lineCount(), "A line's index lies outside the text.");
    return {objects_[asSize(index)], index, rangeOfLine(index)};
  }
  /// The line that `offset` belongs to; at a boundary the one that starts there, at the end the
  /// last. O(log lines).
  [[nodiscard]] Line<Storage> lineContaining(std::int64_t offset) const {
    return line(indexOfLineContaining(offset));
  }
  /// The same as an index, without taking hold of the line.
  [[nodiscard]] std::int64_t indexOfLineContaining(std::int64_t offset) const;

  /// The lines that `range` touches. An empty range gives the one line that holds it; an upper
  /// bound at a line's start leaves that line out.
  [[nodiscard]] LineView<Storage> linesIntersecting(TextRange range) const;
  /// The same by positions, without a search: an upper bound at column 0 leaves its line out, so
  /// the empty range at column 0 gives no line.
  [[nodiscard]] LineView<Storage> linesIntersecting(Range<TextPosition> range) const;

  /// The boundaries from the start of the first line that `range` touches to the end of the last.
  [[nodiscard]] LineBoundaries<std::int64_t> lineBoundariesFor(TextRange range) const;
  /// Those of the line of `offset`; at a boundary `affinity` says which of the two lines is meant.
  [[nodiscard]] LineBoundaries<std::int64_t> lineBoundariesFor(std::int64_t offset,
                                                               LineAffinity affinity) const;

  /// The range of the line with this index, terminator included. O(1), and touches no line object.
  [[nodiscard]] TextRange rangeOfLine(std::int64_t index) const noexcept {
    return {starts_[asSize(index)], starts_[asSize(index) + 1]};
  }

  /// Line by search, column from its start. O(log lines).
  [[nodiscard]] TextPosition positionOf(std::int64_t offset) const;
  /// The start of the position's line plus its column. A column past the line's end gives an offset
  /// in a later line.
  [[nodiscard]] std::int64_t indexOf(TextPosition position) const;
  [[nodiscard]] Range<TextPosition> positionsOf(TextRange range) const;
  [[nodiscard]] TextRange indexRangeOf(Range<TextPosition> range) const;

  /// The code unit at `offset`. O(log lines).
  [[nodiscard]] char16_t operator[](std::int64_t offset) const
    requires StoringText<Storage>;
  [[nodiscard]] std::u16string substringFor(TextRange range) const
    requires StoringText<Storage>;
  [[nodiscard]] std::u16string substringFor(Range<TextPosition> range) const
    requires StoringText<Storage>
  {
    return substringFor(indexRangeOf(range));
  }
  /// Copies `range` to the front of `buffer`, which must have room for it.
  void copyCodeUnits(TextRange range, LineArrayCodeUnitOptions options,
                     std::span<char16_t> buffer) const
    requires StoringText<Storage>;
  /// The units of the line with this index, terminator included, as a view that the next edit ends.
  /// O(1).
  [[nodiscard]] std::u16string_view codeUnitsOfLine(std::int64_t index) const
    requires ContiguousLineStorage<Storage>
  {
    precondition(index >= 0 && index < lineCount(), "A line's index lies outside the text.");
    return objects_[asSize(index)]->storage.codeUnits();
  }
  /// How the line with this index ends.
  [[nodiscard]] LineFlags flagsOfLine(std::int64_t index) const {
    precondition(index >= 0 && index < lineCount(), "A line's index lies outside the text.");
    return objects_[asSize(index)]->flags;
  }

  /// Stops the process with a message if the line table isn't what it must be. O(text); for tests
  /// and debug builds.
  void checkInvariants() const;

private:
  template <class OtherStorage>
  friend class UTF16LineArray;

  using Object = detail::LineObject<Storage>;
  /// A line on its way into the array, whose start isn't known yet.
  struct Piece {
    Object* object;
    std::int64_t length;
  };
  class Edit;
  struct FromContents {};

  template <class OtherStorage>
  UTF16LineArray(const UTF16LineArray<OtherStorage>& source, FromContents);

  static std::size_t asSize(std::int64_t value) noexcept { return static_cast<std::size_t>(value); }
  std::size_t indexOfEditedLine(std::int64_t offset) const;
  bool replaceInsideLine(TextRange range, std::u16string_view text);
  void splice(std::size_t first, std::size_t end, std::span<const Piece> pieces,
              std::int64_t delta);

  /// One longer than `objects_`.
  detail::LineStarts starts_;
  /// One reference each is ours.
  std::vector<Object*> objects_;
  /// What an edit works with, empty in between: kept so that edits needn't ask for memory.
  std::vector<Piece> pieces_;
  std::vector<Object*> dropped_;
};

extern template class Line<NoLineStorage>;
extern template class Line<UTF16LineArrayStringStorage>;
extern template class UTF16LineArray<NoLineStorage>;
extern template class UTF16LineArray<UTF16LineArrayStringStorage>;

/// The text of documents.
using DocumentText = UTF16LineArray<UTF16LineArrayStringStorage>;

} // namespace velmar
