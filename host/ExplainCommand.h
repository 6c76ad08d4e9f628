// `velmar explain`: says why a place of a file looks as it does.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command explainCommand();

} // namespace velmar::host
