#include "host/PackReader.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>

namespace velmar::host {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

/// A folder of packs that lasts as long as the test: file names below it, and their texts.
class PackReaderTest : public testing::Test {
protected:
  PackReaderTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velmar-packs-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~PackReaderTest() override { std::filesystem::remove_all(folder_); }

  PackReader readerOf(const std::map<std::string, std::string>& files) {
    for (const auto& [name, text] : files) {
      const auto path = folder_ / name;
      std::filesystem::create_directories(path.parent_path());
      std::ofstream(path, std::ios::binary) << text;
    }
    return PackReader(FilePath(folder_.string()));
  }

  std::filesystem::path folder_;
};

TEST_F(PackReaderTest, GivesAPackAsItStands) {
  const auto text = readerOf({{"c/folds.scm", "(a)\n(b)"}}).textFor("c", "folds");
  ASSERT_TRUE(text);
  EXPECT_EQ(text->text, "(a)\n(b)\n");
  EXPECT_EQ(text->pieces, (std::vector<PackText::Piece>{{0, "c/folds.scm"}}));
}

TEST_F(PackReaderTest, HasNothingForOtherLanguagesAndCategories) {
  const PackReader reader = readerOf({{"c/folds.scm", "(a)"}});
  EXPECT_FALSE(reader.textFor("d", "folds"));
  EXPECT_FALSE(reader.textFor("c", "symbols"));
}

TEST_F(PackReaderTest, NeverLeavesItsFolder) {
  readerOf({{"c/folds.scm", "(a)"}, {"packs/d/folds.scm", "(b)"}});
  const PackReader inner(FilePath((folder_ / "packs").string()));
  EXPECT_TRUE(inner.textFor("d", "folds"));
  EXPECT_FALSE(inner.textFor("../c", "folds"));
  EXPECT_FALSE(inner.textFor("..", "folds"));
  EXPECT_FALSE(inner.textFor("", "folds"));
}

TEST_F(PackReaderTest, PutsParentsInFrontEachOnce) {
  const PackReader reader = readerOf({{"_base/folds.scm", "(base)"},
                                      {"left/folds.scm", "; inherits: _base\n(left)"},
                                      {"right/folds.scm", "; inherits: _base\r\n(right)"},
                                      {"both/folds.scm", "; inherits: left,right\n(both)"}});
  const auto text = reader.textFor("both", "folds");
  ASSERT_TRUE(text);
  EXPECT_EQ(text->text, "(base)\n"
                        "; inherits: _base\n(left)\n"
                        "; inherits: _base\r\n(right)\n"
                        "; inherits: left,right\n(both)\n");
}

TEST_F(PackReaderTest, SpeaksOfInheritingInTheFirstLineOnly) {
  const auto text = readerOf({{"c/folds.scm", "\n; inherits: nobody\n"}}).textFor("c", "folds");
  ASSERT_TRUE(text);
  EXPECT_EQ(text->pieces.size(), 1u);
}

TEST_F(PackReaderTest, RefusesParentsThatAreMissing) {
  const PackReader reader =
      readerOf({{"c/folds.scm", "; inherits: d\n"}, {"d/symbols.scm", "(a)"}});
  EXPECT_THAT([&] { (void)reader.textFor("c", "folds"); },
              ThrowsMessage<PackError>("The pack “c/folds.scm” inherits “d”, which has no folds."));
}

TEST_F(PackReaderTest, RefusesCircles) {
  const PackReader reader = readerOf({{"a/folds.scm", "; inherits: b"},
                                      {"b/folds.scm", "; inherits: c"},
                                      {"c/folds.scm", "; inherits: a"},
                                      {"d/folds.scm", "; inherits: d"}});
  EXPECT_THAT([&] { (void)reader.textFor("a", "folds"); },
              ThrowsMessage<PackError>("The pack “c/folds.scm” inherits itself."));
  EXPECT_THAT([&] { (void)reader.textFor("d", "folds"); },
              ThrowsMessage<PackError>("The pack “d/folds.scm” inherits itself."));
}

TEST_F(PackReaderTest, KnowsWhereEachByteComesFrom) {
  const auto text =
      readerOf({{"_b/folds.scm", "(1)\n(2)\n"}, {"c/folds.scm", "; inherits: _b\n(3)"}})
          .textFor("c", "folds");
  ASSERT_TRUE(text);
  ASSERT_EQ(text->text, "(1)\n(2)\n\n; inherits: _b\n(3)\n");
  EXPECT_EQ(text->placeOf(0), (PackText::Place{"_b/folds.scm", 1}));
  EXPECT_EQ(text->placeOf(4), (PackText::Place{"_b/folds.scm", 2}));
  EXPECT_EQ(text->placeOf(9), (PackText::Place{"c/folds.scm", 1}));
  EXPECT_EQ(text->placeOf(24), (PackText::Place{"c/folds.scm", 2}));
  EXPECT_EQ(text->placeOf(28), (PackText::Place{"c/folds.scm", 3}));
  EXPECT_DEATH((void)text->placeOf(29), "outside the text");
}

} // namespace
} // namespace velmar::host
