#include "host/Languages.h"

#include "cmake/SourceTree.h"
#include "host/ShippedQueries.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <thread>

namespace velmar::host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using velmar::testing::TemporaryFolder;

/// Languages over packs that the test writes.
class LanguagesOverPacks : public ::testing::Test {
protected:
  ParseConfiguration configuration(const LanguageID& language) {
    return languages.configurationFor(language).value();
  }
  std::optional<std::string> nameOf(std::string_view name) {
    const auto found = languages.configurationMatching(name, configuration(LanguageID::markdown));
    return found ? std::optional(found->id().rawValue) : std::nullopt;
  }

  TemporaryFolder packs;
  std::vector<std::string> murmurs;
  Languages languages{{.packs = FilePath(packs.path),
                       .shipped = FilePath(sourcePath("grammars/node_modules")),
                       .note = ""},
                      [this](std::string_view sentence) { murmurs.emplace_back(sentence); }};
};

TEST_F(LanguagesOverPacks, NamesAreTakenInAnyCaseWithWhatFencesPutAround) {
  EXPECT_EQ(nameOf("JavaScript"), "javascript");
  EXPECT_EQ(nameOf("js"), "javascript");
  EXPECT_EQ(nameOf("Py"), "python");
  EXPECT_EQ(nameOf("sh"), "shell");
  EXPECT_EQ(nameOf("C++"), "cpp");
  EXPECT_EQ(nameOf(" {.ts} "), "typescript");
  EXPECT_EQ(nameOf("js{1,3}"), "javascript");
  EXPECT_EQ(nameOf("C++,linenos {2}"), "cpp");
  EXPECT_EQ(nameOf("{.ts .numbered}"), "typescript");
  EXPECT_EQ(nameOf("klingon"), std::nullopt);
  EXPECT_EQ(nameOf("{,js"), std::nullopt);
  EXPECT_EQ(nameOf(""), std::nullopt);
  EXPECT_EQ(nameOf("{.}"), std::nullopt);
}

TEST_F(LanguagesOverPacks, ALanguageWithoutAGrammarHasNoConfiguration) {
  EXPECT_FALSE(languages.configurationFor(LanguageID::plainText).has_value());
  EXPECT_FALSE(languages.configurationFor(LanguageID("nonsense")).has_value());
}

TEST_F(LanguagesOverPacks, ConfigurationsAreMadeOnceAndShareTheirQueries) {
  packs.write("json/highlights.scm", "(number) @number\n");
  const auto query = configuration(LanguageID::json).queryFor(ParseQueryCategory::highlights);
  ASSERT_NE(query, nullptr);
  EXPECT_EQ(configuration(LanguageID::json).queryFor(ParseQueryCategory::highlights), query);
  EXPECT_EQ(configuration(LanguageID::json).syntax().comments.single, "//");
}

TEST_F(LanguagesOverPacks, APackInheritsAndHasNamedTexts) {
  packs.write("_base/highlights.scm", "(string) @string\n");
  packs.write("json/highlights.scm", "; inherits: _base\n(number) @number\n");
  packs.write("_base/named/words.scm", "(null) @a\n");
  packs.write("json/named/words.scm", "; inherits: _base\n(true) @b\n");
  const auto json = configuration(LanguageID::json);
  EXPECT_THAT(json.queryFor(ParseQueryCategory::highlights)->captureNames(),
              ElementsAre("string", "number"));
  EXPECT_THAT(json.queryNamed("words")->captureNames(), ElementsAre("a", "b"));
  EXPECT_EQ(json.queryNamed("../highlights"), nullptr);
}

TEST_F(LanguagesOverPacks, APackAloneSaysWhatALanguageHas) {
  packs.write("python/injections.scm", "((string) @injection.content)\n");
  const auto python = configuration(LanguageID::python);
  EXPECT_EQ(python.queryFor(ParseQueryCategory::highlights), nullptr);
  EXPECT_NE(python.queryFor(ParseQueryCategory::injections), nullptr);
}

