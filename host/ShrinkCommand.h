// `velmar shrink`: makes a session that shows a fault small.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command shrinkCommand();

} // namespace velmar::host
