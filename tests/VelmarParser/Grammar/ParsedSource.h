// A text with its tree, made the way that documents are parsed.
#pragma once

#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/Parser.h"

#include <memory>
#include <optional>
#include <string_view>

namespace velmar::testing {

struct ParsedSource {
  ParsedSource(Grammar::BuiltIn builtIn, std::u16string_view units) {
    text.replaceSubrange({0, 0}, units);
    Parser parser("test", Grammar::fromBuiltIn(builtIn), std::make_shared<const AtomicFlag>());
    ParseInput input(text);
    tree = parser.parse(nullptr, input.input());
  }

  [[nodiscard]] ParseNode root() const { return tree->rootNode(); }

  DocumentText text;
  std::optional<ParseTree> tree;
};

/// The runtime's own tree of the same text, read from one buffer.
inline ParseTree parseInOnePiece(Grammar::BuiltIn builtIn, std::u16string_view units) {
  const auto grammar = Grammar::fromBuiltIn(builtIn);
  const std::unique_ptr<TSParser, decltype(&ts_parser_delete)> parser(ts_parser_new(),
                                                                      &ts_parser_delete);
  ts_parser_set_language(parser.get(), grammar->base());
  return ParseTree(ts_parser_parse_string_encoding(
      parser.get(), nullptr, reinterpret_cast<const char*>(units.data()),
      static_cast<std::uint32_t>(units.size() * sizeof(char16_t)), TSInputEncodingUTF16LE));
}

} // namespace velmar::testing
