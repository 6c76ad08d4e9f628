// Matches with their predicates evaluated, beside the runtime's bare cursor walking the same query
// without predicates over the same tree and range.

#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/Parser.h"
#include "VelmarParser/Query/QueryMatches.h"
#include "bench/Pair.h"
#include "cmake/SourceTree.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

namespace velmar {

namespace {

constexpr int lineCount = 10'000;

/// JavaScript as people write it: comments, classes, calls, template strings over two lines.
std::string generatedJavaScript() {
  std::mt19937 random(7);
  std::string text;
  for (int line = 0; line < lineCount; line += 12) {
    const std::string id = std::to_string(random() % 1000);
    text += "// Adds up item " + id + ".\nclass Item" + id +
            " extends Base {\n  static LIMIT = " + id + ";\n  constructor(name, value = " + id +
            ") {\n    super(name);\n    this.value" + id +
            " = value;\n    console.log(`made ${name}\n      and " + id +
            "`);\n  }\n  get total() { return require('./sum').sum(this.items.map(x => x * " + id +
            "), MAX_COUNT); }\n}\n\n";
  }
  return text;
}

/// Where the string ends that begins at `start`.
std::size_t endOfString(std::string_view text, std::size_t start) {
  std::size_t index = start + 1;
  while (text[index] != '"')
    index += text[index] == '\\' ? 2 : 1;
  return index + 1;
}

/// Where the predicate ends that begins at `start`.
std::size_t endOfPredicate(std::string_view text, std::size_t start) {
  std::size_t index = start + 1;
  while (text[index] != ')')
    index = text[index] == '"' ? endOfString(text, index) : index + 1;
  return index + 1;
}

/// `text`, a query that compiles, without its predicates and comments.
std::string withoutPredicates(std::string_view text) {
  std::string result;
  for (std::size_t index = 0; index < text.size();) {
    std::size_t end = index + 1;
    if (text.substr(index).starts_with("(#")) {
      index = endOfPredicate(text, index);
      continue;
    }
    if (text[index] == ';') {
      index = std::min(text.find('\n', index), text.size());
      continue;
    }
    if (text[index] == '"')
      end = endOfString(text, index);
    result += text.substr(index, end - index);
    index = end;
  }
  return result;
}

std::string contentsOf(const std::string& path) {
  std::stringstream content;
  content << std::ifstream(sourcePath(path), std::ios::binary).rdbuf();
  return content.str();
}

/// Text, tree and two queries, made when they are first asked for.
struct Subject {
  explicit Subject(const std::string& queryText)
      : grammar(Grammar::fromBuiltIn(Grammar::BuiltIn::javascript)),
        parser("javascript", grammar, std::make_shared<AtomicFlag>()),
        query(std::make_shared<const Query>(queryText, grammar)),
        bare(withoutPredicates(queryText), grammar) {
    const std::string source = generatedJavaScript();
    precondition(bare.patternCount() == query->patternCount(), "The floor walks another query.");
    text.replaceSubrange({0, 0}, std::string_view(source));
    ParseInput input(text);
    tree = parser.parse(nullptr, input.input());
  }

  /// All of the text, or 60 lines in its middle.
  [[nodiscard]] TextRange range(bool isViewport) const {
    return isViewport ? TextRange(text.rangeOfLine(lineCount / 2).lowerBound,
                                  text.rangeOfLine(lineCount / 2 + 60).lowerBound)
                      : TextRange(0, text.count());
  }

  std::shared_ptr<const Grammar> grammar;
  Parser parser;
  DocumentText text;
  std::optional<ParseTree> tree;
  std::shared_ptr<const Query> query;
  Query bare;
};

void walkBare(bench::State& state, const Subject& subject, bool isViewport) {
  const TextRange range = subject.range(isViewport);
  for (auto _ : state) {
    TSQueryCursor* const cursor = ts_query_cursor_new();
    ts_query_cursor_set_byte_range(cursor, treeByte(range.lowerBound).value,
                                   treeByte(range.upperBound).value);
    ts_query_cursor_exec(cursor, subject.bare.base(), subject.tree->rootNode().base());
    TSQueryMatch match;
    while (ts_query_cursor_next_match(cursor, &match))
      benchmark::DoNotOptimize(match.captures);
    ts_query_cursor_delete(cursor);
  }
}

void walkOurs(bench::State& state, const Subject& subject, bool isViewport) {
  for (auto _ : state) {
    for (const QueryMatches::Element& match : QueryMatches(subject.query, subject.tree->rootNode(),
                                                           subject.range(isViewport), subject.text))
      benchmark::DoNotOptimize(match.patternIndex());
  }
}

bool registerQuery(const std::string& name, double bound, const std::string& queryText) {
  const auto subject = std::make_shared<std::shared_ptr<const Subject>>();
  const auto made = [subject, queryText]() -> const Subject& {
    if (!*subject)
      *subject = std::make_shared<const Subject>(queryText);
    return **subject;
  };
  for (const bool isViewport : {false, true}) {
    bench::registerPair(
        {.name = "query/" + name + (isViewport ? "/60of10000Lines" : "/10000Lines"),
         .bound = bound,
         .floor = [made, isViewport](bench::State& state) { walkBare(state, made(), isViewport); },
         .ours = [made, isViewport](bench::State& state) { walkOurs(state, made(), isViewport); }});
  }
  return true;
}

// The pack that colours JavaScript, as far as it stands in one piece.
const std::string pack =
    contentsOf("packs/_ecmascript/highlights.scm") + contentsOf("packs/javascript/highlights.scm");
[[maybe_unused]] const bool highlights =
    pack.empty() ? bench::leaveOut("query/highlights", "the pack isn't there")
                 : registerQuery("highlights", 1.25, pack);

// A predicate at nearly each match.
[[maybe_unused]] const bool text = registerQuery("textPredicates", 1.5, R"(
  ((identifier) @type (#match? @type "^[A-Z]"))
  ((identifier) @constant (#match? @constant "^[A-Z][A-Z_]+$") (#set! "priority" "10"))
  ((identifier) @builtin (#eq? @builtin "console" "require" "module" "exports" "super" "arguments"))
  ((property_identifier) @property (#not-eq? @property "constructor") (#set! @property "kind" "member"))
  ((call_expression function: (identifier) @function) (#not-match? @function "^(require|super)$"))
  ((template_string) @string (#contains? @string "${"))
  ((number) @number (#set-by-case-match! @number "radix" "^0x" "16" "^0b" "2" "10") (#is? "radix"))
)");

// Predicates that look for a node's ancestors.
[[maybe_unused]] const bool structure = registerQuery("structurePredicates", 2, R"(
  ((identifier) @parameter (#has-ancestor? @parameter "formal_parameters"))
  ((identifier) @callee (#has-parent-field? @callee "function"))
  ((property_identifier) @member (#not-has-parent? @member "member_expression"))
  ((number) @default (#has-ancestor-field? @default "parameters"))
  ((string) @first (#nth? @first "0"))
)");

} // namespace

} // namespace velmar
