#include "VelmarCore/Text/UTF16LineArray.h"

#include "VelmarCore/Text/UTF16LineArray.inl.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <random>

namespace velmar {
namespace {

using Boundaries = UTF16LineArray<NoLineStorage>;

/// A storage that isn't contiguous, as the interface allows, so text has to move in batches.
class DequeStorage {
public:
  std::int64_t count() const { return static_cast<std::int64_t>(units_.size()); }
  char16_t operator[](std::int64_t index) const { return units_[static_cast<std::size_t>(index)]; }
  std::u16string substringFor(TextRange range) const {
    return {at(range.lowerBound), at(range.upperBound)};
  }
  void copySubrange(TextRange range, std::span<char16_t> buffer) const {
    std::copy(at(range.lowerBound), at(range.upperBound), buffer.begin());
  }
  void replaceSubrange(TextRange range, std::u16string_view units) {
    units_.erase(at(range.lowerBound), at(range.upperBound));
    units_.insert(at(range.lowerBound), units.begin(), units.end());
  }
  void appendContentsOf(std::u16string_view units) {
    largestAppend = std::max(largestAppend, units.size());
    units_.insert(units_.end(), units.begin(), units.end());
  }
  void removeSubrange(TextRange range) { replaceSubrange(range, {}); }

  static inline std::size_t largestAppend = 0;

private:
  std::deque<char16_t>::const_iterator at(std::int64_t index) const {
    return units_.begin() + index;
  }
  std::deque<char16_t> units_;
};
static_assert(UTF16LineArrayStorage<DequeStorage> && !ContiguousLineStorage<DequeStorage>);

/// The lines of a text that is split afresh.
std::vector<std::u16string> splitLines(const std::u16string& text) {
  std::vector<std::u16string> lines(1);
  for (std::size_t index = 0; index < text.size(); ++index) {
    lines.back() += text[index];
    const bool pair = text[index] == u'\r' && index + 1 < text.size() && text[index + 1] == u'\n';
    if (!pair && (text[index] == u'\n' || text[index] == u'\r'))
      lines.emplace_back();
  }
  return lines;
}

/// The same text as a list of strings. An edit splits afresh from the start of the line where it
/// begins to the end of the line where it ends, and looks at nothing in front of or behind that.
struct Model {
  std::vector<std::u16string> lines{u""};

  std::u16string text() const {
    std::u16string whole;
    for (const auto& line : lines)
      whole += line;
    return whole;
  }

  /// The line of an offset and the column in it; an offset at a boundary belongs to the line
  /// behind.
  std::pair<std::size_t, std::size_t> find(std::size_t offset) const {
    for (std::size_t index = 0; index + 1 < lines.size(); ++index) {
      if (offset < lines[index].size())
        return {index, offset};
      offset -= lines[index].size();
    }
    return {lines.size() - 1, offset};
  }

