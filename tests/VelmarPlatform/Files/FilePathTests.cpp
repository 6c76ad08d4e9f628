#include "VelmarPlatform/Files/FilePath.h"

#include "VelmarPlatform/Files/FilePathFormatStyle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace velmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::input_iterator<FilePathAncestors::Iterator>);

TEST(FilePath, DropsSlashesThatSayNothing) {
  EXPECT_EQ(FilePath("a//b///").string(), "a/b");
  EXPECT_EQ(FilePath("//").string(), "/");
  EXPECT_EQ(FilePath("//usr").string(), "/usr");
  EXPECT_EQ(FilePath("").string(), "");
  EXPECT_EQ(FilePath("./a").string(), "./a");
}

TEST(FilePath, TheRootIsAComponent) {
  EXPECT_THAT(FilePath("/usr/lib").components(), ElementsAre("/", "usr", "lib"));
  EXPECT_THAT(FilePath("/").components(), ElementsAre("/"));
  EXPECT_THAT(FilePath("a/../b").components(), ElementsAre("a", "..", "b"));
  EXPECT_THAT(FilePath("").components(), IsEmpty());
}

struct NameCase {
  const char* path;
  const char* last;
  const char* stem;
  std::optional<std::string> extension;
  std::optional<std::string> compound;
};

class FilePathName : public testing::TestWithParam<NameCase> {};

TEST_P(FilePathName, IsTakenApart) {
  const FilePath path(GetParam().path);
  SCOPED_TRACE(path);
  EXPECT_EQ(path.lastComponent(), GetParam().last);
  EXPECT_EQ(path.stem(), GetParam().stem);
  EXPECT_EQ(path.extension(), GetParam().extension);
  EXPECT_EQ(path.compoundExtension(), GetParam().compound);
}

constexpr auto none = std::nullopt;

INSTANTIATE_TEST_SUITE_P(
    Cases, FilePathName,
    testing::Values(
        NameCase{"", "", "", none, none}, NameCase{"/", "/", "/", none, none},
        NameCase{"a/b", "b", "b", none, none}, NameCase{"a.c", "a.c", "a", "c", "c"},
        NameCase{"x.y/b", "b", "b", none, none},
        NameCase{"a.tar.gz", "a.tar.gz", "a.tar", "gz", "tar.gz"},
        NameCase{"b/a-1.2.tar.gz", "a-1.2.tar.gz", "a-1.2.tar", "gz", "tar.gz"},
        NameCase{"my.module.d.ts", "my.module.d.ts", "my.module.d", "ts", "d.ts"},
        NameCase{".profile", ".profile", ".profile", none, none},
        NameCase{"~/.config.json", ".config.json", ".config", "json", "json"},
        NameCase{".a.b.c", ".a.b.c", ".a.b", "c", "b.c"}, NameCase{"..a", "..a", "..a", none, none},
        NameCase{".", ".", ".", none, none}, NameCase{"a/..", "..", "..", none, none},
        NameCase{"...", "...", "...", none, none}, NameCase{"a.", "a.", "a.", none, none},
        NameCase{"a.b.", "a.b.", "a.b.", none, none}, NameCase{"a..gz", "a..gz", "a.", "gz", "gz"},
        NameCase{"Ä.ñ", "Ä.ñ", "Ä", "ñ", "ñ"}));

TEST(FilePath, AppendsBeneathItself) {
  EXPECT_EQ(FilePath("a").appending("b/c"), FilePath("a/b/c"));
  EXPECT_EQ(FilePath("a").appending("/b"), FilePath("a/b"));
  EXPECT_EQ(FilePath("/").appending("a"), FilePath("/a"));
  EXPECT_EQ(FilePath("").appending("a"), FilePath("a"));
  EXPECT_EQ(FilePath("").appending("/a"), FilePath("a"));
  EXPECT_EQ(FilePath("a").appending(""), FilePath("a"));
  EXPECT_EQ(FilePath("a").appending("/"), FilePath("a"));
  EXPECT_EQ(FilePath("a").appending(FilePath("../b")).string(), "a/../b");
}