TEST_F(LanguagesOverPacks, WithoutAPackTheGrammarsOwnTextsServe) {
  const auto python = configuration(LanguageID::python);
  ASSERT_NE(python.queryFor(ParseQueryCategory::highlights), nullptr);
  EXPECT_EQ(python.queryFor(ParseQueryCategory::folds), nullptr);
  EXPECT_EQ(languages.textFor(ParseQueryCategory::highlights, python)->placeOf(0).file,
            "tree-sitter-python/queries/highlights.scm");
}

TEST_F(LanguagesOverPacks, APackOutOfOrderThrowsWhereItIsAskedFor) {
  packs.write("json/highlights.scm", "; inherits: nothing\n");
  EXPECT_THROW(
      static_cast<void>(configuration(LanguageID::json).queryFor(ParseQueryCategory::highlights)),
      PackError);
}

TEST_F(LanguagesOverPacks, SeveralThreadsGetTheSameConfiguration) {
  packs.write("json/highlights.scm", "(number) @number\n");
  std::vector<std::shared_ptr<const Query>> queries(4);
  {
    std::vector<std::jthread> threads;
    for (auto& query : queries)
      threads.emplace_back([&] {
        query = configuration(LanguageID::json).queryFor(ParseQueryCategory::highlights);
      });
  }
  EXPECT_THAT(queries, ::testing::Each(queries.front()));
}

/// The shipped texts of all languages that have a grammar, packs aside.
TEST_F(LanguagesOverPacks, ShippedTextsCompileOrAreLeftOutWithAWord) {
  std::int64_t withHighlights = 0;
  for (const char* id :
       {"c",    "cpp",   "csharp", "css",    "html",       "javascript", "json", "lua",
        "make", "perl",  "php",    "python", "ruby",       "rust",       "scss", "shell",
        "sql",  "swift", "toml",   "tsx",    "typescript", "xml",        "yaml"}) {
    const auto language = configuration(LanguageID(id));
    murmurs.clear();
    const auto query = language.queryFor(ParseQueryCategory::highlights);
    withHighlights += query ? 1 : 0;
    if (query)
      EXPECT_THAT(murmurs, IsEmpty()) << id;
    else
      EXPECT_THAT(murmurs, ElementsAre(HasSubstr(std::string(" of ") + id + " "))) << id;
    EXPECT_NO_THROW(static_cast<void>(language.queryFor(ParseQueryCategory::injections))) << id;
  }
  EXPECT_GE(withHighlights, 20);
}

TEST(ShippedQueries, PredicatesWithAnEqualGetItsNameAndOthersTakeTheirPatternAway) {
  const std::string text = "((number) @a (#any-of? @a \"1\" \"2\"))\n"
                           "((string) @b\n (#lua-match? @b \"^%d\"))\n"
                           "((null) @c (#set! \"x\" \"y\"))\n";
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::json);
  const PackText adapted = adaptedToQueries({.text = text, .pieces = {{0, "f"}}}, grammar);
  EXPECT_EQ(adapted.text.size(), text.size());
  EXPECT_EQ(adapted.text.substr(0, 36), "((number) @a (#eq?     @a \"1\" \"2\"))\n");
  const Query query(adapted.text, grammar);
  EXPECT_EQ(query.patternCount(), 2);
  EXPECT_EQ(adapted.placeOf(query.patterns()[1].byteRange().lowerBound).line, 4);
}

TEST(ShippedQueries, WhatDoesNotCompileThrows) {
  EXPECT_THROW(static_cast<void>(adaptedToQueries({.text = "(nonsense) @a", .pieces = {{0, "f"}}},
                                                  Grammar::fromBuiltIn(Grammar::BuiltIn::json))),
               QueryError);
}

} // namespace
} // namespace velmar::host
