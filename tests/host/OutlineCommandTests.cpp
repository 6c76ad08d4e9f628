// The outline and the folds of small texts. The packs here are the tests' own.
#include "cmake/SourceTree.h"
#include "tests/host/JSONCheck.h"
#include "tests/host/RunHost.h"

#include <gmock/gmock.h>

namespace velmar::host {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using velmar::testing::HostResult;
using velmar::testing::JSONCheck;
using velmar::testing::runHost;

HostResult run(std::vector<std::string> words, std::string text) {
  words.insert(words.begin() + 1, {"-", "--language", "javascript"});
  return runHost(words, {.standardInput = std::move(text),
                         .environment = {{"VELMAR_PACKS", sourcePath("tests/host/data/packs")}}});
}

// Two symbols of one range, one that holds others, separators, and text that could act on a
// terminal.
const std::string source = "class A {\n"
                           "  f(a, b) {\n"
                           "    x = 1;\n"
                           "  }\n"
                           "  // ! - Half\n"
                           "}\n"
                           "let y, z; // ! \x1b[31m\n";

TEST(OutlineCommand, NestsByContainment) {
  const auto result = run({"outline"}, source);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, "class A  1-6\n"
                           "  function f(a, b)  2-4, level 2, or a method\n"
                           "  ——— Half  5\n"
                           "variable y  7\n"
                           "variable z  7\n"
                           "bookmark ␛[31m  7\n");
}

TEST(OutlineCommand, JSONHoldsTheSameTree) {
  const auto result = run({"outline", "--json"}, source);
  EXPECT_TRUE(JSONCheck::isValid(result.output)) << result.output;
  EXPECT_THAT(
      result.output,
      HasSubstr(
          R"("kind":"function","name":"f","language":"javascript","range":{"lowerBound":12,)"
          R"("upperBound":36},"nameRange":{"lowerBound":12,"upperBound":13},"level":2,"traits":2,)"));
  EXPECT_THAT(result.output, HasSubstr(R"("traits":1,"arguments":[],"symbols":[]}]},{"kind":)"));
  EXPECT_EQ(run({"outline", "--json"}, "").output, "[]\n");
}

TEST(FoldsCommand, ShowsLinesRolesAndLevels) {
  EXPECT_EQ(run({"folds"}, source).output, "1-5 type  class A {\n"
                                           "  2-4 no role  f(a, b) {\n");
  const auto json = run({"folds", "--json"}, source).output;
  EXPECT_EQ(json, R"([{"range":{"lowerBound":9,"upperBound":51},"role":"type","level":0},)"
                  R"({"range":{"lowerBound":21,"upperBound":35},"level":1}])"
                  "\n");
}

TEST(OutlineCommand, PagesHaveBoth) {
  const auto page = run({"show", "--html", "--outline", "--folds"}, source).output;
  EXPECT_THAT(
      page,
      HasSubstr("<nav>\n<ul>\n<li><a href=\"#L1\"><i>class</i> A</a>\n<ul>\n"
                "<li><a href=\"#L2\"><i>function</i> f(a, b)</a></li>\n"
                "<li class=\"separator\"><a href=\"#L5\"><i>bookmark</i> Half</a></li></ul></li>\n"
                "<li><a href=\"#L7\">"));
  EXPECT_THAT(page, HasSubstr("<a class=\"n f\" id=\"L2\" href=\"#L2\" title=\"text to 4\"></a>"));
  const auto part = run({"show", "--html", "--outline", "--range", "7"}, source).output;
  EXPECT_THAT(part, Not(HasSubstr("<i>class</i>")));
  EXPECT_THAT(part, HasSubstr("<nav>\n<ul>\n<li><a href=\"#L7\"><i>variable</i> y</a></li>"));
  const auto plain = run({"show", "--outline"}, source);
  EXPECT_EQ(plain.exitCode, 2);
  EXPECT_THAT(plain.errors, HasSubstr("“--outline” and “--folds” go with “--html”."));
}

} // namespace
} // namespace velmar::host
