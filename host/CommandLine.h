// The program `velmar` but for its main function: finds the command, runs it, and turns whatever
// goes wrong into a sentence and an exit code.
#pragma once

#include "VelmarCore/Environment/AppBundle.h"
#include "host/Command.h"

namespace velmar::host {

/// All commands, in the order in which the overview lists them.
[[nodiscard]] std::span<const Command> commands();

/// What the program tells the engine of itself when it starts.
[[nodiscard]] AppBundleFacts applicationFacts();

/// Runs the program with `words`, the command line without the program's name. Throws nothing.
[[nodiscard]] ExitCode runCommandLine(std::span<const std::string> words, Streams& streams);

} // namespace velmar::host
