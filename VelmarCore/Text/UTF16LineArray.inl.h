// The bodies of UTF16LineArray. Include this only to use the array with a storage of your own; the
// two forms that the engine uses are compiled in UTF16LineArray.cpp.
#pragma once

#include "VelmarCore/Text/LineBreaks.h"
#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <sstream>

namespace velmar {

namespace detail {

/// Text moves between storages in pieces of this many units, so that no buffer grows with the text.
inline constexpr std::int64_t lineBatchSize = 1024;

/// Appends `range` of `source` to `target`.
template <StoringText Source, StoringText Target>
void appendUnits(const Source& source, TextRange range, Target& target) {
  if constexpr (ContiguousLineStorage<Source>) {
    target.appendContentsOf(source.codeUnits().substr(static_cast<std::size_t>(range.lowerBound),
                                                      static_cast<std::size_t>(range.length())));
  } else {
    char16_t buffer[lineBatchSize];
    for (std::int64_t from = range.lowerBound; from < range.upperBound; from += lineBatchSize) {
      const std::int64_t to = std::min(from + lineBatchSize, range.upperBound);
      const std::span<char16_t> batch(buffer, static_cast<std::size_t>(to - from));
      source.copySubrange({from, to}, batch);
      target.appendContentsOf({batch.data(), batch.size()});
    }
  }
}

} // namespace detail

// Line

template <class Storage>
void Line<Storage>::copyCodeUnits(TextRange range, LineArrayCodeUnitOptions options,
                                  std::span<char16_t> buffer) const
  requires StoringText<Storage>
{
  if (range.isEmpty())
    return;
  const Storage& storage = base_->storage;
  if (options == LineArrayCodeUnitOptions::enforceLFLineEnding && flags_ == LineFlags::cr &&
      range.upperBound == storage.count()) {
    const auto length = static_cast<std::size_t>(range.length());
    precondition(buffer.size() >= length, "The buffer is smaller than the range to copy.");
    if (length > 1)
      storage.copySubrange({range.lowerBound, range.upperBound - 1}, buffer);
    buffer[length - 1] = u'\n';
  } else {
    storage.copySubrange(range, buffer);
  }
}

template <class Storage>
std::string Line<Storage>::description() const {
  std::ostringstream text;
  text << "Line<" << flags_.description() << ", " << range_ << ">";
  return text.str();
}

template <class Storage>
std::string Line<Storage>::debugDescription() const {
  std::ostringstream text;
  text << "Line<" << identity() << ": " << flags_.description() << ", " << range_ << ">";
  return text.str();
}

// The array

template <class Storage>
UTF16LineArray<Storage>::UTF16LineArray() : objects_{new Object} {}

template <class Storage>
UTF16LineArray<Storage>::~UTF16LineArray() {
  for (Object* object : objects_)
    detail::LineReference<Storage>::release(object);
}

template <class Storage>
template <class OtherStorage>
UTF16LineArray<Storage>::UTF16LineArray(const UTF16LineArray<OtherStorage>& source, FromContents)
    : starts_(source.starts_) {
  objects_.reserve(source.objects_.size());
  for (const auto* original : source.objects_) {
    auto* const copy = new Object;
    objects_.push_back(copy);
    copy->flags = original->flags;
    if constexpr (StoringText<Storage>)
      detail::appendUnits(original->storage, {0, original->storage.count()}, copy->storage);
  }
}

template <class Storage>
std::int64_t UTF16LineArray<Storage>::indexOfLineContaining(std::int64_t offset) const {
  precondition(offset >= 0 && offset <= count(), "An offset lies outside the text.");
  return static_cast<std::int64_t>(starts_.lastAtOrBefore(static_cast<std::uint32_t>(offset)));
}

template <class Storage>
LineView<Storage> UTF16LineArray<Storage>::linesIntersecting(TextRange range) const {
  const std::int64_t first = indexOfLineContaining(range.lowerBound);
  if (range.isEmpty() || range.upperBound <= rangeOfLine(first).upperBound) {
    precondition(range.upperBound <= count(), "A range reaches outside the text.");
    return {*this, {first, first + 1}};
  }
  std::int64_t last = indexOfLineContaining(range.upperBound);
  if (range.upperBound == rangeOfLine(last).lowerBound)
    --last;
  return {*this, {first, last + 1}};
}

template <class Storage>
LineView<Storage> UTF16LineArray<Storage>::linesIntersecting(Range<TextPosition> range) const {
  const std::int64_t end = range.upperBound.line + (range.upperBound.column != 0 ? 1 : 0);
  precondition(range.lowerBound.line >= 0 && end <= lineCount(),
               "A position lies outside the text.");
  return {*this, {range.lowerBound.line, end}};
}

template <class Storage>
LineBoundaries<std::int64_t> UTF16LineArray<Storage>::lineBoundariesFor(TextRange range) const {
  const std::int64_t first = indexOfLineContaining(range.lowerBound);
  std::int64_t last = first;
  if (!range.isEmpty()) {
    last = indexOfLineContaining(range.upperBound);
    if (range.upperBound == rangeOfLine(last).lowerBound)
      --last;
  }
  const std::int64_t end = rangeOfLine(last).upperBound;
  return {.start = rangeOfLine(first).lowerBound,
          .end = end,
          .contentsEnd = end - flagsOfLine(last).lineEndingCount()};
}

template <class Storage>
LineBoundaries<std::int64_t>
UTF16LineArray<Storage>::lineBoundariesFor(std::int64_t offset, LineAffinity affinity) const {
  std::int64_t index = indexOfLineContaining(offset);
  if (offset >= 1 && offset == rangeOfLine(index).lowerBound && affinity == LineAffinity::upstream)
    --index;
  const TextRange range = rangeOfLine(index);
  return {.start = range.lowerBound,
          .end = range.upperBound,
          .contentsEnd = range.upperBound - flagsOfLine(index).lineEndingCount()};
}

template <class Storage>
TextPosition UTF16LineArray<Storage>::positionOf(std::int64_t offset) const {
  const std::int64_t line = indexOfLineContaining(offset);
  return {.line = line, .column = offset - rangeOfLine(line).lowerBound};
}

template <class Storage>
std::int64_t UTF16LineArray<Storage>::indexOf(TextPosition position) const {
  precondition(position.line >= 0 && position.line < lineCount(),
               "A position lies outside the text.");
  return rangeOfLine(position.line).lowerBound + position.column;
}

template <class Storage>
Range<TextPosition> UTF16LineArray<Storage>::positionsOf(TextRange range) const {
  const TextPosition lower = positionOf(range.lowerBound);
  return {lower, range.isEmpty() ? lower : positionOf(range.upperBound)};
}

template <class Storage>
TextRange UTF16LineArray<Storage>::indexRangeOf(Range<TextPosition> range) const {
  return {indexOf(range.lowerBound), indexOf(range.upperBound)};
}

template <class Storage>
char16_t UTF16LineArray<Storage>::operator[](std::int64_t offset) const
  requires StoringText<Storage>
{
  const std::int64_t index = indexOfLineContaining(offset);
  return objects_[asSize(index)]->storage[offset - rangeOfLine(index).lowerBound];
}

template <class Storage>
std::u16string UTF16LineArray<Storage>::substringFor(TextRange range) const
  requires StoringText<Storage>
{
  std::u16string text(asSize(range.length()), u'\0');
  copyCodeUnits(range, LineArrayCodeUnitOptions::none, text);
  return text;
}

template <class Storage>
void UTF16LineArray<Storage>::copyCodeUnits(TextRange range, LineArrayCodeUnitOptions options,
                                            std::span<char16_t> buffer) const
  requires StoringText<Storage>
{
  precondition(range.lowerBound >= 0 && range.upperBound <= count(),
               "A range reaches outside the text.");
  precondition(std::cmp_greater_equal(buffer.size(), range.length()),
               "The buffer is smaller than the range to copy.");
  if (range.isEmpty())
    return;
  std::size_t written = 0;
  for (std::int64_t index = indexOfLineContaining(range.lowerBound); index < lineCount(); ++index) {
    const TextRange whole = rangeOfLine(index);
    if (whole.lowerBound >= range.upperBound)
      break;
    const TextRange part(std::max(range.lowerBound, whole.lowerBound) - whole.lowerBound,
                         std::min(range.upperBound, whole.upperBound) - whole.lowerBound);
    const auto length = asSize(part.length());
    line(index).copyCodeUnits(part, options, buffer.subspan(written, length));
    written += length;
  }
}

// Edits

/// One edit that changes the line structure, or touches more than the inside of a line.
///
/// It works on a list of pieces, the lines that will stand in place of the old lines `first_` up to
/// `end_`, and puts them into the array in one splice at the end. In order: remove the old text,
/// put the new text on the current line or into new lines, join what must be joined at the seam
/// behind, keep an empty last line.
template <class Storage>
class UTF16LineArray<Storage>::Edit {
public:
  Edit(UTF16LineArray& array, TextRange range, std::u16string_view text)
      : array_(array), range_(range), text_(text),
        first_(array.indexOfEditedLine(range.lowerBound)), end_(first_ + 1),
        current_{array.objects_[first_], array.rangeOfLine(asInt(first_)).length()},
        currentStart_(array.rangeOfLine(asInt(first_)).lowerBound), pieces_(array.pieces_),
        dropped_(array.dropped_) {}

