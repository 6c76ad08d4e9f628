#include "VelmarPlatform/Files/FileContents.h"
#include "cmake/SourceTree.h"
#include "tests/host/RunHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <sstream>

namespace velmar::host {
namespace {

/// `output` as an indented block of Markdown, without the times, which differ from run to run.
std::string asBlock(const std::string& output) {
  std::istringstream lines(output);
  std::string block;
  for (std::string line; std::getline(lines, line);)
    block += line.empty() ? "\n" : "    " + line + "\n";
  return block;
}

std::string withoutTimes(const std::string& text) {
  return std::regex_replace(text, std::regex("[0-9.]+ ms\n"), "… ms\n");
}

TEST(Readme, ShowsWhatTheProgramPrints) {
  const Bytes bytes = readFile(FilePath(sourcePath("README.md")));
  const std::string page = withoutTimes(std::string(charactersOf(bytes)));
  EXPECT_THAT(page, ::testing::HasSubstr(withoutTimes(asBlock(testing::runHost({}).output))));
  const auto tree =
      testing::runHost({"tree", "-", "--language", "json"}, {.standardInput = "[1, 2\n"});
  EXPECT_THAT(page, ::testing::HasSubstr(withoutTimes(asBlock(tree.output))));
}

} // namespace
} // namespace velmar::host
