// Files of variables, as ".env" files are: `NAME=value` or `NAME: value` on a line, with `export`
// in front if you like, quotes and comments.
#pragma once

#include "VelmarPlatform/Process/SubprocessEnvironment.h"

#include <string_view>

namespace velmar {

/// The entries of such a text; of those with one key the last. What is no entry is passed over.
/// Values are taken as they stand: nothing is expanded, an escaped quote keeps its backslash, a
/// value without quotes the blanks at its ends. One in quotes may span lines.
[[nodiscard]] SubprocessEnvironment::Values entriesOfEnvText(std::string_view text);

} // namespace velmar