  void replace(std::size_t a, std::size_t b, const std::u16string& with) {
    const auto [first, firstColumn] = find(a);
    const auto [last, lastColumn] = find(b);
    auto changed =
        splitLines(lines[first].substr(0, firstColumn) + with + lines[last].substr(lastColumn));
    const bool atEnd = last + 1 == lines.size();
    if (changed.back().empty() && !atEnd)
      changed.pop_back();
    const auto at = lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(first),
                                lines.begin() + static_cast<std::ptrdiff_t>(last) + 1);
    lines.insert(at, changed.begin(), changed.end());
  }
};

LineFlags flagsOf(const std::u16string& line) {
  if (line.ends_with(u"\r\n"))
    return LineFlags::crlf;
  return line.ends_with(u"\n")   ? LineFlags::lf
         : line.ends_with(u"\r") ? LineFlags::cr
                                 : LineFlags::none;
}

template <class Storage>
void expectEqual(const UTF16LineArray<Storage>& array, const Model& model) {
  array.checkInvariants();
  ASSERT_EQ(array.lineCount(), static_cast<std::int64_t>(model.lines.size()));
  std::int64_t start = 0;
  for (const auto line : array.lines()) {
    const auto& expected = model.lines[static_cast<std::size_t>(line.index())];
    const auto end = start + static_cast<std::int64_t>(expected.size());
    ASSERT_EQ(line.range(), TextRange(start, end));
    ASSERT_EQ(line.flags(), flagsOf(expected));
    if constexpr (StoringText<Storage>) {
      ASSERT_EQ(line.substring(), expected);
    }
    start = end;
  }
  ASSERT_EQ(array.count(), start);
}

TEST(UTF16LineArray, RandomEditsGiveTheLinesOfTheModel) {
  constexpr std::u16string_view alphabet = u"ab\r\n\r\n\n\u00e9\xD83D\xDE00";
  std::mt19937 random(7);
  const auto below = [&](std::size_t bound) {
    return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
  };
  for (int session = 0; session < 60; ++session) {
    UTF16LineArray<> array;
    Boundaries boundaries;
    UTF16LineArray<DequeStorage> slow;
    Model model;
    for (int step = 0; step < 150; ++step) {
      const std::size_t count = static_cast<std::size_t>(array.count());
      const std::size_t a = below(count + 1);
      const std::size_t reach = below(4) == 0 ? count - a : std::min<std::size_t>(count - a, 6);
      const std::size_t b = count > 200 ? count : a + below(reach + 1);
      std::u16string text;
      for (std::size_t length = below(3) == 0 ? below(9) : below(2); length > 0; --length)
        text += alphabet[below(alphabet.size())];
      SCOPED_TRACE(testing::Message() << "session " << session << " step " << step << ": " << a
                                      << "..<" << b << " with " << testing::PrintToString(text)
                                      << " in " << testing::PrintToString(model.text()));
      const TextRange range(static_cast<std::int64_t>(a), static_cast<std::int64_t>(b));
      model.replace(a, b, text);
      array.replaceSubrange(range, text);
      boundaries.replaceSubrange(range, text);
      slow.replaceSubrange(range, text);
      expectEqual(array, model);
      expectEqual(boundaries, model);
      expectEqual(slow, model);
      if (HasFatalFailure())
        return;
      ASSERT_EQ(array.substringFor({0, array.count()}), model.text());
    }
  }
}

/// "abc␍␊|def": the lines of an array, with the terminators made visible and a bar between lines.
std::u16string shown(const UTF16LineArray<>& array) {
  std::u16string text;
  for (const auto line : array.lines()) {
    if (line.index() > 0)
      text += u'|';
    for (const char16_t unit : line.codeUnits())
      text += unit == u'\r' ? u'␍' : unit == u'\n' ? u'␊' : unit;
  }
  return text;
}

struct EditCase {
  const char* name;
  std::u16string before;
  TextRange range;
  std::u16string text;
  std::u16string after;
};
class UTF16LineArrayEdit : public testing::TestWithParam<EditCase> {};

TEST_P(UTF16LineArrayEdit, GivesTheLines) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, GetParam().before);
  array.replaceSubrange(GetParam().range, GetParam().text);
  EXPECT_EQ(shown(array), GetParam().after);
  array.checkInvariants();
}

