// `velmar outline` and `velmar folds`: the structure of a file.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command outlineCommand();
[[nodiscard]] Command foldsCommand();

} // namespace velmar::host
