// `velmar replay`: plays recorded edits on a document.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command replayCommand();

} // namespace velmar::host
