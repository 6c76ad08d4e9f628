// `velmar show`: paints a file.
#pragma once

#include "host/Command.h"

namespace velmar::host {

[[nodiscard]] Command showCommand();

/// Paints a small page with languages nested in it that the program brings with it.
void showSamplePage(Streams& streams);

} // namespace velmar::host