  void perform() {
    const bool atEndOfText = range_.lowerBound == array_.count() && end_ == array_.objects_.size();
    if (!atEndOfText)
      removeOldText();
    insertNewText();
    joinBehind();
    keepTrailingLine();
    array_.splice(first_, end_, pieces_, asInt(text_.size()) - range_.length());
    for (Object* object : dropped_)
      detail::LineReference<Storage>::release(object);
    empty(pieces_);
    empty(dropped_);
  }

private:
  // The memory stays for the next edit, unless a large one took much.
  template <class List>
  static void empty(List& list) {
    constexpr std::size_t mostKept = 1024;
    list.clear();
    if (list.capacity() > mostKept)
      list.shrink_to_fit();
  }

  static std::int64_t asInt(std::size_t value) noexcept { return static_cast<std::int64_t>(value); }

  static Piece newPiece(LineFlags flags) {
    auto* const object = new Object;
    object->flags = flags;
    return {object, 0};
  }

  static void append(Piece& piece, std::u16string_view units) {
    if constexpr (StoringText<Storage>) {
      if (!units.empty())
        piece.object->storage.appendContentsOf(units);
    }
    piece.length += asInt(units.size());
  }

  static void removeUnits(Piece& piece, TextRange range) {
    if constexpr (StoringText<Storage>)
      piece.object->storage.removeSubrange(range);
    piece.length -= range.length();
  }

