// Query texts: any bytes compile or are refused with a sentence, and what compiles runs calmly over
// a small tree.

#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/Parser.h"
#include "VelmarParser/Query/CaptureValues.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace velmar;

struct Language {
  explicit Language(Grammar::BuiltIn builtIn, std::u16string_view source)
      : grammar(Grammar::fromBuiltIn(builtIn)),
        parser("fuzz", grammar, std::make_shared<AtomicFlag>()) {
    text.replaceSubrange({0, 0}, source);
    ParseInput input(text);
    tree = parser.parse(nullptr, input.input());
  }
  std::shared_ptr<const Grammar> grammar;
  Parser parser;
  DocumentText text;
  std::optional<ParseTree> tree;
};

const Language& language(std::uint8_t choice) {
  static const Language json(Grammar::BuiltIn::json, u"[1, 2, {\"a\": [null, 3]}, \"b\", \"\"]\n");
  static const Language javascript(Grammar::BuiltIn::javascript,
                                   u"f(a, `x\n${b}`); // c\nclass A { m() { = } }\n");
  return choice % 2 == 0 ? json : javascript;
}

/// A text of words that mean something in queries, chosen by the bytes: far more of these compile
/// than of plain bytes.
std::string textOfWords(const std::uint8_t* data, std::size_t size) {
  static constexpr std::array<std::string_view, 64> words{"(",
                                                          ")",
                                                          "[",
                                                          "]",
                                                          "(",
                                                          ")",
                                                          "[",
                                                          "]",
                                                          "+",
                                                          "*",
                                                          "?",
                                                          ".",
                                                          "!",
                                                          ":",
                                                          "_",
                                                          "/",
                                                          "@x",
                                                          "@y",
                                                          "@name",
                                                          "@_z",
                                                          "@x",
                                                          "\"1\"",
                                                          "\"a\"",
                                                          "\"^(a|1)\"",
                                                          "\"(a+)+$\"",
                                                          "key",
                                                          "key:",
                                                          "value:",
                                                          "name:",
                                                          "number",
                                                          "array",
                                                          "pair",
                                                          "string",
                                                          "null",
                                                          "_value",
                                                          "object",
                                                          "identifier",
                                                          "expression",
                                                          "call_expression",
                                                          "arguments",
                                                          "(number)",
                                                          "(array",
                                                          "(_)",
                                                          "\"[\"",
                                                          "MISSING",
                                                          "ERROR",
                                                          "(#eq?",
                                                          "(#any-not-eq?",
                                                          "(#match?",
                                                          "(#has-ancestor?",
                                                          "(#has-parent-field?",
                                                          "(#nth?",
                                                          "-1",
                                                          "(#set!",
                                                          "(#set-if-eq!",
                                                          "(#set-by-case-match!",
                                                          "(#is-not?",
                                                          "(#strip!",
                                                          "(#replace!",
                                                          "(#prefix!",
                                                          "(#my-thing!",
                                                          ";",
                                                          "\n",
                                                          "(_ (number)"};
  std::string text;
  for (std::size_t index = 0; index < size; ++index) {
    text += words[data[index] % words.size()];
    text += ' ';
  }
  return text;
}

enum class Captured { x, y, name, z };
std::span<const std::string_view> rawValuesOf(Captured) {
  static constexpr std::array<std::string_view, 4> texts{"x", "y", "name", "_z"};
  return texts;
}

void evaluate(const std::shared_ptr<const Query>& query, const Language& over) {
  constexpr int enough = 2'000; // a query may match each of some hundred sequences of nodes
  RegularExpressionPass pass(
      {.perSearch = std::chrono::milliseconds(20), .perPattern = std::chrono::milliseconds(20)});
  int count = 0;
  const TextRange range{0, over.text.count()};
  for (const QueryMatches::Element& match :
       QueryMatches(query, over.tree->rootNode(), range, over.text, {}, &pass)) {
    precondition(match.patternIndex() < query->patternCount(),
                 "A match names a pattern that isn't there.");
    for (const Query::Match::Capture capture : match.captures())
      precondition(range.containsRange(capture.node().utf16Range()),
                   "A capture lies outside the text.");
    for (const auto& [key, value] :
         captureValues<Captured>(match.base, {.text = over.text, .pass = &pass}))
      precondition(range.containsRange(value.range), "A value's range lies outside the text.");
    if (++count == enough)
      return;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0)
    return 0;
  const Language& over = language(data[0]);
  const std::string text = (data[0] & 2) != 0
                               ? textOfWords(data + 1, size - 1)
                               : std::string(reinterpret_cast<const char*>(data + 1), size - 1);
  try {
    evaluate(std::make_shared<const Query>(text, over.grammar), over);
  } catch (const Error& error) {
    precondition(!error.message().empty() && isValidUTF8(error.message()),
                 "An error has no proper sentence.");
  }
  return 0;
}
