// `velmar mem`: what an open document takes.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command memoryCommand();

} // namespace velmar::host
