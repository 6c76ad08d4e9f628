// Random typing in real files of the packed languages, each state checked against the plain
// reference and, now and then, against a fresh parse. VELMAR_ORACLE_EDITS sets the number of edits
// in all; VELMAR_ORACLE_SEED another course.

#include "tests/Support/Oracle.h"

#include "VelmarPlatform/Files/FileContents.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "host/Session.h"
#include "tests/packs/PackFiles.h"
#include "tests/packs/PackLanguages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

namespace velmar::testing {
namespace {

std::int64_t numberFromEnvironment(const char* name, std::int64_t otherwise) {
  const char* const text =
      std::getenv(name); // NOLINT(concurrency-mt-unsafe): nothing here writes the environment
  return text ? std::atoll(text) : otherwise;
}

struct Sample {
  const char* name;
  const char* language;
  const char* path;
  std::vector<std::u16string> inserts;
};

const std::vector<std::u16string> codeInserts{
    u"a", u" ",  u"\n",   u"(",          u")",           u"{",        u"}",  u"\"",
    u"'", u"/*", u"*/",   u"//",         u"`",           u";",        u"${", u"if ",
    u"<", u">",  u"\r\n", u"\U0001F600", u"css`a{b:c}`", u"/** @x */"};
const std::vector<std::u16string> markupInserts{u"a",
                                                u" ",
                                                u"\n",
                                                u"<",
                                                u">",
                                                u"</script>",
                                                u"<style>",
                                                u"</style>",
                                                u"<script>",
                                                u"\"",
                                                u"x=\"1\"",
                                                u"<!--",
                                                u"-->",
                                                u"p { color: red }",
                                                u"let a = `x`;",
                                                u"\r\n",
                                                u"<p onclick=\"f()\">",
                                                u"\u00e9"};
const std::vector<std::u16string> markdownInserts{
    u"a",      u" ",     u"\n", u"\n\n",      u"```js\n",   u"```\n", u"```\n```",
    u"`",      u"*",     u"# ", u"- ",        u"> ",        u"<b>",   u"</b>",
    u"[x](y)", u"---\n", u"|",  u"~~~html\n", u"\U0001F600"};

/// Leaves a session in which a difference was found beside the program; `velmar shrink` makes it
/// small, by velmarOracle.
std::string keep(const host::Session& session, const std::string& name) {
  const std::string path = "oracle-" + name + ".session";
  writeFileAtomically(FilePath(path), bytesOf(host::writtenSession(session)));
  return path;
}

class Oracle : public ::testing::TestWithParam<Sample> {};

TEST_P(Oracle, EveryStateEqualsTheReference) {
  const Sample& sample = GetParam();
  const auto edits = numberFromEnvironment("VELMAR_ORACLE_EDITS", 20'000) / 7;
  const auto seed = static_cast<std::uint32_t>(numberFromEnvironment("VELMAR_ORACLE_SEED", 1));
  const auto languages = PackLanguages::make();
  const FilePath path(sourcePath(sample.path));
  const std::u16string source = utf16RepairingUTF8(charactersOf(readFile(path))).substr(0, 6000);

  OracleCounts total;
  constexpr std::int64_t editsToASession = 400;
  for (std::int64_t done = 0; done < edits; done += editsToASession) {
    CheckedParse document(languages->configuration(sample.language), 40);
    document.edit({0, 0}, source);
    RandomTyping typing(seed + static_cast<std::uint32_t>(done), sample.inserts);
    host::Session session{.language = sample.language, .initial = source, .edits = {}};
    for (std::int64_t step = 0; step < std::min(editsToASession, edits - done); ++step) {
      const RandomEdit edit = typing.next(document.text());
      SCOPED_TRACE(::testing::Message()
                   << "session " << done << " step " << step << ": " << edit.range << " with "
                   << ::testing::PrintToString(utf8RepairingUTF16(edit.text)));
      session.edits.push_back({edit.range, edit.text});
      try {
        document.edit(edit.range, edit.text);
      } catch (const std::exception& difference) {
        FAIL() << difference.what() << "\nThe session is in " << keep(session, sample.name);
      }
    }
    total.edits += document.counts().edits;
    total.layers += document.counts().layers;
    total.freshParses += document.counts().freshParses;
    total.otherTrees += document.counts().otherTrees;
    total.notLoadable += document.counts().notLoadable;
  }
  std::cout << sample.name << ": " << total << '\n';
}

/// The layers with text in `range`, looked for in all of them.
std::vector<Parse::Layer> layersInPlain(const Parse& document, TextRange range) {
  std::vector<Parse::Layer> found{document.rootLayer()};
  for (std::size_t index = 0; index < found.size(); ++index) {
    for (const Parse::Layer& sublayer : Parse::Layer(found[index]).sublayers()) {
      if (sublayer.ranges().intersectsContentsOf(range))
        found.push_back(sublayer);
    }
  }
  return found;
}

TextRangeSet rangesOutsideSublayers(const Parse::Layer& layer) {
  TextRangeSet ranges = layer.ranges();
  for (const Parse::Layer& sublayer : layer.sublayers())
    ranges.subtract(sublayer.ranges());
  return ranges;
}

// A sublayer that edits only move is moved when somebody reads it. One document is read after each
// edit, the other seldom.
TEST_P(Oracle, LayersThatNobodyReadCatchUp) {
  const Sample& sample = GetParam();
  const auto languages = PackLanguages::make();
  const FilePath path(sourcePath(sample.path));
  const std::u16string source = utf16RepairingUTF8(charactersOf(readFile(path))).substr(0, 6000);
  Parse watched(languages->configuration(sample.language));
  Parse unwatched(languages->configuration(sample.language));
  RandomTyping typing(7, sample.inserts);
  RandomEdit edit{{0, 0}, source};
  for (int step = 0; step < 400; ++step) {
    EXPECT_EQ(watched.replaceSubrange(edit.range, edit.text),
              unwatched.replaceSubrange(edit.range, edit.text));
    for (const Parse::Layer& layer : watched.layers())
      ASSERT_TRUE(layer.root());
    if (step % 97 == 0 || step == 399) {
      const std::int64_t place = std::min(edit.range.lowerBound, unwatched.count()) / 2;
      const TextRange part(place, std::min(place + step, unwatched.count()));
      EXPECT_EQ(unwatched.layersIntersecting(part), layersInPlain(unwatched, part));
      for (const Parse::Layer& layer : unwatched.layersIntersecting(part))
        EXPECT_EQ(layer.rangesExcludingSublayers(), rangesOutsideSublayers(layer));
      ASSERT_EQ(documentDifference(watched, unwatched), "") << "after edit " << step;
    }
    edit = typing.next(watched.textFor({0, watched.count()}));
  }
}

struct SmallPage {
  const char* name;
  const char* language;
  std::u16string text;
  std::vector<std::u16string> inserts;
};
class OracleOfSmallPages : public ::testing::TestWithParam<SmallPage> {};

// Chance seldom finds the edges of a text: each part of a small one goes and comes back, and at
// each place something is put in that begins a token elsewhere than before.
TEST_P(OracleOfSmallPages, EveryPartGoesAndEveryPlaceTakesAToken) {
  const auto& [name, language, text, inserts] = GetParam();
  CheckedParse document(PackLanguages::shared().configuration(language));
  document.edit({0, 0}, text);
  const auto replaceAndPutBack = [&](std::size_t lower, std::size_t upper,
                                     const std::u16string& with) {
    const auto start = static_cast<std::int64_t>(lower);
    SCOPED_TRACE(::testing::Message() << lower << "..<" << upper << " with "
                                      << ::testing::PrintToString(utf8RepairingUTF16(with)));
    document.edit({start, static_cast<std::int64_t>(upper)}, with);
    document.edit({start, start + static_cast<std::int64_t>(with.size())},
                  text.substr(lower, upper - lower));
  };
  for (std::size_t lower = 0; lower <= text.size(); ++lower) {
    for (std::size_t upper = lower + 1; upper <= text.size(); ++upper)
      ASSERT_NO_THROW(replaceAndPutBack(lower, upper, u"")) << lower << "..<" << upper;
    for (const std::u16string& insert : inserts)
      ASSERT_NO_THROW(replaceAndPutBack(lower, lower, insert)) << lower;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Packs, OracleOfSmallPages,
    ::testing::Values(SmallPage{"HTML",
                                "html",
                                u"<p><style>b{c:d}</style>\n<script>f(`a`)</script>",
                                {u" ", u"<", u"\"", u"<!--", u"{"}},
                      SmallPage{"Markdown",
                                "markdown",
                                u"*a*\n\n<b>c</b>\n\n```js\n// d\n```\n`e`",
                                {u" ", u"\n", u"`", u"<", u"- "}},
                      SmallPage{"InfoString",
                                "markdown",
                                u"~~~js t=1\nf(/b/)\n~~~",
                                {u" ", u"t", u"\U0001F600", u"`"}},
                      SmallPage{"JavaScript",
                                "javascript",
                                u"/** @a */ f(/b/, `${c}`, css`d{e:f}`)",
                                {u" ", u"`", u"/*", u"//", u"'"}},
                      SmallPage{"CPlusPlus",
                                "cpp",
                                u"#define A(b) b + 1\nint c = A(\"d\"); // e",
                                {u" ", u"\\\n", u"\"", u"/*", u"R\"("}}),
    [](const auto& row) { return std::string(row.param.name); });

/// Asks another resolver, and cancels the document's parse at a certain question.
class CancellingResolver : public ParseConfigurationResolving {
public:
  explicit CancellingResolver(ParseConfiguration base) : base_(std::move(base)) {}

  void cancelAt(std::int64_t question, Parse& document) {
    countdown_ = question;
    document_ = &document;
  }
  std::optional<ParseConfiguration> configurationMatching(std::string_view name,
                                                          const ParseConfiguration&) override {
    if (countdown_-- == 0)
      document_->cancelParsing();
    return base_.injectionConfigurationMatching(name);
  }
  std::optional<std::string> queryTextFor(ParseQueryCategory category,
                                          const ParseConfiguration&) override {
    return base_.resolver()->queryTextFor(category, base_);
  }
  std::optional<std::string> queryTextNamed(std::string_view name,
                                            const ParseConfiguration&) override {
    return base_.resolver()->queryTextNamed(name, base_);
  }

private:
  ParseConfiguration base_;
  std::int64_t countdown_ = -1;
  Parse* document_ = nullptr;
};

// What a cancelled edit leaves undone, the next one makes up for: then a fresh document holds the
// same.
TEST(CancelledEdit, IsMadeUpForByTheNext) {
  for (const auto& [language, file] : {std::pair("html", "tests/packs/oracle/sample.html"),
                                       std::pair("markdown", "tests/packs/oracle/sample.md"),
                                       std::pair("markdown", "README.md")}) {
    const auto languages = PackLanguages::make();
    const FilePath path(sourcePath(file));
    const std::u16string source = utf16RepairingUTF8(charactersOf(readFile(path)));
    const ParseConfiguration base = languages->configuration(language);
    const auto resolver = std::make_shared<CancellingResolver>(base);
    Parse document(ParseConfiguration(base.id(), base.grammar(), base.syntax(), resolver));
    document.replaceSubrange({0, 0}, source);
    Parse fresh(base);
    fresh.replaceSubrange({0, 0}, source);

    std::mt19937 random(11);
    std::int64_t cancelled = 0;
    for (int round = 0; round < 60; ++round) {
      const auto place = static_cast<std::int64_t>(random() % source.size());
      resolver->cancelAt(static_cast<std::int64_t>(random() % 6), document);
      document.replaceSubrange({place, place}, u"x");
      cancelled +=
          std::ranges::any_of(document.layers(), [](const auto& layer) { return !layer.root(); });
      resolver->cancelAt(-1, document);
      document.replaceSubrange({place, place + 1}, u"");
      ASSERT_EQ(documentDifference(document, fresh), "") << file << ", round " << round;
    }
    EXPECT_GT(cancelled, 0) << file;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Packs, Oracle,
    ::testing::Values(
        Sample{"CPlusPlus", "cpp", "VelmarParser/Document/Injections.cpp", codeInserts},
        Sample{"JavaScript", "javascript",
               "grammars/node_modules/tree-sitter-javascript/grammar.js", codeInserts},
        Sample{"TypeScript", "typescript", "tests/packs/oracle/sample.ts", codeInserts},
        Sample{"HTML", "html", "tests/packs/oracle/sample.html", markupInserts},
        Sample{"CSS", "css", "tests/packs/oracle/sample.css", codeInserts},
        Sample{"Markdown", "markdown", "tests/packs/oracle/sample.md", markdownInserts},
        Sample{"Readme", "markdown", "README.md", markdownInserts}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar::testing
