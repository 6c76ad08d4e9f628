// C and C++ share ".h": only the text tells which of them a header is in.
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"

namespace velmar::host {

/// Whether `text`, a header of one of the two, has at its start what only C++ has: classes,
/// namespaces, templates, references, its standard headers and the like. What stands under
/// "#ifdef __cplusplus" doesn't count, for headers of C keep there what they offer to C++.
[[nodiscard]] bool isCPlusPlusHeader(const DocumentText& text);

} // namespace velmar::host
