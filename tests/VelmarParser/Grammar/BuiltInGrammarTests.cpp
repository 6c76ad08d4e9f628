#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarPlatform/Files/FileContents.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "tests/Support/Trees.h"
#include "tests/VelmarParser/Grammar/ParsedSource.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace velmar {
namespace {

using testing::ParsedSource;

const std::string sampleFolder = sourcePath("tests/VelmarParser/Fixtures");

std::vector<Grammar::BuiltIn> availableGrammars() {
  std::vector<Grammar::BuiltIn> list;
  for (const Grammar::BuiltIn builtIn : Grammar::allBuiltIns()) {
    if (Grammar::isAvailable(builtIn))
      list.push_back(builtIn);
  }
  return list;
}

/// The sample that is named for the grammar; empty if there is none.
std::u16string sampleFor(std::string_view id) {
  for (const auto& entry : std::filesystem::directory_iterator(sampleFolder)) {
    if (entry.path().stem() == id)
      return utf16RepairingUTF8(charactersOf(readFile(FilePath(entry.path().string()))));
  }
  return {};
}

/// The first ERROR or MISSING node, as "line:column type"; empty if there is none.
std::string firstProblem(const ParsedSource& parsed) {
  std::string problem;
  auto cursor = ParseTreeCursor::startingAt(parsed.root());
  cursor.enumerate([&](const ParseNode& node) {
    if (node.isError() || node.isMissing()) {
      problem = node.textRange().lowerBound.description() + " " + std::string(*node.type());
      return ParseTreeCursor::EnumerateAction::stop;
    }
    return ParseTreeCursor::EnumerateAction::next;
  });
  return problem;
}

class BuiltInGrammar : public ::testing::TestWithParam<Grammar::BuiltIn> {};

TEST_P(BuiltInGrammar, ParsesARealLookingSample) {
  const std::u16string sample = sampleFor(Grammar::rawValueOf(GetParam()));
  ASSERT_FALSE(sample.empty());
  const ParsedSource parsed(GetParam(), sample);
  EXPECT_EQ(firstProblem(parsed), "");
  EXPECT_FALSE(parsed.root().hasError());
  EXPECT_EQ(parsed.root().utf16Range().upperBound, std::ssize(sample));
}

TEST_P(BuiltInGrammar, SeesTheSameThroughTheLinesAsInOnePiece) {
  const std::u16string sample = sampleFor(Grammar::rawValueOf(GetParam()));
  const ParsedSource parsed(GetParam(), sample);
  const ParseTree whole = testing::parseInOnePiece(GetParam(), sample);
  EXPECT_EQ(testing::treeDifference(parsed.root().base(), whole.rootNode().base()), "");
}

INSTANTIATE_TEST_SUITE_P(All, BuiltInGrammar, ::testing::ValuesIn(availableGrammars()),
                         [](const auto& row) {
                           return std::string(Grammar::rawValueOf(row.param));
                         });

TEST(BuiltInGrammars, AreListedInTheirOrder) {
  const auto all = Grammar::allBuiltIns();
  ASSERT_EQ(all.size(), 36U);
  EXPECT_EQ(Grammar::rawValueOf(all.front()), "bash");
  EXPECT_EQ(Grammar::rawValueOf(all[4]), "c_sharp");
  EXPECT_EQ(Grammar::rawValueOf(all.back()), "yaml");
}

TEST(BuiltInGrammars, AreFoundByTheirRawValue) {
  EXPECT_EQ(Grammar::builtInFromRawValue("embedded_template"), Grammar::BuiltIn::embeddedTemplate);
  EXPECT_EQ(Grammar::builtInFromRawValue("embeddedTemplate"), std::nullopt);
}

TEST(BuiltInGrammars, ThoseThatThisBuildLacksSaySo) {
  for (const Grammar::BuiltIn builtIn : Grammar::allBuiltIns()) {
    if (Grammar::isAvailable(builtIn))
      continue;
    const std::string id(Grammar::rawValueOf(builtIn));
    try {
      (void)Grammar::fromBuiltIn(builtIn);
      FAIL() << id;
    } catch (const MissingGrammarError& error) {
      EXPECT_EQ(error.message(), "The grammar “" + id + "” isn’t part of this build.");
    }
  }
}

} // namespace
} // namespace velmar