  // Leaves `current_` with what stays in front of the removed range and, if anything stays of the
  // line in which the range ends, that as `behind_`. Lines in between are dropped.
  void removeOldText() {
    const std::int64_t a = range_.lowerBound;
    const std::int64_t b = range_.upperBound;
    const std::int64_t start = currentStart_;
    const std::int64_t end = start + current_.length;
    if (start >= b)
      return; // An insertion at the start of a line touches nothing.
    if (end > b) {
      if (start < a)
        splitCurrent(a, b);
      else
        cutFrontOfCurrent(b);
      return;
    }
    const bool keepsCR = current_.object->flags == LineFlags::crlf && end - 1 == a;
    current_.object->flags = keepsCR ? LineFlags::cr : LineFlags::none;
    removeUnits(current_, {a - start, current_.length});
    for (; end_ < array_.objects_.size(); ++end_) {
      const TextRange line = array_.rangeOfLine(asInt(end_));
      if (line.lowerBound >= b)
        break;
      if (line.upperBound <= b) {
        dropped_.push_back(array_.objects_[end_]);
        continue;
      }
      behind_ = Piece{array_.objects_[end_], line.length()};
      cutFront(*behind_, b - line.lowerBound);
      ++end_;
      break;
    }
  }

  // The range lies strictly inside the current line, which keeps its front; the tail becomes a line
  // of its own.
  void splitCurrent(std::int64_t a, std::int64_t b) {
    Object& object = *current_.object;
    const std::int64_t front = a - currentStart_;
    const std::int64_t cut = b - currentStart_;
    Piece tail = newPiece(object.flags);
    if constexpr (StoringText<Storage>)
      detail::appendUnits(object.storage, {cut, current_.length}, tail.object->storage);
    tail.length = current_.length - cut;
    const bool cutsTerminator = object.flags == LineFlags::crlf && tail.length == 1;
    if (cutsTerminator)
      tail.object->flags = LineFlags::lf;
    // Between CR and LF the front keeps the CR; where the CR is removed, or no terminator is cut,
    // it keeps nothing.
    object.flags = cutsTerminator && a == b ? LineFlags::cr : LineFlags::none;
    removeUnits(current_, {front, current_.length});
    behind_ = tail;
  }

  // The range starts with the current line and ends inside it. What stays comes behind a new, empty
  // current line.
  void cutFrontOfCurrent(std::int64_t b) {
    behind_ = current_;
    cutFront(*behind_, b - currentStart_);
    current_ = newPiece(LineFlags::none);
  }

  static void cutFront(Piece& piece, std::int64_t count) {
    if (piece.object->flags == LineFlags::crlf && piece.length - 1 == count)
      piece.object->flags = LineFlags::lf; // The CR goes and the LF stays.
    removeUnits(piece, {0, count});
  }

