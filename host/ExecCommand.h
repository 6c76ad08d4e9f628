// `velmar exec`: runs a program as an operation, with its steps, its live output and a final word.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command execCommand();

} // namespace velmar::host
