#include "host/TreeWatch.h"

#include "VelmarCore/Text/UTF16LineArray.h"
#include "host/LanguageChoice.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <random>

namespace velmar::host {
namespace {

using ::testing::HasSubstr;
using velmar::testing::TemporaryFolder;
using Event = FileWatch::Event;

// Changes are reported by the system in the order in which they are made, so nothing here has to
// wait for any: what has happened can be asked for at once.
constexpr std::chrono::milliseconds atOnce{0};

struct ReplacementCase {
  const char* name;
  std::u16string_view before;
  std::u16string_view after;
  TextRange range;
  std::u16string_view text;
};
class ReplacementBetween : public ::testing::TestWithParam<ReplacementCase> {};
TEST_P(ReplacementBetween, IsTheMiddle) {
  const Replacement edit = replacementBetween(GetParam().before, GetParam().after);
  EXPECT_EQ(edit.range, GetParam().range);
  EXPECT_EQ(edit.text, GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, ReplacementBetween,
    ::testing::Values(ReplacementCase{"Equal", u"abc", u"abc", {3, 3}, u""},
                      ReplacementCase{"Empty", u"", u"", {0, 0}, u""},
                      ReplacementCase{"Insertion", u"ac", u"abc", {1, 1}, u"b"},
                      ReplacementCase{"Deletion", u"abc", u"ac", {1, 2}, u""},
                      ReplacementCase{"RepeatedLetter", u"aaa", u"aaaa", {3, 3}, u"a"},
                      ReplacementCase{"All", u"abc", u"xyz", {0, 3}, u"xyz"},
                      // U+1F600 and U+1F601 share their first unit, U+1F600 and U+1FA00 the last.
                      ReplacementCase{"FirstHalf", u"a😀b", u"a😁b", {1, 3}, u"😁"},
                      ReplacementCase{"SecondHalf", u"a😀b", u"a🨀b", {1, 3}, u"🨀"},
                      ReplacementCase{"LFBehindCR", u"a\rb", u"a\r\nb", {1, 2}, u"\r\n"},
                      ReplacementCase{"CRBeforeLF", u"a\nb", u"a\r\nb", {1, 2}, u"\r\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ReplacementBetween, MakesTheLinesOfAFreshText) {
  std::mt19937 random(5);
  constexpr char16_t units[] = {u'a', u'\r', u'\n', 0xD83D, 0xDE00};
  const auto text = [&] {
    std::u16string made(random() % 8, u'a');
    for (char16_t& unit : made)
      unit = units[random() % std::size(units)];
    return made;
  };
  for (int round = 0; round < 20'000; ++round) {
    const std::u16string before = text();
    const std::u16string after = text();
    DocumentText edited;
    edited.replaceSubrange({0, 0}, before);
    const Replacement edit = replacementBetween(before, after);
    edited.replaceSubrange(edit.range, edit.text);
    DocumentText fresh;
    fresh.replaceSubrange({0, 0}, after);
    ASSERT_EQ(edited.substringFor({0, edited.count()}), after) << round;
    ASSERT_EQ(edited.lineCount(), fresh.lineCount()) << round;
  }
}

class FileWatchTest : public ::testing::Test {
protected:
  TemporaryFolder folder;
  std::string file = folder.write("a.json", "[1]");
};

TEST_F(FileWatchTest, TellsOfWritingOnceHoweverOftenItHappened) {
  FileWatch watch{FilePath(file)};
  EXPECT_EQ(watch.wait(atOnce), Event::timedOut);
  folder.write("a.json", "[1, 2]");
  folder.write("a.json", "[1, 2, 3]");
  EXPECT_EQ(watch.wait(atOnce), Event::changed);
  EXPECT_EQ(watch.wait(atOnce), Event::timedOut);
}

TEST_F(FileWatchTest, OtherFilesOfTheFolderDoNotCount) {
  FileWatch watch{FilePath(file)};
  folder.write("b.json", "[]");
  EXPECT_EQ(watch.wait(atOnce), Event::timedOut);
}

TEST_F(FileWatchTest, TellsOfANewFileInThePlaceOfTheOld) {
  FileWatch watch{FilePath(file)};
  for (int round = 0; round < 3; ++round) {
    std::filesystem::rename(folder.write("a.json.new", "[]"), file);
    EXPECT_EQ(watch.wait(atOnce), Event::changed);
  }
  std::filesystem::remove(file);
  EXPECT_EQ(watch.wait(atOnce), Event::changed);
}

TEST_F(FileWatchTest, FollowsALinkAlsoToAnotherTarget) {
  const std::string first = folder.write("x/one.json", "[]");
  const std::string second = folder.write("y/two.json", "[]");
  const std::string link = folder.path + "/link.json";
  std::filesystem::create_symlink(first, link);
  FileWatch watch{FilePath(link)};
  folder.write("x/one.json", "[1]");
  EXPECT_EQ(watch.wait(atOnce), Event::changed);

  std::filesystem::create_symlink(second, folder.path + "/new");
  std::filesystem::rename(folder.path + "/new", link);
  EXPECT_EQ(watch.wait(atOnce), Event::changed);
  folder.write("y/two.json", "[2]");
  EXPECT_EQ(watch.wait(atOnce), Event::changed);
}

TEST_F(FileWatchTest, InterruptionsEndTheWaitingAndNotTheProcess) {
  FileWatch watch{FilePath(file)};
  ASSERT_EQ(std::raise(SIGINT), 0);
  EXPECT_EQ(watch.wait(), Event::interrupted);
}

TEST_F(FileWatchTest, ALostFolderIsAnError) {
  FileWatch watch{FilePath(folder.write("gone/a.json", "[]"))};
  std::filesystem::remove_all(folder.path + "/gone");
  // The file goes first.
  EXPECT_THROW(static_cast<void>(watch.wait(atOnce)), SystemError);
}

TEST(FileWatch, ThereMustBeAFolder) {
  EXPECT_THROW(FileWatch(FilePath("/nowhere/at/all.c")), SystemError);
}

TEST_F(FileWatchTest, ADocumentFollowsItsFile) {
  StringOutput output;
  StringOutput errors;
  std::chrono::nanoseconds time{0};
  Streams streams{.readInput = [](std::int64_t) { return Bytes(); },
                  .output = output,
                  .errors = errors,
                  .now = [&] { return time += std::chrono::milliseconds(1); }};
  FileWatch watch{FilePath(file)};
  const auto document = OpenDocument::fromFile(file, {}, streams);

  folder.write("a.json", "[1,\n 22]");
  ASSERT_EQ(std::raise(SIGTERM), 0); // Told behind the change.
  watchDocument(*document, file, watch, streams);
  EXPECT_THAT(output.text(), ::testing::MatchesRegex(
                                 "1:3 -0 \\+5 units, changed 1:[123]-2:[34], 1 layers, 1.00 ms\n"));
  EXPECT_EQ(document->parse().textFor(TextRange(0, document->parse().count())), u"[1,\n 22]");
}

TEST_F(FileWatchTest, AFileThatIsGoneIsComplainedOf) {
  StringOutput output;
  StringOutput errors;
  Streams streams{.readInput = [](std::int64_t) { return Bytes(); },
                  .output = output,
                  .errors = errors,
                  .now = [] { return std::chrono::nanoseconds(0); }};
  FileWatch watch{FilePath(file)};
  const auto document = OpenDocument::fromFile(file, {}, streams);
  std::filesystem::remove(file);
  ASSERT_EQ(std::raise(SIGINT), 0);
  watchDocument(*document, file, watch, streams);
  EXPECT_EQ(output.text(), "");
  EXPECT_THAT(errors.text(), HasSubstr("No such file or directory"));
}

} // namespace
} // namespace velmar::host
