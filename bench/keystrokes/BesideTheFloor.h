// The second table of keystrokes: how long single ones take beside the bare runtime.
#pragma once

#include <regex>

namespace velmar::bench {

/// Prints a line for each document with a match in its name and each manner of typing in it: the
/// half of all keystrokes and the slowest hundredth of them, the floor's and ours.
void measureBesideTheFloor(const std::regex& filter);

} // namespace velmar::bench
