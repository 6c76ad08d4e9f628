// `velmar tags`, `brackets`, `words`, `colors`, `prose`, `complete` and `indent`: what an editor
// asks while one types.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command tagsCommand();
[[nodiscard]] Command bracketsCommand();
[[nodiscard]] Command wordsCommand();
[[nodiscard]] Command colorsCommand();
[[nodiscard]] Command proseCommand();
[[nodiscard]] Command completeCommand();
[[nodiscard]] Command indentCommand();

} // namespace velmar::host
