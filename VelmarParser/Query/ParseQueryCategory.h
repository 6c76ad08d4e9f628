// What a language's queries are for. Each category is one text, which the application supplies.
#pragma once

#include "VelmarParser/Query/TextEnumeration.h"

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace velmar {

enum class ParseQueryCategory : std::uint8_t {
  highlights,
  folds,
  symbols,
  locals,
  indents,
  injections,
  textChecking,
  colors,
  tagMatching,
};

inline std::span<const std::string_view> rawValuesOf(ParseQueryCategory) {
  static constexpr std::array<std::string_view, 9> texts{"highlights",   "folds",   "symbols",
                                                         "locals",       "indents", "injections",
                                                         "textChecking", "colors",  "tagMatching"};
  return texts;
}

/// The categories from which a document's structure is read, all in one query.
enum class ParseStructureKey : std::uint8_t { folds, symbols, locals };

} // namespace velmar
