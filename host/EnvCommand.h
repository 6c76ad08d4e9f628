// `velmar env`: shows the environment that the user has in a terminal.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command envCommand();

} // namespace velmar::host
