// From one form to another without a record in between: JSON laid out anew, TOML as JSON.
#pragma once

#include "VelmarPlatform/Coding/DecodingSource.h"
#include "VelmarPlatform/Coding/EncodingSink.h"

namespace velmar {

/// Tells `sink` the value at `value` with all that is in it, in the source's order and with
/// repeated keys. O(size); takes no stack for depth. Throws EncodingFailure where the sink's form
/// can't hold something.
void transcode(const DecodingSource& source, CodedValue value, EncodingSink& sink);

} // namespace velmar
