#include "tests/VelmarPlatform/Process/Support.h"
#include "tests/host/RunHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmar::testing {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing_support::TemporaryFolder;

class EnvCommand : public ::testing::Test {
protected:
  std::string shell(std::string_view script) const {
    return folder.write("shell", "#!/bin/sh\n" + std::string(script), 0755).string();
  }
  TemporaryFolder folder;
};

TEST_F(EnvCommand, TellsWhatIsTheSameAndWhatDiffers) {
  const std::string path = shell("printf 'SAME=1\\nADDED=2\\nOTHER=3\\033[31m\\nLANG=C\\n'");
  const HostInput input{
      .environment = {{"SHELL", path}, {"SAME", "1"}, {"OTHER", "a\nb"}, {"OWN", ""}}};
  EXPECT_EQ(runHost({"env"}, input).output,
            "+ ADDED=2\n+ LANG=C\n+ LC_CTYPE=en_US.UTF-8\n~ OTHER=3␛[31m\n    here: a␊b\n"
            "+ PATH=/usr/bin:/bin:/usr/sbin:/sbin\n  SAME=1\n  SHELL=" +
                path + "\n- OWN=\n" + path +
                ": 2 variables as here, 4 of the user’s alone, 1 with another value, 1 only here, "
                "1.5 ms\n");
  EXPECT_THAT(runHost({"env", "--differences"}, input).output, ::testing::Not(HasSubstr("SAME")));
}

TEST_F(EnvCommand, ADeadlineThatPassesIsTold) {
  const auto result =
      runHost({"env", "--shell", shell("trap '' HUP; sleep 1000"), "--timeout", "0.1"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, StartsWith("velmar: The shell “" + folder.path().string() +
                                        "/shell” hasn’t told its environment within 0.1 seconds"));
  EXPECT_FALSE(testing_support::hasChildren());
}

TEST_F(EnvCommand, WhatMakesNoSenseIsRefused) {
  EXPECT_EQ(runHost({"env", "--shell", "/none"}).errors,
            "velmar: The program “/none” doesn't exist.\n");
  for (const char* timeout : {"0", "-1", "x", "1x", "nan", "1e9"})
    EXPECT_EQ(runHost({"env", "--timeout", timeout}).exitCode, 2) << timeout;
  EXPECT_EQ(runHost({"env", "HOME"}).exitCode, 2);
  EXPECT_EQ(runHost({"which"}).exitCode, 2);
}

TEST_F(EnvCommand, WhichLooksWhereTheUsersShellDoes) {
  const std::string path = shell("echo PATH=/none:" + folder.path().string());
  EXPECT_EQ(runHost({"which", "shell", "--shell", path}).output, path + "\n");
  const auto partly = runHost({"which", "a", "shell", "b", "--shell", path});
  EXPECT_EQ(partly.output, path + "\n");
  EXPECT_EQ(partly.exitCode, 1);
  EXPECT_THAT(partly.errors,
              EndsWith("There is no “a”, “b” in /none, " + folder.path().string() + ".\n"));
}

TEST_F(EnvCommand, WhichFallsBackOnTheStandardFolders) {
  const auto result = runHost({"which", "env", "--shell", "/none"});
  EXPECT_EQ(result.output, "/usr/bin/env\n");
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.errors, HasSubstr("“/none” doesn't exist. Looking in the standard folders."));
}

} // namespace
} // namespace velmar::testing
