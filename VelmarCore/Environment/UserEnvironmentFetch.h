// Asks a login shell for the environment that its user has in a terminal.
#pragma once

#include "VelmarPlatform/Concurrency/Task.h"
#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Process/Subprocess.h"

#include <string_view>

namespace velmar {

/// How `shell` is asked: as an interactive login shell, but for those of the C shell family, which
/// take no other flag along with `-l`.
[[nodiscard]] Subprocess::Arguments environmentArgumentsFor(const FilePath& shell);

/// The variables in what `env` printed. A value that spans lines breaks at its line feeds; each
/// further line that holds a "=" is an entry of its own. Of those with one name the last counts.
[[nodiscard]] SubprocessEnvironment::Values variablesInOutput(std::string_view output);

/// Runs `shell` and gives its variables over those of `base`. A start-up file may take its time:
/// there is no limit; cancelling the task ends the shell. How it ended doesn't matter, nor what
/// else it printed. Throws SubprocessError if it can't be started.
[[nodiscard]] Task<SubprocessEnvironment::Values>
fetchUserEnvironment(FilePath shell, SubprocessEnvironment::Values base);

} // namespace velmar
