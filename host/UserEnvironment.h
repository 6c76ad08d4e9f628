// The environment that the user's login shell gives, as commands ask for it: with a deadline, since
// a start-up file may wait for somebody who isn't there.
#pragma once

#include "VelmarPlatform/Files/FilePath.h"
#include "VelmarPlatform/Process/SubprocessEnvironment.h"
#include "host/Command.h"

#include <chrono>

namespace velmar::host {

struct UserEnvironment {
  FilePath shell;
  SubprocessEnvironment::Values values;
  std::chrono::nanoseconds duration; ///< How long the shell took.
};

/// The options --shell and --timeout, for the commands that take them.
[[nodiscard]] std::vector<Option> userEnvironmentOptions();

/// Asks the shell that these options name, or the user's own. Throws UsageError for options that
/// make no sense, and another Error if the shell can't be started or the deadline passes.
[[nodiscard]] UserEnvironment askForUserEnvironment(const Arguments& arguments,
                                                    const Streams& streams);

} // namespace velmar::host
