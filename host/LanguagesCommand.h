// `velmar languages`: lists the grammars.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command languagesCommand();

} // namespace velmar::host