TEST(FilePath, ARelativePathStartsFromTheGivenOne) {
  const FilePath folder("/base");
  EXPECT_EQ(FilePath("a/b", folder), FilePath("/base/a/b"));
  EXPECT_EQ(FilePath("/a", folder), FilePath("/a"));
  EXPECT_EQ(FilePath("", folder), folder);
  EXPECT_EQ(FilePath("a", FilePath()), FilePath("a"));
  EXPECT_EQ(FilePath(FilePath("../a"), folder).string(), "/base/../a");
}

TEST(FilePath, LosesItsLastComponent) {
  EXPECT_EQ(FilePath("a/b").removingLastComponent(), FilePath("a"));
  EXPECT_EQ(FilePath("/a").removingLastComponent(), FilePath("/"));
  EXPECT_EQ(FilePath("a").removingLastComponent(), FilePath());
  EXPECT_EQ(FilePath("/").removingLastComponent(), FilePath());
  EXPECT_EQ(FilePath().removingLastComponent(), FilePath());
}

std::vector<std::string> ancestorsOf(const char* path) {
  std::vector<std::string> found;
  for (const FilePath& ancestor : FilePath(path).ancestors())
    found.push_back(ancestor.string());
  return found;
}

TEST(FilePath, AncestorsStartWithThePathItself) {
  EXPECT_THAT(ancestorsOf("/a/b"), ElementsAre("/a/b", "/a", "/"));
  EXPECT_THAT(ancestorsOf("a/b"), ElementsAre("a/b", "a"));
  EXPECT_THAT(ancestorsOf("/"), ElementsAre("/"));
  EXPECT_THAT(ancestorsOf(""), IsEmpty());
}

struct StandardCase {
  const char* path;
  const char* standardized;
};

class FilePathStandardized : public testing::TestWithParam<StandardCase> {};

TEST_P(FilePathStandardized, HasNoDetours) {
  const FilePath path(GetParam().path);
  EXPECT_EQ(path.standardized().string(), GetParam().standardized) << path;
  EXPECT_EQ(path.standardized().standardized(), path.standardized());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FilePathStandardized,
    testing::Values(StandardCase{"", ""}, StandardCase{"/", "/"}, StandardCase{".", ""},
                    StandardCase{"./a", "a"}, StandardCase{"a/./b/.", "a/b"},
                    StandardCase{"a/../b", "b"}, StandardCase{"a/..", ""},
                    StandardCase{"a/b/../../..", ".."}, StandardCase{"../../a", "../../a"},
                    StandardCase{"../a/../..", "../.."}, StandardCase{"/..", "/"},
                    StandardCase{"/../a", "/a"}, StandardCase{"/a/../../b//c", "/b/c"},
                    StandardCase{"a/...", "a/..."}));

TEST(FilePath, StartsWithWholeComponents) {
  EXPECT_TRUE(FilePath("/a/b").startsWith(FilePath("/a")));
  EXPECT_TRUE(FilePath("/a/b").startsWith(FilePath("/a/b")));
  EXPECT_TRUE(FilePath("/a/b").startsWith(FilePath("/")));
  EXPECT_TRUE(FilePath("a").startsWith(FilePath()));
  EXPECT_FALSE(FilePath("/a/bc").startsWith(FilePath("/a/b")));
  EXPECT_FALSE(FilePath("/a").startsWith(FilePath("/a/b")));
  EXPECT_FALSE(FilePath("a").startsWith(FilePath("/")));
}

TEST(FilePath, TheRestBehindAPrefixIsRelative) {
  EXPECT_EQ(FilePath("/a/b/c").removingPrefix(FilePath("/a")), FilePath("b/c"));
  EXPECT_EQ(FilePath("/a").removingPrefix(FilePath("/")), FilePath("a"));
  EXPECT_EQ(FilePath("/a").removingPrefix(FilePath("/a")), FilePath());
  EXPECT_EQ(FilePath("/a").removingPrefix(FilePath()), FilePath("/a"));
  EXPECT_EQ(FilePath("/ab").removingPrefix(FilePath("/a")), std::nullopt);
}

