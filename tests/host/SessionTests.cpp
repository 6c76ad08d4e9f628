#include "host/Session.h"

#include "host/RandomSession.h"

#include <gmock/gmock.h>

namespace velmar::host {
namespace {

using ::testing::HasSubstr;

TEST(Session, IsReadAsItIsWritten) {
  const Session session{.language = "html",
                        .initial = u"a\n\r\n\t\"\\ 日😀\xD83D\n\x1b\u202e end",
                        .edits = {{.range = {3, 5}, .text = u"x\n", .expected = 0xFEDC},
                                  {.range = {0, 0}, .text = u""}},
                        .expectedFinal = 1};
  const std::string text = writtenSession(session);
  EXPECT_EQ(text, R"(velmar session 1
language html
text "a\n"
text "\r\n"
text "\t\"\\ 日😀\u{d83d}\n"
text "\u{1b}\u{202e} end"
edit 3 2 "x\n"
expect 000000000000fedc
edit 0 0 ""
final 0000000000000001
)");
  Session read = readSession(text);
  EXPECT_EQ(read.edits[0].line, 7);
  EXPECT_EQ(read.edits[1].line, 9);
  for (SessionEdit& edit : read.edits)
    edit.line = 0;
  EXPECT_EQ(read, session);
}

TEST(Session, EmptyLinesAndCommentsSayNothing) {
  const Session session =
      readSession("velmar session 1\r\n# why\r\n\r\nlanguage json\nfile a.json\nedit 0 0 \"\"");
  EXPECT_EQ(session.language, "json");
  EXPECT_EQ(session.file, "a.json");
  EXPECT_EQ(session.edits.size(), 1U);
}

TEST(Session, ExpectationsAreWrittenWhereTheyBelongAndOldOnesGo) {
  const std::string text = "velmar session 1\nlanguage json\n# a\nedit 0 0 \"1\"\nexpect 1\n"
                           "edit 0 0 \"2\"\nedit 0 0 \"3\"\nfinal 2\n";
  const std::uint64_t digests[] = {10, 11, 12};
  EXPECT_EQ(withExpectations(text, readSession(text), digests, 13, 2),
            "velmar session 1\nlanguage json\n# a\nedit 0 0 \"1\"\n"
            "edit 0 0 \"2\"\nexpect 000000000000000b\nedit 0 0 \"3\"\nfinal 000000000000000d\n");
}

struct BadSession {
  const char* name;
  std::string_view lines; ///< Behind the heading and the language.
  const char* why;
};
class SessionRefuses : public ::testing::TestWithParam<BadSession> {};
TEST_P(SessionRefuses, WithTheLine) {
  const std::string text =
      "velmar session 1\nlanguage json\n" + std::string(GetParam().lines) + "\n";
  try {
    const Session session = readSession(text);
    checkEdits(session, std::ssize(session.initial));
    FAIL() << "It was read.";
  } catch (const SessionError& error) {
    EXPECT_THAT(error.message(), HasSubstr(GetParam().why));
  }
}
INSTANTIATE_TEST_SUITE_P(
    Cases, SessionRefuses,
    ::testing::Values(
        BadSession{"UnknownWord", "insert 0 \"\"", "Line 3 of the session: “insert” is none of"},
        BadSession{"NoNumber", "edit x 0 \"\"", "“x” isn’t an offset"},
        BadSession{"Negative", "edit 0 -1 \"\"", "“-1” isn’t a length"},
        BadSession{"Overflow", "edit 99999999999999999999 0 \"\"", "isn’t an offset"},
        BadSession{"TooLong", "edit 0 2000000000 \"\"", "no text is as long"},
        BadSession{"Overshoot", "text \"ab\"\nedit 0 1 \"\"\nedit 1 1 \"\"",
                   "Line 5 of the session: the edit ends at 2, but the text has 1 units"},
        BadSession{"NoQuotes", "edit 0 0 abc", "in quotation marks"},
        BadSession{"OpenQuotes", "edit 0 0 \"abc", "quotation mark is missing"},
        BadSession{"TooMuch", "edit 0 0 \"abc\" 1", "“ 1” is too much"},
        BadSession{"BadEscape", "edit 0 0 \"\\q\"", "there is no “\\q”"},
        BadSession{"EscapeAtEnd", "edit 0 0 \"\\", "there is no"},
        BadSession{"BadScalar", "edit 0 0 \"\\u{110000}\"", "the number of a character"},
        BadSession{"OpenScalar", "edit 0 0 \"\\u{11\"", "needs a number in braces"},
        BadSession{"EarlyDigest", "expect 1", "no edit that this could be"},
        BadSession{"LateText", "edit 0 0 \"\"\ntext \"\"", "can’t follow an edit"},
        BadSession{"BehindTheEnd", "final 1\nedit 0 0 \"\"", "nothing may follow"},
        BadSession{"BothSources", "text \"a\"\nfile b", "both with a file and with a text"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Session, OtherFilesAndVersionsAreRefused) {
  EXPECT_THROW(static_cast<void>(readSession("")), SessionError);
  EXPECT_THROW(static_cast<void>(readSession("velmar session 2\nlanguage c\n")), SessionError);
  EXPECT_THROW(static_cast<void>(readSession("velmar session 1\n")), SessionError);
  EXPECT_THROW(static_cast<void>(readSession("velmar session 1\nlanguage \xFF\n")), SessionError);
}

TEST(RandomSession, EditsFitTheTextAndAreTheSameForOneSeed) {
  const std::u16string initial = u"let answer = 42; // 日本\n";
  Session session{.language = "javascript", .initial = initial, .edits = {}};
  session.edits = randomEdits(initial, 3000, 7);
  EXPECT_EQ(session.edits.size(), 3000U);
  EXPECT_NO_THROW(checkEdits(session, std::ssize(initial)));
  EXPECT_EQ(session.edits, randomEdits(initial, 3000, 7));
  EXPECT_NE(session.edits, randomEdits(initial, 3000, 8));
}

TEST(RandomSession, AnEmptyTextCanBeEditedToo) {
  Session session{.language = "c", .initial = u"", .edits = randomEdits(u"", 500, 1)};
  EXPECT_NO_THROW(checkEdits(session, 0));
}

} // namespace
} // namespace velmar::host
