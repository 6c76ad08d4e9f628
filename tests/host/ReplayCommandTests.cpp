// The recorded session's digests are written anew, for a change that means to change them, by
//     VELMAR_PACKS=tests/host/data/packs build/dev/host/velmar replay --record
//     tests/host/data/page.session
#include "cmake/SourceTree.h"
#include "tests/host/RunHost.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <regex>

namespace velmar::host {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using velmar::testing::contentsOf;
using velmar::testing::runHost;
using velmar::testing::TemporaryFolder;

const std::string data = sourcePath("tests/host/data/");

constexpr std::string_view shortSession = "velmar session 1\nlanguage json\ntext \"[1]\"\n"
                                          "edit 1 1 \"22\"\nedit 0 0 \" \"\n";

TEST(ReplayCommand, PrintsADigestForEachEditAndTotals) {
  const TemporaryFolder folder;
  const auto result = runHost({"replay", folder.write("a.session", shortSession)});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_TRUE(std::regex_match(
      result.output, std::regex("     1 [0-9a-f]{16} 1 layers, changed 1:[12]-1:4\n"
                                "     2 [0-9a-f]{16} 1 layers, changed 1:1-1:[23]\n"
                                "2 edits: digest [0-9a-f]{16}\n"
                                "5 units, 1 line, 1 layer, 5 nodes at the end\n"
                                "load 1.50 ms; edits 3.00 ms: half within 1.500 ms, 99 of 100 "
                                "within 1.500 ms, the slowest, number 1, 1.500 ms\n")))
      << result.output;
}

TEST(ReplayCommand, WhatWasRecordedIsFoundAgain) {
  const TemporaryFolder folder;
  const std::string session = folder.write("a.session", shortSession);
  EXPECT_EQ(runHost({"replay", "--check", session}).exitCode, 1);
  EXPECT_EQ(runHost({"replay", "--record", session}).exitCode, 0);
  const auto checked = runHost({"replay", "--check", session});
  EXPECT_EQ(checked.exitCode, 0) << checked.errors;
  EXPECT_THAT(checked.output, EndsWith("All is as expected.\n"));
}

TEST(ReplayCommand, ADigestThatDiffersIsNamed) {
  const TemporaryFolder folder;
  const std::string text(shortSession);
  const auto afterEdit =
      runHost({"replay", "--check", folder.write("a.session", text + "expect 1\nfinal 1\n")});
  EXPECT_EQ(afterEdit.exitCode, 1);
  EXPECT_THAT(afterEdit.errors, HasSubstr("The digest after edit 2 is "));
  const auto atEnd = runHost({"replay", "--check", folder.write("b.session", text + "final 1\n")});
  EXPECT_EQ(atEnd.exitCode, 1);
  EXPECT_THAT(atEnd.errors, HasSubstr("The digest of all edits is "));
}

/// With the tests' own packs.
velmar::testing::HostResult replay(std::vector<std::string> words) {
  words.insert(words.begin(), "replay");
  return runHost(words, {.environment = {{"VELMAR_PACKS", data + "packs"}}});
}

/// The digest of all edits of a session over `lines`.
std::string digestOf(std::string_view language, std::string_view lines) {
  const TemporaryFolder folder;
  const auto result =
      replay({folder.write("a.session", "velmar session 1\nlanguage " + std::string(language) +
                                            "\n" + std::string(lines) + "\n")});
  std::smatch match;
  const bool found = std::regex_search(result.output, match, std::regex("digest ([0-9a-f]{16})"));
  return found ? match[1].str() : result.errors;
}

TEST(ReplayCommand, DigestsTellApartWhatTheEngineKnows) {
  const std::string base = digestOf("html", "text \"<p>x</p>\"\nedit 3 1 \"y\"");
  EXPECT_EQ(base, digestOf("html", "text \"<p>x</p>\"\nedit 3 1 \"y\""));
  const std::string otherChange = digestOf("html", "text \"<p>x</p>\"\nedit 0 8 \"<p>y</p>\"");
  const std::string otherTree = digestOf("html", "text \"<p>x</p>\"\nedit 3 1 \"<\"");
  const std::string otherLanguage = digestOf("xml", "text \"<p>x</p>\"\nedit 3 1 \"y\"");
  EXPECT_NE(base, otherChange);
  EXPECT_NE(base, otherTree);
  EXPECT_NE(base, otherLanguage);
  // One text and one tree, and a layer more.
  EXPECT_NE(digestOf("html", "text \"<p oo='xx'>\"\nedit 6 0 \"\""),
            digestOf("html", "text \"<p on='xx'>\"\nedit 6 0 \"\""));
}

TEST(ReplayCommand, ASessionCanStartWithAFileBesideIt) {
  const TemporaryFolder folder;
  folder.write("a.json", "[1]");
  const auto result = runHost(
      {"replay", folder.write("a.session",
                              "velmar session 1\nlanguage json\nfile a.json\nedit 3 0 \" \"\n")});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_THAT(result.output, HasSubstr("\n4 units"));
}

TEST(ReplayCommand, MadeUpSessionsCanBePlayed) {
  const TemporaryFolder folder;
  const std::string file = folder.write("a.json", "{\"a\": [1, 2, 3]}\n");
  const auto made = runHost({"replay", "--random", "50", "--seed", "9", file});
  EXPECT_EQ(made.exitCode, 0) << made.errors;
  EXPECT_EQ(made.output, runHost({"replay", "--random", "50", "--seed", "9", file}).output);
  const std::string session = folder.write("a.session", made.output);
  EXPECT_THAT(runHost({"replay", session}).output, HasSubstr("\n50 edits: digest "));
}

TEST(ReplayCommand, TheRecordedSessionComesOutAsItDid) {
  const auto result = replay({"--check", data + "page.session"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.errors, "");
  EXPECT_THAT(result.output, HasSubstr("5000 edits: digest "));
}

TEST(ReplayCommand, BadCommandLinesGetASentence) {
  EXPECT_EQ(runHost({"replay"}).exitCode, 2);
  EXPECT_EQ(runHost({"replay", "a", "--seed", "1"}).exitCode, 2);
  EXPECT_EQ(runHost({"replay", "a", "--check", "--record"}).exitCode, 2);
  EXPECT_EQ(runHost({"replay", "a", "--random", "many"}).exitCode, 2);
  EXPECT_EQ(runHost({"replay", "a", "--random", "1000000000"}).exitCode, 2);
}

} // namespace
} // namespace velmar::host
