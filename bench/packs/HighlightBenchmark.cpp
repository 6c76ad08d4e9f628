// Colours beside the runtime's bare cursor, which finds the same matches, asks no predicate and
// sorts nothing; and the way from a text to all of its colours beside bare parses and cursors.

#include "VelmarParser/Highlight/Highlight.h"

#include "VelmarParser/Grammar/Parser.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "bench/Pair.h"
#include "bench/packs/Documents.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace velmar::bench {

namespace {

struct CursorDeleter {
  void operator()(TSQueryCursor* cursor) const noexcept { ts_query_cursor_delete(cursor); }
};
struct ParserDeleter {
  void operator()(TSParser* parser) const noexcept { ts_parser_delete(parser); }
};
struct TreeDeleter {
  void operator()(TSTree* tree) const noexcept { ts_tree_delete(tree); }
};
using Tree = std::unique_ptr<TSTree, TreeDeleter>;

void walkBare(const Query& query, TSNode node, TextRange range) {
  const std::unique_ptr<TSQueryCursor, CursorDeleter> cursor(ts_query_cursor_new());
  ts_query_cursor_set_byte_range(cursor.get(), treeByte(range.lowerBound).value,
                                 treeByte(range.upperBound).value);
  ts_query_cursor_exec(cursor.get(), query.base(), node);
  TSQueryMatch match;
  while (ts_query_cursor_next_match(cursor.get(), &match))
    benchmark::DoNotOptimize(match.captures);
}

/// A document at rest, made when it is first asked for.
class Subject {
public:
  Subject(std::string_view language, std::function<std::u16string()> text)
      : document_(packedLanguage(language)) {
    document_.replaceSubrange({0, 0}, text());
  }

  const Parse& document() const { return document_; }

  /// All of the text, or 60 lines in its middle.
  TextRange range(bool isViewport) const {
    const DocumentText& lines = document_.text();
    const std::int64_t middle = lines.lineCount() / 2;
    return isViewport ? TextRange(lines.rangeOfLine(middle).lowerBound,
                                  lines.rangeOfLine(middle + 60).lowerBound)
                      : TextRange(0, document_.count());
  }

private:
  Parse document_;
};

void registerHighlight(const std::string& name, std::string_view language, bool isViewport,
                       std::function<std::u16string()> text) {
  const auto subject = std::make_shared<std::unique_ptr<const Subject>>();
  const auto made = [subject, language, text]() -> const Subject& {
    if (!*subject)
      *subject = std::make_unique<const Subject>(language, text);
    return **subject;
  };
  registerPair({.name = "highlight/" + name,
                .bound = 1.5,
                .floor =
                    [=](State& state) {
                      const Parse::Layer layer = made().document().rootLayer();
                      const auto query = layer.queryFor(ParseQueryCategory::highlights);
                      for (auto _ : state)
                        walkBare(*query, layer.root()->base(), made().range(isViewport));
                    },
                .ours =
                    [=](State& state) {
                      const Parse::Layer layer = made().document().rootLayer();
                      for (auto _ : state)
                        benchmark::DoNotOptimize(highlight(layer, made().range(isViewport)));
                    }});
}

/// What there is to do at least for one layer: its text parsed once and walked three times.
struct BareLayer {
  std::shared_ptr<const Grammar> grammar;
  std::vector<TSRange> ranges;
  std::vector<std::shared_ptr<const Query>> queries;
};

std::vector<BareLayer> bareLayersOf(const Parse& document) {
  std::vector<BareLayer> bare;
  for (const Parse::Layer& layer : document.layers()) {
    const auto ranges = layer.includedRanges();
    bare.push_back({layer.configuration().grammar(), {ranges.begin(), ranges.end()}, {}});
    for (const auto& query : {layer.configuration().lexicalClassesQuery(),
                              layer.queryFor(ParseQueryCategory::injections),
                              layer.queryFor(ParseQueryCategory::highlights)}) {
      if (query)
        bare.back().queries.push_back(query);
    }
  }
  return bare;
}

void loadBare(const std::u16string& text, const std::vector<BareLayer>& layers) {
  const std::unique_ptr<TSParser, ParserDeleter> parser(ts_parser_new());
  for (const BareLayer& layer : layers) {
    ts_parser_set_language(parser.get(), layer.grammar->base());
    const bool accepted = ts_parser_set_included_ranges(
        parser.get(), layer.ranges.data(), static_cast<std::uint32_t>(layer.ranges.size()));
    precondition(accepted, "The ranges of a layer are in order.");
    const Tree tree(ts_parser_parse_string_encoding(
        parser.get(), nullptr, reinterpret_cast<const char*>(text.data()),
        static_cast<std::uint32_t>(text.size() * sizeof(char16_t)), TSInputEncodingUTF16LE));
    for (const auto& query : layer.queries)
      walkBare(*query, ts_tree_root_node(tree.get()), {0, static_cast<std::int64_t>(text.size())});
  }
}

void registerLoad(const std::string& name, std::string_view language,
                  std::function<std::u16string()> text) {
  registerPair({.name = "load-and-highlight/" + name,
                .bound = 1.3,
                .floor =
                    [=](State& state) {
                      const Subject subject(language, text);
                      const std::u16string source = text();
                      const auto layers = bareLayersOf(subject.document());
                      for (auto _ : state)
                        loadBare(source, layers);
                    },
                .ours =
                    [=](State& state) {
                      const std::u16string source = text();
                      for (auto _ : state) {
                        Parse document(packedLanguage(language));
                        document.replaceSubrange({0, 0}, source);
                        for (const Parse::Layer& layer : document.layers())
                          benchmark::DoNotOptimize(highlight(layer, {0, document.count()}));
                      }
                    }});
}

[[maybe_unused]] const bool registered = [] {
  registerHighlight("60of10000Lines", "typescript", true, [] { return typeScript(10'000); });
  registerHighlight("1MB", "typescript", false, [] { return typeScript(23'000); });
  registerLoad("typescript", "typescript", [] { return typeScript(2'000); });
  registerLoad("markdown", "markdown", [] { return markdown(100); });
  registerLoad("html", "html", [] { return html(50); });
  return true;
}();

} // namespace

} // namespace velmar::bench
