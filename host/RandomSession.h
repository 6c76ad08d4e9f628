// Makes sessions that look like somebody at work on a text.
#pragma once

#include "host/Session.h"

#include <cstdint>

namespace velmar::host {

/// `count` edits of `initial`: mostly typing and rubbing out at one place that moves now and then,
/// with lines pasted and cut, and with the openings of strings, comments and tags. Most of it is
/// taken back again, edit by edit, so that the text keeps its shape. The same for the same
/// arguments everywhere.
[[nodiscard]] std::vector<SessionEdit> randomEdits(const std::u16string& initial,
                                                   std::int64_t count, std::uint64_t seed);

} // namespace velmar::host
