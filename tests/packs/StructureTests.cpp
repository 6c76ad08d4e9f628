// What the packs make of small files of each language: their outlines, as `velmar outline` prints
// them, and their folds. Beside tests/packs/structure/NAME stands what is expected, NAME.expected,
// to be read as a difference when a pack changes. This rewrites them all:
//     VELMAR_REWRITE_GOLDEN=1 build/dev/tests/packsTests --gtest_filter='*Golden*'
#include "VelmarParser/Query/Query.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "cmake/SourceTree.h"
#include "host/LanguageTable.h"
#include "host/OutlineText.h"
#include "tests/packs/PackFiles.h"
#include "tests/packs/PackLanguages.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace velmar::testing {
namespace {

using std::filesystem::path;

std::vector<path> sources() {
  std::vector<path> found;
  for (const auto& entry : std::filesystem::directory_iterator(sourcePath("tests/packs/structure")))
    if (entry.path().extension() != ".expected")
      found.push_back(entry.path());
  std::ranges::sort(found);
  return found;
}

std::string contentsOf(const path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class StructureGolden : public ::testing::TestWithParam<path> {};

TEST_P(StructureGolden, OutlineAndFoldsAreTheExpectedOnes) {
  const std::string source = contentsOf(GetParam());
  const host::Language* language = host::languageOf(GetParam().filename().string(), source);
  ASSERT_NE(language, nullptr);
  Parse document(PackLanguages::shared().configuration(language->id.rawValue));
  document.setErrorHandler(
      [](const ParseConfiguration& asked, std::string_view label, const std::exception& error) {
        ADD_FAILURE() << asked.id().rawValue << ", " << label << ": " << error.what();
      });
  document.replaceSubrange({0, 0}, source);

  const Structure structure = parseStructure(document.rootLayer());
  host::StringOutput output;
  host::writeOutline(structure.symbols, document.text(), output);
  output.write("\n");
  host::writeFolds(structure.folds, document.text(), output);
  const path golden = GetParam().string() + ".expected";
  if (std::getenv("VELMAR_REWRITE_GOLDEN")) // NOLINT(concurrency-mt-unsafe): nobody sets it
    std::ofstream(golden, std::ios::binary) << output.text();
  EXPECT_EQ(output.text(), contentsOf(golden));
}

INSTANTIATE_TEST_SUITE_P(All, StructureGolden, ::testing::ValuesIn(sources()), [](const auto& row) {
  std::string name = row.param.filename().string();
  std::ranges::replace(name, '.', '_');
  return name;
});

/// All values that the patterns of `query` can set for `key`.
std::set<std::string> valuesOf(std::string_view key, const Query& query) {
  std::set<std::string> values;
  const auto addCases = [&](const auto& action) {
    for (const auto& [condition, value] : action.cases)
      values.insert(value);
    values.insert(action.defaultValue.value_or(""));
  };
  for (const auto& pattern : query.propertySetPredicates()) {
    for (const QueryPredicates::PropertySet& set : pattern) {
      if (set.key != key)
        continue;
      std::visit(Overloaded{[&](const auto& action) { values.insert(action.value.text()); },
                            [&](const QueryPredicates::PropertySet::SetByCaseIfEquals& action) {
                              addCases(action);
                            },
                            [&](const QueryPredicates::PropertySet::SetByCaseIfMatches& action) {
                              addCases(action);
                            }},
                 set.action);
    }
  }
  return values;
}

/// The engine passes over what it doesn't know, so a slip of the pen shows only here.
TEST(StructurePacks, WriteNoWordThatMeansNothing) {
  const host::PackReader reader(packFolder());
  const std::set<std::string_view> captures{"subtree",         "start",
                                            "start.before",    "end",
                                            "end.after",       "name",
                                            "name.target",     "type",
                                            "displayname",     "displayname.target",
                                            "arguments.target"};
  for (const PackFile& file : languagePackFiles()) {
    if (file.category != "symbols" && file.category != "folds")
      continue;
    SCOPED_TRACE(file.path());
    const Query query(textOf(file).text, grammarOf(file.language));
    for (const std::string& capture : query.captureNames())
      EXPECT_TRUE(capture.starts_with('_') || captures.contains(capture)) << capture;
    for (const std::string& role : valuesOf("role", query)) {
      if (file.category == "folds")
        EXPECT_THAT(role,
                    ::testing::AnyOf("comment", "function", "type", "block", "tag", "heading"));
      else if (!role.empty())
        EXPECT_TRUE(CodeSymbolKind::fromString(role) || role == "function-or-method") << role;
    }
    for (const std::string_view key : {"name.query", "displayname.query", "arguments.query"}) {
      for (const std::string& name : valuesOf(key, query))
        EXPECT_TRUE(reader.textNamed(file.language, name)) << name;
    }
  }
}

} // namespace
} // namespace velmar::testing
