#include "host/LanguageTable.h"

#include "host/LanguageChoice.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace velmar::host {
namespace {

struct DetectionCase {
  const char* name;
  std::optional<std::string> filename;
  std::string text;
  /// Empty if nothing speaks for any language.
  std::string language;
};
class LanguageDetected : public ::testing::TestWithParam<DetectionCase> {};

TEST_P(LanguageDetected, ByNameOrFirstLine) {
  const Language* const language = languageOf(GetParam().filename, GetParam().text);
  EXPECT_EQ(language ? language->id.rawValue : "", GetParam().language);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, LanguageDetected,
    ::testing::Values(
        DetectionCase{"Extension", "main.rs", "", "rust"},
        DetectionCase{"OtherLetterCase", "README.MD", "", "markdown"},
        DetectionCase{"CapitalC", "old.C", "", "cpp"}, DetectionCase{"SmallC", "old.c", "", "c"},
        DetectionCase{"CompoundExtension", "index.html.erb", "", "html+erb"},
        DetectionCase{"CompoundBeforeSimple", "page.html.j2", "", "html+jinja"},
        DetectionCase{"SimpleOfUnknownCompound", "nginx.conf.j2", "", "jinja"},
        DetectionCase{"VersionInTheName", "lib-1.2.js", "", "javascript"},
        DetectionCase{"FileName", "Makefile", "", "make"},
        DetectionCase{"FileNameBeforeExtension", "CMakeLists.txt", "", "cmake"},
        DetectionCase{"HiddenFile", ".bashrc", "", "shell"},
        DetectionCase{"ExtensionBeforeInterpreter", "a.rb", "#!/usr/bin/python\n", "ruby"},
        DetectionCase{"Interpreter", "tool", "#!/usr/bin/python\n", "python"},
        DetectionCase{"InterpreterOfStandardInput", std::nullopt, "#!/bin/sh", "shell"},
        DetectionCase{"Env", "tool", "#!/usr/bin/env ruby\n", "ruby"},
        DetectionCase{"EnvWithOptionsAndVariables", "tool",
                      "#!/usr/bin/env -S LANG=C node --flag\n", "javascript"},
        DetectionCase{"VersionOfAnInterpreter", "tool", "#! /usr/local/bin/python3.11 -u\r\n",
                      "python"},
        DetectionCase{"OtherProgramWithTheSameStart", "tool", "#!/usr/bin/pythonic\n", ""},
        DetectionCase{"InterpreterOnTheSecondLine", "tool", "\n#!/bin/sh\n", ""},
        DetectionCase{"Nothing", "tool", "hello", ""}, DetectionCase{"EmptyName", "", "", ""}),
    [](const auto& row) { return std::string(row.param.name); });

struct NamedCase {
  std::string name;
  std::string language;
};
class LanguageNamed : public ::testing::TestWithParam<NamedCase> {};

TEST_P(LanguageNamed, ByIdentifierOrAlias) {
  const Language* const language = languageNamed(GetParam().name);
  EXPECT_EQ(language ? language->id.rawValue : "", GetParam().language);
}
INSTANTIATE_TEST_SUITE_P(Cases, LanguageNamed,
                         ::testing::Values(NamedCase{"cpp", "cpp"}, NamedCase{"C++", "cpp"},
                                           NamedCase{"JS", "javascript"}, NamedCase{"sh", "shell"},
                                           NamedCase{"c_sharp", "csharp"},
                                           NamedCase{"html+erb", "html+erb"},
                                           NamedCase{"sonnet", ""}, NamedCase{"", ""}));

struct HeaderCase {
  const char* name;
  std::string text;
  std::string language;
};
class HeaderLanguage : public ::testing::TestWithParam<HeaderCase> {};

TEST_P(HeaderLanguage, IsCUnlessOnlyCPlusPlusCanBeMeant) {
  SourceText source{.name = "“shape.h”",
                    .filename = "shape.h",
                    .text = std::make_unique<DocumentText>(),
                    .notes = {}};
  source.text->replaceSubrange({0, 0}, GetParam().text);
  EXPECT_EQ(languageFor(source, std::nullopt).id.rawValue, GetParam().language);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, HeaderLanguage,
    ::testing::Values(
        HeaderCase{"Empty", "", "c"},
        HeaderCase{"Plain", "#include <math.h>\nstruct P { int x; };\nint f(struct P*);\n", "c"},
        HeaderCase{"WordsInComments", "/* class A {\n  namespace b {} */\nint f(void);\n", "c"},
        HeaderCase{"WordsInStrings", "static const char* a = \"class A {};\";\n", "c"},
        HeaderCase{"BothLanguages",
                   "#ifdef __cplusplus\n#include <cstdint>\nextern \"C\" {\n#endif\nint f(void);\n"
                   "#ifdef __cplusplus\n}\n#endif\n",
                   "c"},
        HeaderCase{"WithAnOfferToCPlusPlus",
                   "int f(void);\n#if defined(__cplusplus)\nnamespace a { class B; }\n#endif\n",
                   "c"},
        HeaderCase{"Class", "class A;\n", "cpp"},
        HeaderCase{"Guarded", "#ifndef A_H\n#define A_H\nnamespace a {\nint f();\n}\n#endif\n",
                   "cpp"},
        HeaderCase{"Template", "template <class T> T f(T);\n", "cpp"},
        HeaderCase{"Reference", "int f(const int& a);\n", "cpp"},
        HeaderCase{"StandardHeader", "#pragma once\n#include <vector>\n", "cpp"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(LanguageTable, EveryGrammarHasALanguage) {
  std::set<Grammar::BuiltIn> used;
  for (const Language& language : languages()) {
    if (language.grammar)
      used.insert(*language.grammar);
  }
  for (const Grammar::BuiltIn builtIn : Grammar::allBuiltIns())
    EXPECT_TRUE(used.contains(builtIn)) << Grammar::rawValueOf(builtIn);
}

TEST(LanguageTable, NoTwoLanguagesGoByTheSameName) {
  std::map<std::string, std::string, std::less<>> owners;
  for (const Language& language : languages()) {
    EXPECT_TRUE(owners.emplace(language.id.rawValue, language.id.rawValue).second) << language.id;
  }
  for (const Language& language : languages()) {
    for (const std::string_view alias : language.aliases) {
      const auto [owner, isNew] = owners.emplace(alias, language.id.rawValue);
      EXPECT_TRUE(isNew) << alias << " is " << language.id << " and " << owner->second;
    }
  }
}

} // namespace
} // namespace velmar::host
