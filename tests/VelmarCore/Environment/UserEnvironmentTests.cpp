#include "VelmarCore/Environment/AppBundle.h"
#include "VelmarCore/Environment/EnvFile.h"
#include "VelmarCore/Environment/UserEnvState.h"
#include "VelmarCore/Environment/UserEnvironmentFetch.h"
#include "VelmarCore/ShellEnvironment.h"
#include "tests/VelmarPlatform/Concurrency/Support.h"
#include "tests/VelmarPlatform/Process/Support.h"

#include <gmock/gmock.h>

namespace velmar {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;
using testing_support::Gate;
using testing_support::run;
using testing_support::runUntil;
using testing_support::TemporaryFolder;
using Values = SubprocessEnvironment::Values;

// Asking a shell

/// What a shell that is this script gives over `BASE=1` and `PATH=/base`.
Values fetchFrom(std::string_view script, std::string_view shellName = "shell") {
  const TemporaryFolder folder;
  const FilePath shell = folder.write(shellName, "#!/bin/sh\n" + std::string(script), 0755);
  return run([&] { return fetchUserEnvironment(shell, {{"BASE", "1"}, {"PATH", "/base"}}); });
}

TEST(UserEnvironmentFetch, TakesEachShellAtItsWord) {
  const struct {
    const char* name;
    std::string script;
    Values added; // over the base
  } cases[] = {
      {"silent", "", {}},
      {"noisy",
       "echo Welcome back; echo >&2 E=1; echo; echo A=b=c; echo _=/usr/bin/env; echo _X=; echo =v",
       {{"A", "b=c"}, {"_X", ""}, {"", "v"}}},
      {"values with line feeds",
       R"(printf 'F=() {\n x=1\n}\nF=last\n')",
       {{"F", "last"}, {" x", "1"}}},
      {"dies", "echo A=1; kill -KILL $$", {{"A", "1"}}},
      {"fails", "echo A=1; echo PATH=/user; exit 9", {{"A", "1"}, {"PATH", "/user"}}},
      {"slow", "sleep 0.2; echo A=1", {{"A", "1"}}},
      {"no environment of ours, no input", "cat; env | grep -c USER", {}},
      {"prints no text", R"(printf 'A=\377\n')", {{"A", "\uFFFD"}}},
      {"prints too much",
       "echo A=1; printf B=; head -c 131069 /dev/zero | tr '\\0' b",
       {{"A", "1"}}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    Values expected = row.added;
    expected.merge(Values{{"BASE", "1"}, {"PATH", "/base"}});
    EXPECT_EQ(fetchFrom(row.script), expected);
  }
}

TEST(UserEnvironmentFetch, OnlyTheCShellsGetNoLoginFlag) {
  const std::string script = "echo \"ARGUMENTS=$*\"";
  const auto argumentsOf = [&](std::string_view name) {
    return fetchFrom(script, name)["ARGUMENTS"];
  };
  EXPECT_EQ(argumentsOf("zsh"), "-i -l -c /usr/bin/env");
  EXPECT_EQ(argumentsOf("csh"), "-i -c /usr/bin/env");
  EXPECT_EQ(argumentsOf("tcsh"), "-i -c /usr/bin/env");
}

TEST(UserEnvironmentFetch, ARealShellReadsItsStartUpFiles) {
  const Values values = run([] { return fetchUserEnvironment(FilePath("/bin/bash"), {}); });
  EXPECT_TRUE(values.contains("PATH"));
  EXPECT_FALSE(values.contains("_"));
}

TEST(UserEnvironmentFetch, FailsWhereThereIsNoShellAndEndsWithItsTask) {
  const auto missing = [] { return fetchUserEnvironment(FilePath("/none"), {}); };
  EXPECT_THROW(static_cast<void>(run(missing)), SubprocessError);
  const TemporaryFolder folder;
  const FilePath mark = folder.path().appending("mark");
  const FilePath shell =
      folder.write("shell", "#!/bin/sh\n: > '" + mark.string() + "'\nsleep 1000", 0755);
  auto handle = spawn([shell] { return fetchUserEnvironment(shell, {}); });
  runUntil([&] { return std::filesystem::exists(mark.string()); });
  handle.cancel();
  runUntil([&] { return handle.isFinished(); });
  EXPECT_THROW(static_cast<void>(std::move(handle).takeValue()), CancellationError);
  EXPECT_FALSE(testing_support::hasChildren());
}

// One fetch for all

/// Fetches that wait at gates of their own, and then give their number or fail.
struct Fetches {
  std::array<Gate, 3> gates;
  std::atomic<std::size_t> count = 0;
  bool fail = false;

  Task<Values> fetch() { return fetchImpl(this); }

private:
  static Task<Values> fetchImpl(Fetches* self) {
    const std::size_t number = self->count++;
    co_await self->gates.at(number).pass();
    if (self->fail)
      throw Error("No shell.");
    co_return Values{{"N", std::to_string(number)}};
  }
};

class UserEnvStateTest : public testing::Test {
protected:
  TaskHandle<Values> ask() {
    return spawn([state = state] { return state->environment(); });
  }
  static std::string numberIn(TaskHandle<Values> request) {
    runUntil([&] { return request.isFinished(); });
    return std::move(request).takeValue()["N"];
  }

  Fetches fetches;
  std::shared_ptr<UserEnvState> state =
      std::make_shared<UserEnvState>([this] { return fetches.fetch(); });
};

TEST_F(UserEnvStateTest, TwoHundredWaitersShareOneFetchAndItsAnswerIsKept) {
  std::vector<TaskHandle<Values>> requests;
  for (int i = 0; i < 200; ++i)
    requests.push_back(ask());
  runUntil([&] { return fetches.gates[0].waitingCount() == 1; });
  fetches.gates[0].open();
  for (auto& request : requests)
    EXPECT_EQ(numberIn(request), "0");
  EXPECT_EQ(numberIn(ask()), "0");
  EXPECT_EQ(fetches.count, 1U);
}

TEST_F(UserEnvStateTest, AFailureIsKeptUntilItIsInvalidated) {
  fetches.fail = true;
  for (Gate& gate : fetches.gates)
    gate.open();
  for (int i = 0; i < 2; ++i) {
    auto request = ask();
    runUntil([&] { return request.isFinished(); });
    EXPECT_THROW(static_cast<void>(std::move(request).takeValue()), Error);
  }
  EXPECT_EQ(fetches.count, 1U);
  run([&] { return state->invalidate(); });
  fetches.fail = false;
  EXPECT_EQ(numberIn(ask()), "1");
}

TEST_F(UserEnvStateTest, ACancelledRequestEndsAndTheFetchGoesOn) {
  auto first = ask();
  runUntil([&] { return fetches.gates[0].waitingCount() == 1; });
  auto second = ask();
  first.cancel();
  runUntil([&] { return first.isFinished(); });
  EXPECT_THROW(static_cast<void>(std::move(first).takeValue()), CancellationError);
  fetches.gates[0].open();
  EXPECT_EQ(numberIn(second), "0");
}

TEST_F(UserEnvStateTest, OfTwoFetchesTheFirstToEndAnswersAllAndTheLastIsKept) {
  auto early = ask();
  runUntil([&] { return fetches.gates[0].waitingCount() == 1; });
  run([&] { return state->invalidate(); });
  auto late = ask();
  runUntil([&] { return fetches.gates[1].waitingCount() == 1; });
  fetches.gates[1].open();
  EXPECT_EQ(numberIn(early), "1");
  EXPECT_EQ(numberIn(late), "1");
  EXPECT_EQ(numberIn(ask()), "1");
  fetches.gates[0].open();
  runUntil([&] { return numberIn(ask()) == "0"; });
  EXPECT_EQ(fetches.count, 2U);
}

// What it is made of

TEST(ShellEnvironment, TheBaseTakesFourVariablesOfTheProcess) {
  EXPECT_THAT(ShellEnvironment::baseEnvironmentOf({{"HOME", "/home"}, {"PATH", "/x"}, {"A", "b"}}),
              ElementsAre(Pair("HOME", "/home"), Pair("LANG", "en_US.UTF-8"),
                          Pair("LC_CTYPE", "en_US.UTF-8"),
                          Pair("PATH", "/usr/bin:/bin:/usr/sbin:/sbin")));
  EXPECT_THAT(ShellEnvironment::standardPaths(),
              ElementsAre(FilePath("/usr/bin"), FilePath("/bin"), FilePath("/usr/sbin"),
                          FilePath("/sbin")));
}

TEST(ShellEnvironment, TheUsersShellIsAskedOnceForThisProcess) {
  const auto values = run([] { return ShellEnvironment::userEnvironment(); });
  EXPECT_EQ(values.at("LANG").empty(), false);
  EXPECT_EQ(run([] { return ShellEnvironment::userShell(); }).values(), values);
  EXPECT_EQ(run([] { return ShellEnvironment::userPaths(); }), splitSearchPath(values.at("PATH")));
  run([] { return ShellEnvironment::invalidateUserEnvironmentCache(); });
}

TEST(ShellEnvironment, RunsACommandInTheDefaultShell) {
  const auto result = run([] {
    return Subprocess::run({.executable = ShellEnvironment::defaultShell(),
                            .arguments = ShellEnvironment::shellCommand({"echo", {"a  b", "$X"}}),
                            .environment = SubprocessEnvironment{{"X", "y"}}});
  });
  EXPECT_EQ(result.standardOutput, "a  b y\n");
}

TEST(SubprocessEnvironment, PathsAreAddedAtEitherEnd) {
  const std::vector<FilePath> none;
  const std::vector<FilePath> two = {FilePath("/a"), FilePath("/b")};
  const auto pathOf = [](const SubprocessEnvironment& environment) {
    return environment.value("PATH").value_or("(none)");
  };
  const SubprocessEnvironment user{{"PATH", "/u"}};
  const SubprocessEnvironment empty{{"PATH", ""}};
  EXPECT_EQ(pathOf(SubprocessEnvironment().prependingPaths(none)), "/usr/bin:/bin:/usr/sbin:/sbin");
  EXPECT_EQ(pathOf(SubprocessEnvironment().appendingPaths(two)),
            "/usr/bin:/bin:/usr/sbin:/sbin:/a:/b");
  EXPECT_EQ(pathOf(user.prependingPaths(two)), "/a:/b:/u");
  EXPECT_EQ(pathOf(user.appendingPaths(two)), "/u:/a:/b");
  EXPECT_EQ(pathOf(empty.prependingPaths(two)), "/a:/b");
  EXPECT_EQ(pathOf(empty.appendingPaths(none)), "");
  EXPECT_EQ(pathOf(user), "/u");
  EXPECT_THAT(splitSearchPath(":/a::/b:"), ElementsAre(FilePath("/a"), FilePath("/b")));
}

TEST(EnvFile, EntriesAreTakenAsTheyStand) {
  const struct {
    std::string text;
    Values entries;
  } cases[] = {
      {"export A=1 # note\nB: two\nC='x y'\n# comment\n",
       {{"A", "1 "}, {"B", "two"}, {"C", "x y"}}},
      {"D=\nE = e \n", {{"D", ""}, {"E", " e "}}},
      {"A=1\nA=2\r\n", {{"A", "2"}}},
      {"M=\"one\ntwo\"\nN=`b ' \"`", {{"M", "one\ntwo"}, {"N", "b ' \""}}},
      {R"(Q="a\"b" # rest)", {{"Q", R"(a\"b)"}}},
      {"no entry\n=x\n  a.b-c=1\nK:v", {{"a.b-c", "1"}}},
      {"U='open", {{"U", "'open"}}},
      {"", {}},
  };
  for (const auto& row : cases)
    EXPECT_EQ(entriesOfEnvText(row.text), row.entries) << row.text;
}

TEST(EnvFile, IsReadFromADisk) {
  const TemporaryFolder folder;
  EXPECT_THAT(ShellEnvironment::readEnvFile(folder.write("good", "A=1")),
              ElementsAre(Pair("A", "1")));
  EXPECT_THAT(ShellEnvironment::readEnvFile(folder.write("bad", "A=1\nB=\xFF")), ElementsAre());
  EXPECT_THROW(static_cast<void>(ShellEnvironment::readEnvFile(FilePath("/none"))), SystemError);
}

TEST(AppBundle, TellsWhatWasSetAndElseTheProcess) {
  AppBundle::setFacts({.name = "", .resourcesPath = FilePath("relative")});
  EXPECT_EQ(AppBundle::name(), "VelmarCoreTests");
  EXPECT_EQ(AppBundle::versionString(), std::nullopt);
  EXPECT_EQ(AppBundle::resourcesPath(), std::nullopt);
  AppBundle::setFacts(
      {.name = "Editor", .versionString = "1.2", .sharedSupportPath = FilePath("/s")});
  EXPECT_EQ(AppBundle::name(), "Editor");
  EXPECT_EQ(AppBundle::versionString(), "1.2");
  EXPECT_EQ(AppBundle::sharedSupportPath(), FilePath("/s"));
  AppBundle::setFacts({});
}

} // namespace
} // namespace velmar
