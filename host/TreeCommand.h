// `velmar tree`: parses a file and prints its syntax tree.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command treeCommand();

} // namespace velmar::host
