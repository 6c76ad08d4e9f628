// Splitting text where a regular expression matches: the third of the splits in TextTrimming.h,
// apart from them so that those who only trim needn't know of expressions.
#pragma once

#include "VelmarCore/Text/RegularExpression.h"
#include "VelmarCore/Text/TextTrimming.h"

#include <string_view>
#include <vector>

namespace velmar {

/// `text` split at the matches of `separator`, each part trimmed of white space, and those dropped
/// of which nothing is left. An empty match splits too, but takes nothing away. The parts are views
/// into `text`.
[[nodiscard]] std::vector<std::string_view>
splitTrimmed(std::string_view text, const RegularExpression& separator, SplitOptions options = {});

} // namespace velmar
