// What language servers send at their largest, made up.
#pragma once

#include "bench/rivals/Records.h"

namespace velmar::bench {

/// 5,000 items as a server for C++ has them; about 2 MB of text.
[[nodiscard]] CompletionList completionList();
/// 100,000 integers, most of one or two digits.
[[nodiscard]] SemanticTokens semanticTokens();
/// A name changed 5,000 times in 200 files.
[[nodiscard]] WorkspaceEdit workspaceEdit();

} // namespace velmar::bench
