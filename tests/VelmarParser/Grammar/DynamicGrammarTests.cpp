#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarParser/Grammar/Parser.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"
#include "tests/VelmarParser/Grammar/ParsedSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>

namespace velmar {
namespace {

/// Built with the tests: a grammar for JSON that calls itself "garden".
const FilePath gardenLibrary{VELMAR_GARDEN_GRAMMAR};
/// A library that exports no grammar.
const FilePath otherLibrary{VELMAR_NO_GRAMMAR};

/// Whether the process has the library open, asked without opening it.
bool isOpen(const FilePath& path) {
  void* const handle = dlopen(path.string().c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle)
    dlclose(handle);
  return handle != nullptr;
}

TEST(DynamicGrammar, ParsesLikeABuiltInOne) {
  const auto grammar = Grammar::fromDynamicLibrary("garden", gardenLibrary);
  EXPECT_EQ(grammar->id(), "garden");
  Parser parser("garden", grammar, std::make_shared<const AtomicFlag>());
  DocumentText text;
  text.replaceSubrange({0, 0}, u"[1, 2]");
  ParseInput input(text);
  const auto tree = parser.parse(nullptr, input.input());
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->rootNode().namedChildren()[0].namedChildren().count(), 2);
}

TEST(DynamicGrammar, ItsLibraryStaysOpenAsLongAsSomethingHoldsIt) {
  ASSERT_FALSE(isOpen(gardenLibrary));
  auto first = Grammar::fromDynamicLibrary("garden", gardenLibrary);
  auto parser = std::make_unique<Parser>("garden", first, std::make_shared<const AtomicFlag>());
  first.reset();
  EXPECT_TRUE(isOpen(gardenLibrary));
  parser.reset();
  EXPECT_FALSE(isOpen(gardenLibrary));
}

TEST(DynamicGrammar, ALibraryWithoutTheEntryFunctionIsClosedAgain) {
  ASSERT_FALSE(isOpen(otherLibrary));
  try {
    (void)Grammar::fromDynamicLibrary("garden", otherLibrary);
    FAIL();
  } catch (const DynamicGrammarError& error) {
    EXPECT_EQ(error.kind(), DynamicGrammarError::Kind::functionNotFound);
    EXPECT_THAT(error.message(),
                ::testing::StartsWith(
                    "Failed to reference dynamic language function “tree_sitter_garden”: "));
    EXPECT_THAT(error.message(), ::testing::HasSubstr("undefined symbol"));
  }
  EXPECT_FALSE(isOpen(otherLibrary));
}

TEST(DynamicGrammar, AnEntryFunctionOfAnotherNameIsNotEnough) {
  EXPECT_THROW((void)Grammar::fromDynamicLibrary("json", gardenLibrary), DynamicGrammarError);
  EXPECT_FALSE(isOpen(gardenLibrary));
}

struct BadLibrary {
  const char* name;
  std::string path;
  std::string loaderSays;
};
class DynamicGrammarLoad : public ::testing::TestWithParam<BadLibrary> {};

TEST_P(DynamicGrammarLoad, FailureNamesThePathAndTheLoadersReason) {
  try {
    (void)Grammar::fromDynamicLibrary("garden", FilePath(GetParam().path));
    FAIL();
  } catch (const DynamicGrammarError& error) {
    EXPECT_EQ(error.kind(), DynamicGrammarError::Kind::libraryLoadFailed);
    EXPECT_THAT(error.message(), ::testing::StartsWith("Failed to load dynamic library “" +
                                                       repairedUTF8(GetParam().path) + "”: "));
    EXPECT_EQ(error.message(), repairedUTF8(error.message()));
    EXPECT_THAT(error.message(), ::testing::HasSubstr(GetParam().loaderSays));
  }
}
INSTANTIATE_TEST_SUITE_P(
    Cases, DynamicGrammarLoad,
    ::testing::Values(BadLibrary{"NoFile", "/nowhere/garden.so", "No such file or directory"},
                      BadLibrary{"NoText", "/nowhere/\xFF.so", "No such file or directory"},
                      BadLibrary{"NoLibrary", sourcePath("README.md"), "invalid ELF header"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar
