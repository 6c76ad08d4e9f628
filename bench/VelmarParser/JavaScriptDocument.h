// A document of any length, in a language with the packs of the house.
#pragma once

#include "VelmarParser/Document/Parse.h"

#include <cstdint>

namespace velmar {

[[nodiscard]] ParseConfiguration javaScript();

/// Classes, functions and calls as people write them. Made once for each length, and then there for
/// good; one thread.
[[nodiscard]] const Parse& javaScriptDocument(std::int64_t lineCount);

} // namespace velmar
