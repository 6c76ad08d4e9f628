#include "VelmarPlatform/Files/FileContents.h"

#include "VelmarPlatform/Basics/Error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace velmar {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

/// Each test has a new folder, which goes with all its contents.
class FileContents : public testing::Test {
protected:
  FileContents() {
    std::string name = testing::TempDir() + "velmar-files-XXXXXX";
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    folder_ = FilePath(name);
  }
  ~FileContents() override { std::filesystem::remove_all(folder_.string()); }

  [[nodiscard]] FilePath in(std::string_view name) const { return folder_.appending(name); }

  FilePath make(std::string_view name, std::string_view contents) const {
    std::ofstream(in(name).string(), std::ios::binary) << contents;
    return in(name);
  }

  [[nodiscard]] static std::string contentsOf(const FilePath& path) {
    std::ifstream stream(path.string(), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  [[nodiscard]] std::vector<std::string> names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.string()))
      found.push_back(entry.path().filename().string());
    return found;
  }

  [[nodiscard]] static mode_t permissionsOf(const FilePath& path) {
    struct stat status{};
    EXPECT_EQ(stat(path.string().c_str(), &status), 0);
    return status.st_mode & 07777;
  }

  FilePath folder_;
};

/// Expects that `action` throws a `SystemError` with this code and this sentence.
template <class Action>
void expectSystemError(Action action, int code, const std::string& sentence) {
  try {
    action();
    ADD_FAILURE() << "nothing thrown; expected: " << sentence;
  } catch (const SystemError& error) {
    EXPECT_EQ(error.code(), code);
    EXPECT_EQ(error.message(), sentence);
  }
}

TEST_F(FileContents, AreReadToTheLastByte) {
  const std::string text("a\0\r\n\xFF", 5);
  EXPECT_EQ(charactersOf(readFile(make("a", text))), text);
  EXPECT_EQ(readFile(make("empty", "")).size(), 0U);
  const std::string large(3'000'001, 'x');
  EXPECT_EQ(charactersOf(readFile(make("large", large))), large);
}

TEST_F(FileContents, OfAFileWithoutASizeAreReadToTheEnd) {
  // The system makes these up while they are read and says that they have no bytes.
  EXPECT_NE(readFile(FilePath("/proc/self/maps")).size(), 0U);
  EXPECT_EQ(readFile(FilePath("/dev/null")).size(), 0U);
}

TEST_F(FileContents, ThatCannotBeReadAreASentence) {
  const std::string folder = folder_.string();
  expectSystemError([&] { (void)readFile(in("x")); }, ENOENT,
                    "Could not open “" + folder + "/x”: No such file or directory.");
  expectSystemError([&] { (void)readFile(folder_); }, EISDIR,
                    "Could not read “" + folder + "”: It is a folder.");
  expectSystemError([&] { (void)readFile(FilePath("")); }, ENOENT,
                    "Could not open “”: No such file or directory.");
  expectSystemError([&] { (void)readFile(FilePath(std::string_view("a\0b", 3))); }, EINVAL,
                    "Could not open “a"s + '\0' + "b”: The name holds a NUL.");
  std::filesystem::create_symlink("loop", in("loop").string());
  expectSystemError([&] { (void)readFile(in("loop")); }, ELOOP,
                    "Could not open “" + folder + "/loop”: Too many levels of symbolic links.");
}

TEST_F(FileContents, UpToTheSizeLimitAreAccepted) {
  const FilePath path = make("five", "12345");
  EXPECT_EQ(charactersOf(readFile(path, {.sizeLimit = 5})), "12345");
  expectSystemError([&] { (void)readFile(path, {.sizeLimit = 4}); }, EFBIG,
                    "Could not read “" + path.string() + "”: It is larger than 4 bytes.");
  EXPECT_EQ(readFile(make("empty", ""), {.sizeLimit = 0}).size(), 0U);
}

TEST_F(FileContents, WithoutAnEndStopAtTheSizeLimit) {
  expectSystemError([] { (void)readFile(FilePath("/dev/zero"), {.sizeLimit = 1'000'000}); }, EFBIG,
                    "Could not read “/dev/zero”: It is larger than 1000000 bytes.");
}

// The sanitizers reserve far more address space than the limit that this sets.
#if !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer)
TEST_F(FileContents, LargerThanMemoryAreASentence) {
  const FilePath path = make("sparse", "");
  ASSERT_EQ(truncate(path.string().c_str(), 4LL << 30), 0);
  const auto readWithLittleMemory = [&] {
    const rlimit limit{1U << 30, 1U << 30};
    setrlimit(RLIMIT_AS, &limit);
    try {
      (void)readFile(path);
    } catch (const SystemError& error) {
      std::fputs(error.what(), stderr);
      std::_Exit(error.code() == ENOMEM ? 0 : 1);
    }
    std::_Exit(2);
  };
  EXPECT_EXIT(readWithLittleMemory(), testing::ExitedWithCode(0),
              "Could not read .*sparse”: Cannot allocate memory\\.");
}
#endif

