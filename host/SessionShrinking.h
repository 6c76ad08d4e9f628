// Makes a session that shows a fault small enough for people.
#pragma once

#include "host/Session.h"

#include <cstdint>
#include <functional>

namespace velmar::host {

/// Whether a session still shows the fault. The answer for one session is always the same.
using SessionCheck = std::function<bool(const Session&)>;

/// A session of which nothing can be left out without losing the fault: no edit, no piece of the
/// text at the start, no piece of what an edit brings or takes; or the smallest one that was found
/// within `mostChecks` questions, at least 1. Where an edit goes, those behind it keep their places
/// in what is left of the text.
///
/// `session` shows the fault and names no other file; what it expects is dropped. Asks some
/// log(size) times the number of parts that stay, and more while there is a lot to leave out.
[[nodiscard]] Session shrunkSession(Session session, std::int64_t mostChecks,
                                    const SessionCheck& showsFault);

} // namespace velmar::host
