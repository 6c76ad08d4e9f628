// The environment of the user, for an application that was started from the desktop and doesn't
// have it: the login shell is asked once, and what it says is kept for the life of the process.
//
//   const auto environment = co_await ShellEnvironment::userShell();
//   auto result = co_await Subprocess::run({.executable = ShellEnvironment::defaultShell(),
//                                           .arguments = ShellEnvironment::shellCommand(command),
//                                           .environment = environment});
#pragma once

#include "VelmarCore/Environment/AppBundle.h"
#include "VelmarCore/Environment/ShellCommand.h"
#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Process/Subprocess.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace velmar::ShellEnvironment {

using Values = SubprocessEnvironment::Values;

/// What every environment holds: `LANG`, `LC_CTYPE`, a plain `PATH`; and `HOME`, `SHELL`, `USER`
/// and `TMPDIR` as this process had them at the first call. Any thread.
[[nodiscard]] const Values& baseEnvironment();
/// The base environment of a process with the variables `own`.
[[nodiscard]] Values baseEnvironmentOf(const SubprocessEnvironment& own);

/// The folders of the plain `PATH`.
[[nodiscard]] const std::vector<FilePath>& standardPaths();
/// `SHELL` of the base environment, or "/bin/sh".
[[nodiscard]] const FilePath& defaultShellPath();

/// The environment that the user's login shell gives, over the base environment. The first call
/// takes as long as the user's start-up files do, which may be seconds; cancelling a task that
/// waits ends the wait. Throws SubprocessError if the shell can't be started, now and until the
/// cache is invalidated.
[[nodiscard]] Task<Values> userEnvironment();
/// The folders of its `PATH`, without empty ones; the standard ones if it can't be had. Throws
/// CancellationError in a cancelled task, and nothing else.
[[nodiscard]] Task<std::vector<FilePath>> userPaths();
/// Has the next request ask the shell again.
[[nodiscard]] Task<void> invalidateUserEnvironmentCache();

/// The variables in a file of the kind of ".env" (see EnvFile.h); none if it isn't valid UTF-8.
/// Throws SystemError if it can't be read. Blocks.
[[nodiscard]] Values readEnvFile(const FilePath& path);

// For child processes

[[nodiscard]] SubprocessEnvironment baseShell();
/// The user's environment, or the base environment if it can't be had. Throws CancellationError in
/// a cancelled task, and nothing else.
[[nodiscard]] Task<SubprocessEnvironment> userShell();
/// The program at `defaultShellPath()`…
[[nodiscard]] Subprocess::Executable defaultShell();
/// …and the arguments that make it run `command`.
[[nodiscard]] Subprocess::Arguments shellCommand(const ShellCommand& command);

} // namespace velmar::ShellEnvironment