  // Puts all pieces in order, the current line among them, and leaves the last that got text as the
  // tip.
  void insertNewText() {
    std::size_t consumed = 0;
    if (!text_.empty() && current_.object->flags == LineFlags::cr && text_.front() == u'\n' &&
        currentStart_ + current_.length == range_.lowerBound) {
      append(current_, text_.substr(0, 1));
      current_.object->flags = LineFlags::crlf;
      consumed = 1;
    }
    bool inFront = false;
    if (consumed < text_.size()) {
      const bool startsHere = currentStart_ == range_.lowerBound;
      if (!current_.object->flags.isEmpty() || (startsHere && current_.length != 0))
        inFront = startsHere;
      else
        consumed = appendToCurrent();
    }
    if (!inFront)
      pieces_.push_back(current_);
    while (consumed < text_.size()) {
      LineFlags flags;
      const std::size_t end = endOfPiece(consumed, flags);
      pieces_.push_back(newPiece(flags));
      append(pieces_.back(), text_.substr(consumed, end - consumed));
      consumed = end;
    }
    tip_ = pieces_.size() - 1;
    if (inFront)
      pieces_.push_back(current_);
    if (behind_)
      pieces_.push_back(*behind_);
  }

  // The text up to and including its first terminator goes on the end of the current line. Gives
  // how much that was.
  std::size_t appendToCurrent() {
    LineFlags flags;
    const std::size_t end = endOfPiece(0, flags);
    append(current_, text_.substr(0, end));
    current_.object->flags = flags;
    return end;
  }

  // Where the line of text that starts at `from` ends, and how.
  std::size_t endOfPiece(std::size_t from, LineFlags& flags) const {
    const std::size_t at = indexOfLineBreak(text_, from);
    if (at == text_.size()) {
      flags = LineFlags::none;
      return at;
    }
    if (text_[at] == u'\n') {
      flags = LineFlags::lf;
      return at + 1;
    }
    const bool pair = at + 1 < text_.size() && text_[at + 1] == u'\n';
    flags = pair ? LineFlags::crlf : LineFlags::cr;
    return at + (pair ? 2 : 1);
  }

  // A tip without a terminator runs on into the line behind it, and a CR at its end meets a lone LF
  // there.
  void joinBehind() {
    if (tip_ + 1 == pieces_.size()) {
      if (end_ == array_.objects_.size())
        return;
      pieces_.push_back({array_.objects_[end_], array_.rangeOfLine(asInt(end_)).length()});
      ++end_;
    }
    Piece& tip = pieces_[tip_];
    const Piece next = pieces_[tip_ + 1];
    const bool completesPair = tip.object->flags == LineFlags::cr &&
                               next.object->flags == LineFlags::lf && next.length == 1;
    if (!tip.object->flags.isEmpty() && !completesPair)
      return;
    if constexpr (StoringText<Storage>)
      detail::appendUnits(next.object->storage, {0, next.length}, tip.object->storage);
    tip.length += next.length;
    tip.object->flags |= next.object->flags;
    dropped_.push_back(next.object);
    pieces_.erase(pieces_.begin() + static_cast<std::ptrdiff_t>(tip_) + 1);
  }

  void keepTrailingLine() {
    const Piece& last = pieces_.back();
    if (end_ == array_.objects_.size() && !last.object->flags.isEmpty() && last.length != 0)
      pieces_.push_back(newPiece(LineFlags::none));
  }

