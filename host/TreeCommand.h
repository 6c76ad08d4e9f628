// `velmar tree`: parses a file and prints its syntax tree.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command treeCommand();

/// Prints the tree of a few lines that the program brings with it.
void showSampleTree(Streams& streams);

} // namespace velmar::host
