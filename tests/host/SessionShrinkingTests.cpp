#include "host/SessionShrinking.h"

#include "host/RandomSession.h"
#include "tests/host/RunHost.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace velmar::host {
namespace {

using ::testing::HasSubstr;
using velmar::testing::contentsOf;
using velmar::testing::runHost;
using velmar::testing::TemporaryFolder;

std::u16string played(const Session& session) {
  std::u16string text = session.initial;
  for (const SessionEdit& edit : session.edits)
    text.replace(static_cast<std::size_t>(edit.range.lowerBound),
                 static_cast<std::size_t>(edit.range.length()), edit.text);
  return text;
}

// A fault that needs a piece of the start, one of an edit's text, and a removal: "ab" is there at
// the end where the "x" between them has gone and the "b" has been typed.
bool hasMeeting(const Session& session) {
  return session.initial.find(u'x') != std::u16string::npos &&
         played(session).find(u"ab") != std::u16string::npos;
}

TEST(ShrunkSession, NothingCanBeLeftOut) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Session session{.language = "json", .initial = u"some text ax with more behind", .edits = {}};
    session.edits = randomEdits(session.initial, 40, seed);
    std::u16string text = played(session);
    text += u"|";
    session.edits.push_back({{std::ssize(text) - 1, std::ssize(text) - 1}, u"12ax34", 0x5});
    const std::int64_t place = std::ssize(text) - 1 + 3;
    session.edits.push_back({{place, place + 2}, u"b and so on"});
    session.expectedFinal = 7;
    ASSERT_TRUE(hasMeeting(session));
    std::int64_t checks = 0;
    const Session small = shrunkSession(session, 100'000, [&](const Session& candidate) {
      ++checks;
      checkEdits(candidate, std::ssize(candidate.initial)); // throws where one has lost its place
      return hasMeeting(candidate);
    });
    EXPECT_TRUE(hasMeeting(small));
    std::size_t brought = 0;
    for (const SessionEdit& edit : small.edits)
      brought += edit.text.size();
    EXPECT_LE(small.initial.size() + brought, 5U) << writtenSession(small);
    EXPECT_LE(small.edits.size(), 2U) << writtenSession(small);
    EXPECT_EQ(small.expectedFinal, std::nullopt);
    EXPECT_LT(checks, 2000);
  }
}

TEST(ShrunkSession, EditsKeepTheirPlacesInWhatIsLeft) {
  // The last edit types "!" behind "key": whatever goes, it stays there.
  const Session session{.language = "json",
                        .initial = u"0123456789key0123456789",
                        .edits = {{{2, 5}, u"abcdef"}, {{0, 0}, u"xy"}, {{18, 18}, u"!"}}};
  ASSERT_NE(played(session).find(u"key!"), std::u16string::npos);
  const Session small = shrunkSession(session, 1000, [](const Session& candidate) {
    return played(candidate).find(u"key!") != std::u16string::npos;
  });
  EXPECT_EQ(played(small), u"key!");
}

TEST(ShrinkCommand, LeavesWhatTheCommandFailsFor) {
  const TemporaryFolder folder;
  const std::string session = folder.write(
      "a.session", "velmar session 1\nlanguage json\ntext \"[1, 2, 3]\"\nedit 1 1 \"22\"\n"
                   "edit 0 0 \"needle \"\nedit 3 1 \"\"\nedit 0 1 \"n\"\n");
  const auto result =
      runHost({"shrink", session, "--", "sh", "-c", "! grep -q n.*dl \"$1\"", "sh"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "velmar session 1\nlanguage json\nedit 0 0 \"ndl\"\n");
  EXPECT_THAT(result.errors, HasSubstr("4 edits that bring 10 units, in a text of 9\n"));

  const std::string small = folder.path + "/small.session";
  EXPECT_EQ(runHost({"shrink", session, "--checks", "1", "--output", small, "--", "false", "{}"})
                .exitCode,
            0);
  EXPECT_EQ(contentsOf(small), "velmar session 1\nlanguage json\ntext \"[1, 2, 3]\"\n");
}

TEST(ShrinkCommand, SaysWhatItNeeds) {
  const TemporaryFolder folder;
  const std::string session =
      folder.write("a.session", "velmar session 1\nlanguage json\ntext \"\"\n");
  const auto harmless = runHost({"shrink", session, "--", "true"});
  EXPECT_EQ(harmless.exitCode, 1);
  EXPECT_THAT(harmless.errors, HasSubstr("“true” finds nothing wrong with"));
  EXPECT_EQ(runHost({"shrink", session}).exitCode, 2);
  EXPECT_EQ(runHost({"shrink", session, "--checks", "0", "--", "false"}).exitCode, 2);
}

} // namespace
} // namespace velmar::host
