// The table of grammars that are compiled in.
#pragma once

#include "VelmarParser/Grammar/Grammar.h"

#include <span>

namespace velmar::detail {

struct BuiltInGrammar {
  Grammar::BuiltIn builtIn;
  std::string_view rawValue;
  /// Null where this build lacks the tables.
  const TSLanguage* (*entry)();
};

/// One row for each built-in grammar, indexed by its value.
[[nodiscard]] std::span<const BuiltInGrammar> builtInGrammars();

} // namespace velmar::detail
