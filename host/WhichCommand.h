// `velmar which`: finds a program where the user would find it.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command whichCommand();

} // namespace velmar::host