INSTANTIATE_TEST_SUITE_P(
    Cases, UTF16LineArrayEdit,
    testing::Values(
        EditCase{"ATerminatorAtTheEndOpensAnEmptyLine", u"", {0, 0}, u"abc\n", u"abc␊|"},
        EditCase{"LFThenCRAreTwoEndings", u"", {0, 0}, u"a\n\rb", u"a␊|␍|b"},
        EditCase{"OnlyCRAndLFEndLines",
                 u"",
                 {0, 0},
                 u"a\f\v\u0085\u2028\u2029b",
                 u"a\f\v\u0085\u2028\u2029b"},
        EditCase{"RemovingAllLeavesOneEmptyLine", u"a\nb\r\nc", {0, 6}, u"", u""},
        EditCase{"RemovingATerminatorJoins", u"ab\ncd", {2, 3}, u"", u"abcd"},
        EditCase{"ALineFeedSplits", u"ab", {1, 1}, u"\n", u"a␊|b"},
        EditCase{"TextInFrontOfATerminator", u"\n", {0, 0}, u"x", u"x␊|"},
        EditCase{"ALineInFront", u"ab", {0, 0}, u"x\n", u"x␊|ab"},
        EditCase{"InsideCRLFSplitsIt", u"a\r\nb", {2, 2}, u"x", u"a␍|x␊|b"},
        EditCase{"LFInsideCRLFCompletesTheCR", u"a\r\nb", {2, 2}, u"\n", u"a␍␊|␊|b"},
        EditCase{"CRInsideCRLFCompletesTheLF", u"a\r\nb", {2, 2}, u"\r", u"a␍|␍␊|b"},
        EditCase{"RemovingTheCRKeepsTheLF", u"a\r\nb", {1, 2}, u"", u"a␊|b"},
        EditCase{"RemovingTheLFKeepsTheCR", u"a\r\nb", {2, 3}, u"", u"a␍|b"},
        EditCase{"RemovingUpToTheLFKeepsIt", u"ab\r\nc", {0, 3}, u"", u"␊|c"},
        EditCase{"LFBehindALoneCRStaysAlone", u"a\rb", {2, 2}, u"\n", u"a␍|␊|b"},
        EditCase{"CRAndLFBroughtTogetherStayApart", u"a\rb\n", {2, 3}, u"", u"a␍|␊|"},
        EditCase{"CRInFrontOfAnLFLineJoins", u"ab\n", {2, 2}, u"\r", u"ab␍␊|"},
        EditCase{"CRTypedAtAnEmptyLFLineJoins", u"a\n\nb", {2, 2}, u"x\r", u"a␊|x␍␊|b"},
        EditCase{"LinesInBetweenGo", u"a\nb\nc\nd", {1, 5}, u"--", u"a--␊|d"},
        EditCase{"ManyLinesInTheMiddleOfOne", u"ab", {1, 1}, u"1\n2\r\n3\r4", u"a1␊|2␍␊|3␍|4b"},
        EditCase{"AtTheVeryEnd", u"ab\n", {3, 3}, u"c\nd", u"ab␊|c␊|d"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(UTF16LineArray, ANewArrayHasOneEmptyLine) {
  const UTF16LineArray<> array;
  EXPECT_EQ(array.lines().count(), 1);
  EXPECT_EQ(array.lineContaining(0).range(), TextRange(0, 0));
  EXPECT_TRUE(array.lineContaining(0).flags().isEmpty());
}

TEST(UTF16LineArray, EditsAroundALineLeaveItTheSameObject) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, u"one\ntwo\nthree");
  const void* const two = array.line(1).identity();
  array.replaceSubrange({5, 5}, u"x");          // inside
  array.replaceSubrange({0, 0}, u"zero\n");     // a line in front
  array.replaceSubrange({1, 2}, u"");           // in the first line
  array.replaceSubrange({15, 16}, u"\r\n\r\n"); // behind
  EXPECT_EQ(array.line(2).identity(), two);
  EXPECT_EQ(array.line(2).substring(), u"txwo\n");
  array.replaceSubrange({0, array.count()}, u"");
  EXPECT_EQ(array.lineCount(), 1);
}

TEST(UTF16LineArray, TheFirstLineSurvivesTheRemovalOfAll) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, u"ab\ncd");
  const void* const first = array.line(0).identity();
  array.replaceSubrange({0, 5}, u"");
  EXPECT_EQ(array.line(0).identity(), first);
}

TEST(UTF16LineArray, ALineHeldOverItsRemovalIsHarmless) {
  std::optional<Line<UTF16LineArrayStringStorage>> held;
  {
    UTF16LineArray<> array;
    array.replaceSubrange({0, 0}, u"a\r\nbcd\ne");
    held.emplace(array.line(1));
    array.replaceSubrange({1, 8}, u"");
    EXPECT_EQ(array.lineCount(), 1);
  }
  EXPECT_EQ(held->range(), TextRange(3, 7));
  EXPECT_EQ(held->contentsRange(), TextRange(3, 6));
  EXPECT_EQ(held->description(), "Line<LF, 3..<7>");
  (void)held->substring();
}

TEST(UTF16LineArray, TextMovesInBoundedBatches) {
  UTF16LineArray<DequeStorage> array;
  const std::u16string longLine(5000, u'x');
  array.replaceSubrange({0, 0}, longLine + u"\n" + longLine);
  DequeStorage::largestAppend = 0;
  array.replaceSubrange({5000, 5001}, u"");
  EXPECT_EQ(array.substringFor({0, 10000}), longLine + longLine);
  EXPECT_EQ(DequeStorage::largestAppend, 1024U);
}

TEST(UTF16LineArray, CopiesBetweenTheForms) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, u"a\r\nbb\rc");
  const auto boundaries = Boundaries::fromContentsOf(array);
  const auto copy = UTF16LineArray<>::fromContentsOf(array);
  array.replaceSubrange({0, 7}, u"");
  EXPECT_EQ(shown(copy), u"a␍␊|bb␍|c");
  EXPECT_EQ(boundaries.lineCount(), 3);
  EXPECT_EQ(boundaries.line(1).range(), TextRange(3, 6));
  boundaries.checkInvariants();
}

TEST(UTF16LineArray, LoneSurrogatesAreKeptAndUTF8IsTaken) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, std::u16string{u'a', 0xD800, u'b'});
  EXPECT_EQ(array[1], char16_t{0xD800});
  array.replaceSubrange({1, 2}, "\xF0\x9F\x98\x80");
  EXPECT_EQ(array.substringFor({0, 4}), u"a\U0001F600b");
}

struct BoundaryCase {
  std::int64_t offset;
  LineAffinity affinity;
  LineBoundaries<std::int64_t> expected;
};