TEST_F(FileContents, OfTheStandardInputComeThroughAPipe) {
  const int standardInput = dup(STDIN_FILENO);
  int ends[2] = {};
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "piped", 5), 5);
  close(ends[1]);
  dup2(ends[0], STDIN_FILENO);
  close(ends[0]);
  EXPECT_EQ(charactersOf(readStandardInput()), "piped");

  const int folder = ::open(folder_.string().c_str(), O_RDONLY | O_DIRECTORY);
  dup2(folder, STDIN_FILENO);
  close(folder);
  expectSystemError([] { (void)readStandardInput(); }, EISDIR,
                    "Could not read the standard input: It is a folder.");
  if (standardInput >= 0) {
    dup2(standardInput, STDIN_FILENO);
    close(standardInput);
  } else {
    close(STDIN_FILENO);
  }
}

TEST_F(FileContents, AreReplacedAndNothingIsLeftBeside) {
  const FilePath path = in("a");
  writeFileAtomically(path, bytesOf("old"));
  EXPECT_EQ(contentsOf(path), "old");
  const std::string large(1'000'000, 'y');
  writeFileAtomically(path, bytesOf(large));
  EXPECT_EQ(contentsOf(path), large);
  writeFileAtomically(path, {});
  EXPECT_EQ(contentsOf(path), "");
  EXPECT_THAT(names(), ElementsAre("a"));
}

TEST_F(FileContents, KeepTheirPermissions) {
  const FilePath path = make("script", "old");
  ASSERT_EQ(chmod(path.string().c_str(), 0751), 0);
  writeFileAtomically(path, bytesOf("new"));
  EXPECT_EQ(permissionsOf(path), 0751U);

  const mode_t mask = umask(027);
  writeFileAtomically(in("new"), bytesOf("new"));
  umask(mask);
  EXPECT_EQ(permissionsOf(in("new")), 0640U);
}

TEST_F(FileContents, BehindALinkAreReplacedThere) {
  const FilePath path = make("target", "old");
  std::filesystem::create_directory(in("links").string());
  std::filesystem::create_symlink("../target", in("links/link").string());
  writeFileAtomically(in("links/link"), bytesOf("new"));
  EXPECT_EQ(contentsOf(path), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(in("links/link").string()));

  std::filesystem::create_symlink("nowhere", in("dangling").string());
  writeFileAtomically(in("dangling"), bytesOf("new"));
  EXPECT_EQ(contentsOf(in("dangling")), "new");
  EXPECT_THAT(names(), UnorderedElementsAre("target", "links", "dangling"));
}

TEST_F(FileContents, SeenThroughAnotherLinkStayWhole) {
  const FilePath path = make("a", "old contents");
  std::filesystem::create_hard_link(path.string(), in("b").string());
  writeFileAtomically(path, bytesOf("new"));
  EXPECT_EQ(contentsOf(in("b")), "old contents");
}

TEST_F(FileContents, ThatCannotBeWrittenAreASentenceAndLeaveNothing) {
  const std::string folder = folder_.string();
  std::filesystem::create_directory(in("inner").string());
  expectSystemError([&] { writeFileAtomically(in("inner"), bytesOf("x")); }, EISDIR,
                    "Could not write “" + folder + "/inner”: It is a folder.");
  expectSystemError([&] { writeFileAtomically(in("no/a"), bytesOf("x")); }, ENOENT,
                    "Could not write “" + folder + "/no/a”: No such file or directory.");
  expectSystemError([&] { writeFileAtomically(FilePath("/dev/null"), bytesOf("x")); }, EINVAL,
                    "Could not write “/dev/null”: It is not a regular file.");
  const std::string longName(300, 'n');
  expectSystemError([&] { writeFileAtomically(in(longName), bytesOf("x")); }, ENAMETOOLONG,
                    "Could not write “" + folder + "/" + longName + "”: File name too long.");
  EXPECT_THAT(names(), ElementsAre("inner"));
}

TEST_F(FileContents, HaveNamesOfAnyBytes) {
  const FilePath path = in("\xFF\n");
  writeFileAtomically(path, bytesOf("x"));
  EXPECT_EQ(charactersOf(readFile(path)), "x");
}

} // namespace
} // namespace velmar