  UTF16LineArray& array_;
  TextRange range_;
  std::u16string_view text_;
  std::size_t first_;
  std::size_t end_;
  /// The line that holds the start of the range, and where it starts.
  Piece current_;
  std::int64_t currentStart_;
  /// What is left of the line that holds the end of the range, if that is a line of its own now.
  std::optional<Piece> behind_;
  std::vector<Piece>& pieces_;
  /// The index in `pieces_` of the last line that holds new text, or of the current line if there
  /// is none.
  std::size_t tip_ = 0;
  std::vector<Object*>& dropped_;
};

template <class Storage>
void UTF16LineArray<Storage>::replaceSubrange(TextRange range, std::u16string_view text) {
  precondition(range.lowerBound >= 0 && range.upperBound <= count(),
               "An edit reaches outside the text.");
  precondition(text.size() <=
                   std::numeric_limits<std::uint32_t>::max() - asSize(count() - range.length()),
               "A text can't hold more than 4,294,967,295 code units.");
  if (!replaceInsideLine(range, text))
    Edit(*this, range, text).perform();
}

template <class Storage>
void UTF16LineArray<Storage>::replaceSubrange(TextRange range, std::string_view utf8) {
  replaceSubrange(range, utf16RepairingUTF8(utf8));
}

// Most edits follow another one in the same line, which spares them the search.
template <class Storage>
std::size_t UTF16LineArray<Storage>::indexOfEditedLine(std::int64_t offset) const {
  const std::size_t guess = starts_.lastEdited();
  const bool holds = offset >= starts_[guess] && offset < starts_[guess + 1];
  return holds ? guess : asSize(indexOfLineContaining(offset));
}

// Nearly all edits: no terminator comes, goes or is touched, so the line only gets longer or
// shorter.
template <class Storage>
bool UTF16LineArray<Storage>::replaceInsideLine(TextRange range, std::u16string_view text) {
  const std::size_t index = indexOfEditedLine(range.lowerBound);
  Object& object = *objects_[index];
  if (range.upperBound >
      static_cast<std::int64_t>(starts_[index + 1]) - object.flags.lineEndingCount())
    return false;
  if (hasLineBreak(text))
    return false;
  if constexpr (StoringText<Storage>) {
    const std::int64_t start = starts_[index];
    object.storage.replaceSubrange({range.lowerBound - start, range.upperBound - start}, text);
  }
  const auto delta =
      static_cast<std::uint32_t>(static_cast<std::int64_t>(text.size()) - range.length());
  if (delta != 0)
    starts_.shiftBehind(index, delta); // a negative delta wraps around, and so do the sums
  return true;
}

// Puts `pieces` in place of the lines `first` up to `end`, and moves the starts behind by `delta`.
template <class Storage>
void UTF16LineArray<Storage>::splice(std::size_t first, std::size_t end,
                                     std::span<const Piece> pieces, std::int64_t delta) {
  const std::size_t kept = objects_.size() - end;
  const std::size_t behind = first + pieces.size();
  if (behind > end)
    detail::resizeWithRoom(objects_, behind + kept);
  std::memmove(objects_.data() + behind, objects_.data() + end, kept * sizeof(Object*));
  objects_.resize(behind + kept);
  std::uint32_t start = starts_[first];
  const auto starts = starts_.replace(first, end, pieces.size(), static_cast<std::uint32_t>(delta));
  for (std::size_t index = 0; index < pieces.size(); ++index) {
    objects_[first + index] = pieces[index].object;
    starts[index] = start;
    start += static_cast<std::uint32_t>(pieces[index].length);
  }
}

template <class Storage>
void UTF16LineArray<Storage>::checkInvariants() const {
  precondition(!objects_.empty() && starts_.count() == objects_.size() + 1,
               "A text has at least one line.");
  precondition(starts_[0] == 0, "The first line starts at 0.");
  precondition(objects_.back()->flags.isEmpty(), "The last line has no terminator.");
  for (std::size_t index = 0; index < objects_.size(); ++index) {
    const Object& object = *objects_[index];
    const bool last = index + 1 == objects_.size();
    precondition(object.references > 0, "A line of the text has been released.");
    precondition(starts_[index] <= starts_[index + 1], "Lines are in order.");
    precondition(last || starts_[index] < starts_[index + 1], "Only the last line can be empty.");
    precondition(last || !object.flags.isEmpty(), "Every line but the last has a terminator.");
    if constexpr (ContiguousLineStorage<Storage>) {
      const std::u16string_view units = object.storage.codeUnits();
      precondition(units.size() == starts_[index + 1] - starts_[index],
                   "A line's text is as long as its range.");
      const std::u16string_view ending =
          units.substr(units.size() - asSize(object.flags.lineEndingCount()));
      precondition(ending == (object.flags == LineFlags::crlf ? u"\r\n"
                              : object.flags == LineFlags::cr ? u"\r"
                              : object.flags == LineFlags::lf ? u"\n"
                                                              : u""),
                   "A line's text ends as its flags say.");
      precondition(indexOfLineBreak(units, 0) == units.size() - ending.size(),
                   "A line holds one terminator.");
    }
  }
}

template <class Storage>
auto UTF16LineArray<Storage>::memory() const -> Memory {
  Memory memory;
  if constexpr (requires(const Storage storage) { storage.allocatedBytes(); })
    for (const Object* object : objects_)
      memory.text += static_cast<std::int64_t>(object->storage.allocatedBytes());
  memory.lines = static_cast<std::int64_t>(
      sizeof *this + starts_.allocatedBytes() + objects_.capacity() * sizeof(Object*) +
      objects_.size() * sizeof(Object) + pieces_.capacity() * sizeof(Piece) +
      dropped_.capacity() * sizeof(Object*));
  return memory;
}

} // namespace velmar
