#include "VelmarPlatform/Concurrency/AsyncBytes.h"

#include "Support.h"
#include "VelmarPlatform/Concurrency/Socket.h"

#include <gmock/gmock.h>

namespace velmar {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using testing_support::run;

Bytes bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return Bytes(view.begin(), view.end());
}

/// The lines of what is written piece by piece, each piece once the reader has had the one before.
std::vector<std::string> linesOf(std::vector<std::string> pieces, AsyncLinesOptions options = {}) {
  return run([&]() -> Task<std::vector<std::string>> {
    const auto ends = makeSocketPair();
    auto writing = spawn([ours = ends.first, pieces]() -> Task<void> {
      for (const std::string& piece : pieces)
        co_await ours->write(bytes(piece));
      ours->close();
    });
    AsyncLines lines = AsyncBytes(ends.second).lines(options);
    std::vector<std::string> heard;
    while (auto line = co_await lines.next())
      heard.push_back(std::move(*line));
    co_await writing.value();
    co_return heard;
  });
}

struct LinesCase {
  const char* name;
  std::vector<std::string> pieces;
  AsyncLinesOptions options;
  std::vector<std::string> lines;
};
void PrintTo(const LinesCase& row, std::ostream* stream) {
  *stream << row.name;
}
class AsyncLinesOfText : public testing::TestWithParam<LinesCase> {};

TEST_P(AsyncLinesOfText, AreThese) {
  EXPECT_THAT(linesOf(GetParam().pieces, GetParam().options), ElementsAreArray(GetParam().lines));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, AsyncLinesOfText,
    testing::Values(
        LinesCase{"NothingAtAll", {}, {}, {}}, LinesCase{"AnEmptyLine", {"\n"}, {}, {"\n"}},
        LinesCase{"TheLastWithoutItsLineFeed", {"a\r\n\nb"}, {}, {"a\r\n", "\n", "b"}},
        LinesCase{
            "WithoutLineFeeds", {"a\r\n\nb"}, {.lineFeeds = LineFeeds::drop}, {"a\r", "", "b"}},
        LinesCase{
            "InPiecesThatCutCharacters", {"a\xC3", "\xA4", "\nb", "c\n"}, {}, {"aä\n", "bc\n"}},
        LinesCase{"RepairedWhereTheyAreNoText", {"\xFFx\xC3\n"}, {}, {"\uFFFDx\uFFFD\n"}},
        LinesCase{
            "CutWhereTheyAreTooLong",
            {"abcdef\nabcd\nabcäö\n\x80\x80\x80\x80\x80\n"},
            {.maximumLength = 4},
            {"abcd", "ef\n", "abcd\n", "abc", "äö\n", "\uFFFD\uFFFD\uFFFD\uFFFD", "\uFFFD\n"}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(AsyncLines, AreTheTextWhenPutTogether) {
  std::vector<std::string> pieces;
  std::string text;
  for (std::size_t i = 0; i < 300; ++i) {
    pieces.push_back(std::string(i * 37 % 3001, static_cast<char>('a' + i % 26)) +
                     (i % 3 == 0 ? "\n" : ""));
    text += pieces.back();
  }
  std::string together;
  for (const std::string& line : linesOf(pieces)) {
    EXPECT_EQ(line.find('\n'), together.size() + line.size() == text.size() && text.back() != '\n'
                                   ? std::string::npos
                                   : line.size() - 1);
    together += line;
  }
  EXPECT_EQ(together, text);
}

TEST(AsyncLines, ABatchIsWhatIsThereAndACancelledReadLosesNothing) {
  run([]() -> Task<void> {
    auto [ours, theirs] = makeSocketPair();
    auto lines = std::make_shared<AsyncLines>(AsyncBytes(theirs));
    co_await ours->write(bytes("a\nb\nrest"));
    EXPECT_THAT(co_await lines->nextBatch(), ElementsAre("a\n", "b\n"));
    auto waiting = spawn([lines] { return lines->next(); });
    waiting.cancel();
    const auto outcome = co_await waiting.outcome();
    EXPECT_FALSE(static_cast<bool>(outcome));
    co_await ours->write(bytes(" of it\n"));
    ours->close();
    EXPECT_THAT(co_await lines->nextBatch(), ElementsAre("rest of it\n"));
    EXPECT_THAT(co_await lines->nextBatch(), ElementsAre());
  });
}

TEST(AsyncBytes, EndReadingGivesWhatIsThereAndThenTheEndThoughTheOtherSideIsOpen) {
  run([]() -> Task<void> {
    auto [ours, theirs] = makeSocketPair();
    int ends = 0;
    const AsyncBytes reader(theirs, [&ends] { ++ends; });
    co_await ours->write(bytes("last"));
    theirs->endReading();
    EXPECT_EQ(co_await reader.next(), bytes("last"));
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(co_await reader.next(), std::nullopt);
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(theirs->isHungUp());
    ours->close();
    EXPECT_TRUE(theirs->isHungUp());
  });
}

TEST(AsyncBytes, EndReadingWakesWhoWaits) {
  auto ends = makeSocketPair();
  const auto theirs = ends.second;
  auto waiting = spawn([theirs] { return AsyncBytes(theirs).next(); });
  auto ending = spawn([theirs] { theirs->endReading(); });
  testing_support::runUntil([&] { return waiting.isFinished(); });
  EXPECT_EQ(std::move(waiting).takeValue(), std::nullopt);
}

} // namespace
} // namespace velmar