TEST(UTF16LineArray, BoundariesFollowTheAffinityAtALineStart) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, u"abc\ndef");
  using enum LineAffinity;
  const BoundaryCase cases[] = {{4, upstream, {0, 4, 3}}, {4, downstream, {4, 7, 7}},
                                {0, upstream, {0, 4, 3}}, {0, downstream, {0, 4, 3}},
                                {2, upstream, {0, 4, 3}}, {7, upstream, {4, 7, 7}}};
  for (const auto& [offset, affinity, expected] : cases) {
    const auto found = array.lineBoundariesFor(offset, affinity);
    EXPECT_EQ(found.range(), expected.range()) << offset;
    EXPECT_EQ(found.contentsRange(), expected.contentsRange()) << offset;
  }
  EXPECT_EQ(array.lineBoundariesFor({1, 4}).contentsRange(), TextRange(0, 3));
  EXPECT_EQ(array.lineBoundariesFor({1, 5}).range(), TextRange(0, 7));
}

TEST(UTF16LineArray, LinesIntersectingLeavesOutALineThatIsOnlyReached) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, u"abc\ndef\n");
  struct Case {
    TextRange range;
    Range<std::int64_t> lines;
  };
  const Case cases[] = {{{0, 4}, {0, 1}}, {{0, 5}, {0, 2}}, {{4, 4}, {1, 2}}, {{3, 4}, {0, 1}},
                        {{4, 8}, {1, 2}}, {{8, 8}, {2, 3}}, {{0, 8}, {0, 2}}, {{7, 8}, {1, 2}}};
  for (const auto& [range, lines] : cases) {
    const auto view = array.linesIntersecting(range);
    EXPECT_EQ(Range(view.startIndex(), view.endIndex()), lines) << range;
    for (std::int64_t index = view.startIndex(); index < view.endIndex(); ++index)
      EXPECT_EQ(view[index].index(), index);
  }
  EXPECT_EQ(array.linesIntersecting(Range<TextPosition>({0, 0}, {1, 0})).count(), 1);
  EXPECT_EQ(array.linesIntersecting(Range<TextPosition>({0, 0}, {1, 1})).count(), 2);
  EXPECT_TRUE(array.linesIntersecting(Range<TextPosition>({1, 0}, {1, 0})).isEmpty());
}

TEST(UTF16LineArray, PositionsAndOffsetsConvert) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, u"ab\r\nc\n");
  EXPECT_EQ(array.positionOf(3), (TextPosition{0, 3}));
  EXPECT_EQ(array.positionOf(4), (TextPosition{1, 0}));
  EXPECT_EQ(array.positionOf(6), (TextPosition{2, 0}));
  EXPECT_EQ(array.indexOf({1, 1}), 5);
  EXPECT_EQ(array.indexOf({0, 5}), 5) << "a column past the line's end runs on";
  EXPECT_EQ(array.positionsOf({1, 5}), Range<TextPosition>({0, 1}, {1, 1}));
  EXPECT_EQ(array.indexRangeOf({{0, 1}, {1, 1}}), TextRange(1, 5));
  EXPECT_EQ(array.substringFor(Range<TextPosition>({0, 1}, {1, 1})), u"b\r\nc");
}

TEST(UTF16LineArray, ALoneCRCanBeDeliveredAsLF) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, u"a\rb\r\nc");
  const auto copied = [&](TextRange range) {
    std::u16string buffer(static_cast<std::size_t>(range.length()), u'?');
    array.copyCodeUnits(range, LineArrayCodeUnitOptions::enforceLFLineEnding, buffer);
    return buffer;
  };
  EXPECT_EQ(copied({0, 6}), u"a\nb\r\nc");
  EXPECT_EQ(copied({1, 2}), u"\n");
  EXPECT_EQ(copied({0, 1}), u"a");
}

TEST(UTF16LineArrayDeathTest, OffsetsOutsideTheTextStopTheProcess) {
  UTF16LineArray<> array;
  array.replaceSubrange({0, 0}, u"ab\nc");
  EXPECT_DEATH((void)array.lineContaining(5), "outside the text");
  EXPECT_DEATH((void)array.lineContaining(-1), "outside the text");
  EXPECT_DEATH(array.replaceSubrange({3, 5}, u""), "outside the text");
  EXPECT_DEATH((void)array.line(2), "outside the text");
  EXPECT_DEATH((void)array.substringFor({2, 5}), "outside the text");
  EXPECT_DEATH((void)TextRange(2, 1), "upper bound lies before");
}

} // namespace
} // namespace velmar
