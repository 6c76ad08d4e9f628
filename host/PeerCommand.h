// `velmar peer`: a bad peer for sessions to be tried on; `velmar play`: a recorded one.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command peerCommand();
[[nodiscard]] Command playCommand();

} // namespace velmar::host
