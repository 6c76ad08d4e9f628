// Painting whole files. The packs here are the tests' own, a few patterns each, so that a better
// pattern elsewhere changes nothing. This writes the expected texts anew, to be read as a
// difference:
//     VELMAR_REWRITE_GOLDEN=1 build/dev/tests/hostTests --gtest_filter='*Golden*'
#include "cmake/SourceTree.h"
#include "tests/host/JSONCheck.h"
#include "tests/host/RunHost.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <chrono>

namespace velmar::host {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using velmar::testing::contentsOf;
using velmar::testing::HostInput;
using velmar::testing::JSONCheck;
using velmar::testing::runHost;
using velmar::testing::TemporaryFolder;

const std::string data = sourcePath("tests/host/data/");
const HostInput withOwnPacks{.environment = {{"VELMAR_PACKS", data + "packs"}}};

HostInput reading(std::string text, std::string packs = data + "packs") {
  return {.standardInput = std::move(text), .environment = {{"VELMAR_PACKS", std::move(packs)}}};
}

struct GoldenCase {
  const char* name;
  std::vector<std::string> options;
  const char* golden;
};
class ShowGolden : public ::testing::TestWithParam<GoldenCase> {};
TEST_P(ShowGolden, IsTheExpectedText) {
  std::vector<std::string> words{"show", "-", "--language", "html"};
  words.insert(words.end(), GetParam().options.begin(), GetParam().options.end());
  const auto result = runHost(words, reading(contentsOf(data + "sample.html")));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  const std::string path = data + GetParam().golden;
  if (std::getenv("VELMAR_REWRITE_GOLDEN")) // NOLINT(concurrency-mt-unsafe): nobody sets it
    std::ofstream(path, std::ios::binary) << result.output;
  EXPECT_EQ(result.output, contentsOf(path));
}
INSTANTIATE_TEST_SUITE_P(
    Cases, ShowGolden,
    ::testing::Values(GoldenCase{"TrueColours", {"--colors", "true"}, "sample.true.ansi"},
                      GoldenCase{
                          "Layers256", {"--colors", "256", "--layers"}, "sample.layers256.ansi"},
                      GoldenCase{"Plain", {"--layers", "--range", "2-4"}, "sample.plain.txt"},
                      GoldenCase{"Page", {"--html"}, "sample.page.html"},
                      GoldenCase{"JSON", {"--json"}, "sample.json"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ShowCommand, ColoursAreForTerminalsThatWantThem) {
  const std::string file = data + "sample.html";
  const auto shown = [&](std::vector<std::string> options, bool isTerminal, std::string colorTerm) {
    options.insert(options.begin(), {"show", file});
    return runHost(options, {.isTerminal = isTerminal,
                             .environment = {{"VELMAR_PACKS", data + "packs"},
                                             {"COLORTERM", std::move(colorTerm)}}})
        .output;
  };
  EXPECT_THAT(shown({}, false, "truecolor"), Not(HasSubstr("\x1b")));
  EXPECT_THAT(shown({"--ansi"}, false, "truecolor"), HasSubstr(";38;2;"));
  EXPECT_THAT(shown({}, true, "truecolor"), HasSubstr(";38;2;"));
  EXPECT_THAT(shown({}, true, ""), AllOf(HasSubstr(";38;5;"), Not(HasSubstr(";38;2;"))));
  EXPECT_THAT(shown({"--colors", "none"}, true, "24bit"), Not(HasSubstr("\x1b")));
  EXPECT_NE(shown({"--light"}, true, "24bit"), shown({}, true, "24bit"));
}

TEST(ShowCommand, NoTextActsOnTheTerminalOrThePage) {
  std::string text;
  for (int byte = 0; byte < 0x20; ++byte)
    text += static_cast<char>(byte);
  text += "\x7F\u009b31m\u202e\u2067\u200f </pre><script>alert(1)</script> \"'&\n";
  const auto terminal = runHost({"show", "-", "--language", "json"}, reading(text));
  for (const char letter : terminal.output)
    EXPECT_TRUE(static_cast<unsigned char>(letter) >= 0x20 || letter == '\n');
  EXPECT_THAT(terminal.output, AllOf(Not(HasSubstr("\x7F")), Not(HasSubstr("\u009b")),
                                     Not(HasSubstr("\u202e")), Not(HasSubstr("\u2067"))));
  const auto page = runHost({"show", "-", "--language", "json", "--html"}, reading(text));
  EXPECT_THAT(page.output,
              AllOf(Not(HasSubstr("<script>")), Not(HasSubstr("\x1b")), Not(HasSubstr("\u202e"))));
  EXPECT_EQ(page.output.find("</pre>"), page.output.rfind("</pre>"));
}

TEST(ShowCommand, NamesInAPageAreEscaped) {
  const TemporaryFolder folder;
  const auto page = runHost({"show", folder.write("<b>&.json", "1"), "--html"}, withOwnPacks);
  EXPECT_THAT(page.output, HasSubstr("&lt;b&gt;&amp;.json</h1>"));
  EXPECT_THAT(page.output, Not(HasSubstr("<b>")));
}

TEST(ShowCommand, ThePagesGutterHasRoomForTheLargestNumber) {
  const auto page = [&](std::size_t lines) {
    return runHost({"show", "-", "--language", "json", "--html", "--range", "1-2"},
                   reading(std::string(lines - 1, '\n')))
        .output;
  };
  EXPECT_THAT(page(9'999), Not(HasSubstr("ch; }\n</style>")));
  EXPECT_THAT(page(100'000), HasSubstr(".n { width: 7ch; }\n</style>"));
}

TEST(ShowCommand, JSONIsValidForAnyText) {
  for (const char* text : {"", "\"\xED\xA0\x80", "[\x01]", "{\"é\": \"\\u0000\"}", "日\t\r"}) {
    const auto result = runHost({"show", "-", "--language", "json", "--json"}, reading(text));
    EXPECT_TRUE(JSONCheck::isValid(result.output)) << result.output;
  }
  EXPECT_TRUE(
      JSONCheck::isValid(runHost({"show", data + "page.html", "--json"}, withOwnPacks).output));
}

TEST(ShowCommand, LinesAreCountedFrom1) {
  const std::string text = "1\r\n2\r3\n";
  const auto lines = [&](const std::string& range) {
    return runHost({"show", "-", "--language", "json", "--range", range}, reading(text));
  };
  EXPECT_EQ(lines("1").output, "1\n");
  EXPECT_EQ(lines("2-3").output, "2\n3\n");
  EXPECT_EQ(lines("2-").output, "2\n3\n");
  EXPECT_EQ(lines("3-900").output, "3\n");
  EXPECT_EQ(lines("5").exitCode, 1);
  EXPECT_EQ(lines("5").errors, "velmar: There is no line 5: the text has 4.\n");
  for (const char* range : {"0", "a", "2-1", "", "1-2-3", "-3", "99999999999999999999"})
    EXPECT_EQ(lines(range).exitCode, 2) << range;
}

TEST(ShowCommand, UnknownLanguagesGetASentence) {
  const auto unknown = runHost({"show", "-", "--language", "javascrpt"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_THAT(unknown.errors, HasSubstr("did you mean “javascript”?"));
  const auto withoutGrammar = runHost({"show", "-", "--language", "plain-text"});
  EXPECT_EQ(withoutGrammar.exitCode, 1);
  EXPECT_THAT(withoutGrammar.errors, HasSubstr("There is no grammar for the language"));
}

TEST(ShowCommand, ABadQueryIsToldOnceAndTheRestIsPainted) {
  const TemporaryFolder packs;
  packs.write("html/highlights.scm", "(tag_name) @tag\n");
  packs.write("html/injections.scm", contentsOf(data + "packs/html/injections.scm"));
  packs.write("javascript/highlights.scm", "(nonsense) @keyword\n");
  const auto result = runHost({"show", "-", "--language", "html", "--colors", "true"},
                              reading("<script>1</script><script>2</script><b>", packs.path));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, HasSubstr("mscript\x1b"));
  EXPECT_EQ(result.errors,
            "velmar: The lexicalSpans of javascript are left out here. Invalid node type in query: "
            "(nonsense) @keyword\n"
            "velmar: The highlights of javascript are left out here. Invalid node type in query: "
            "(nonsense) @keyword\n");
}

TEST(ShowCommand, APackThatCannotBePutTogetherIsToldOnce) {
  const TemporaryFolder packs;
  packs.write("json/highlights.scm", "; inherits: json\n");
  const auto result = runHost({"show", "-", "--language", "json"}, reading("[1]\n", packs.path));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, "[1]\n");
  EXPECT_THAT(result.errors, HasSubstr("The pack “json/highlights.scm” inherits itself.\n"));
}

TEST(ShowCommand, AMissingFolderOfPacksIsTold) {
  const auto result =
      runHost({"show", "-", "--language", "json"}, reading("[1]\n", "/nowhere/packs"));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.errors, HasSubstr("There is no folder of packs at “/nowhere/packs”"));
}

TEST(ShowCommand, BytesThatAreNoTextAreShownAsFarAsTheyGo) {
  std::string bytes;
  for (int round = 0; round < 40; ++round) {
    for (int byte = 0; byte < 256; ++byte)
      bytes += static_cast<char>(byte * 7 + round);
  }
  const auto result = runHost({"show", "-", "--language", "javascript"}, reading(bytes));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.errors, HasSubstr("that aren’t UTF-8 became U+FFFD"));
  EXPECT_THAT(result.output, HasSubstr("␛"));
}

TEST(ShowCommand, OneLineOfFiveMegabytes) {
  std::string text = "const all = [";
  while (text.size() < 5'000'000)
    text += "\"text\", 12, ";
  text += "];";
  const auto result =
      runHost({"show", "-", "--language", "javascript", "--range", "1"}, reading(text));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, text + "\n");
}

TEST(ShowCommand, ManyNestedLayers) {
  std::string text;
  for (int block = 0; block < 1000; ++block)
    text += "<script>const a = `${1}`;</script>\n";
  const auto result = runHost({"show", "-", "--language", "html", "--html"}, reading(text));
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, HasSubstr("1001 layers"));
  EXPECT_THAT(result.output, HasSubstr("data-layer=\"1000\""));
}

TEST(ShowCommand, OnlyOneFormCanBeHad) {
  EXPECT_EQ(runHost({"show", "a", "--json", "--html"}).exitCode, 2);
  EXPECT_EQ(runHost({"show", "a", "--colors", "many"}).exitCode, 2);
  EXPECT_EQ(runHost({"show"}).exitCode, 2);
  EXPECT_EQ(runHost({"show", "a", "b"}).exitCode, 2);
}

} // namespace
} // namespace velmar::host