struct WayCase {
  const char* to;
  const char* from;
  std::optional<std::string> way;
};

class FilePathWay : public testing::TestWithParam<WayCase> {};

TEST_P(FilePathWay, LeadsFromTheFolderToThePath) {
  const FilePath to(GetParam().to);
  const FilePath from(GetParam().from);
  const auto way = to.relativePathFrom(from);
  EXPECT_EQ(way ? std::optional(way->string()) : std::nullopt, GetParam().way);
  if (way) {
    EXPECT_EQ(FilePath(*way, from).standardized(), to.standardized());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FilePathWay,
    testing::Values(WayCase{"/a/b", "/a", "b"}, WayCase{"/a/c", "/a/b", "../c"},
                    WayCase{"/a", "/a/b/c", "../.."}, WayCase{"/a", "/a", ""},
                    WayCase{"/a", "/", "a"}, WayCase{"/x/../a/b", "/a/.", "b"},
                    WayCase{"a/b", "c", "../a/b"}, WayCase{"../a", "../b", "../a"},
                    WayCase{"../a", "b", "../../a"}, WayCase{"a", "../b", none},
                    WayCase{"/a", "a", none}, WayCase{"a", "/a", none}, WayCase{"a", "", "a"}));

TEST(FilePath, AFolderComesRightBeforeWhatLiesInIt) {
  const std::vector<std::string> ascending = {"",     "/",    "/a",  "/a/b", "/a/b/c",
                                              "/a/c", "/a\t", "/a-", "/ab",  "a",
                                              "a/b",  "a-b",  "a.b", "b",    "é"};
  for (std::size_t left = 0; left < ascending.size(); ++left)
    for (std::size_t right = 0; right < ascending.size(); ++right)
      EXPECT_EQ(FilePath(ascending[left]) <=> FilePath(ascending[right]), left <=> right)
          << ascending[left] << " and " << ascending[right];
}

TEST(FilePath, BytesThatAreNoUTF8AreKeptButNotShown) {
  const FilePath path("a/\xFF.c");
  EXPECT_EQ(path.string(), "a/\xFF.c");
  EXPECT_EQ(path.description(), "a/\uFFFD.c");
  EXPECT_EQ(testing::PrintToString(path), "a/\uFFFD.c");
}

// The model takes ".." steps on a list of names.
TEST(FilePath, RandomPathsStandardizeLikeAWalk) {
  const std::vector<std::string> pieces = {"a", "b", ".", "..", "", "c.d"};
  std::mt19937 random(3);
  for (int step = 0; step < 3'000; ++step) {
    const bool isAbsolute = random() % 2 == 0;
    std::string text = isAbsolute ? "/" : ".";
    std::vector<std::string> place;
    std::size_t above = 0; // how far a relative walk has left its start
    for (int count = step % 8; count > 0; --count) {
      const std::string& piece = pieces[random() % pieces.size()];
      text += '/' + piece;
      if (piece.empty() || piece == ".")
        continue;
      if (piece != "..")
        place.push_back(piece);
      else if (!place.empty())
        place.pop_back();
      else if (!isAbsolute)
        ++above;
    }
    std::vector<std::string> expected(isAbsolute ? 0 : above, "..");
    if (isAbsolute)
      expected.emplace_back("/");
    expected.insert(expected.end(), place.begin(), place.end());
    EXPECT_EQ(FilePath(text).standardized().components(), expected) << text;
  }
}

TEST(FilePathFormatStyle, ShowsWhatLiesBelowTheBaseRelativeToIt) {
  const FilePathFormatStyle style{FilePath("/base/project")};
  EXPECT_EQ(style.format(FilePath("/base/project/a/b.c")), "a/b.c");
  EXPECT_EQ(style.format(FilePath("/base/project")), "/base/project");
  EXPECT_EQ(style.format(FilePath("/base/projects/a")), "/base/projects/a");
  EXPECT_EQ(style.format(FilePath("a")), "a");
  EXPECT_EQ(FilePathFormatStyle{}.format(FilePath("/a/b")), "/a/b");
}

} // namespace
} // namespace velmar
