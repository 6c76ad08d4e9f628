// Where the program is that a child is to run, and why it can't be run. For ChildProcess.
#pragma once

#include "VelmarPlatform/Process/Subprocess.h"

#include <string>

namespace velmar::detail {

/// The path to execute, to be taken from the child's working directory. Throws SubprocessError if
/// none is found.
[[nodiscard]] std::string pathOfProgram(const Subprocess::Configuration& configuration);

/// Throws the SubprocessError that tells why the system gave `code` when it was to execute `path`:
/// it doesn't say itself which of the things that it needed was missing.
[[noreturn]] void failToStart(const Subprocess::Configuration& configuration,
                              const std::string& path, int code);

} // namespace velmar::detail
