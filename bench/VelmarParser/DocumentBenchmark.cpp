// A keystroke in a document without queries, beside what the runtime alone makes of it.

#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarParser/Grammar/TreeUnits.h"
#include "bench/Pair.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <thread>

namespace velmar {

namespace {

/// Knows nothing but the one language.
class NoQueries : public ParseConfigurationResolving {
public:
  std::optional<ParseConfiguration> configurationMatching(std::string_view,
                                                          const ParseConfiguration&) override {
    return std::nullopt;
  }
  std::optional<std::string> queryTextFor(ParseQueryCategory, const ParseConfiguration&) override {
    return std::nullopt;
  }
  std::optional<std::string> queryTextNamed(std::string_view, const ParseConfiguration&) override {
    return std::nullopt;
  }
};

std::u16string source(std::int64_t lines) {
  std::u16string text;
  for (std::int64_t line = 0; line < lines; line += 4)
    text += u"export function sum(items: number[], limit = 10): number {\n"
            u"  const total = items.filter((item) => item < limit).length;\n"
            u"  return total > 0 ? total * limit : -1;\n"
            u"}\n";
  return text;
}

/// In the middle of a name in the middle of the text, where a letter is typed and taken away again.
std::int64_t placeToType(const std::u16string& text) {
  return static_cast<std::int64_t>(text.find(u"total =", text.size() / 2)) + 3;
}

struct ParserDeleter {
  void operator()(TSParser* parser) const noexcept { ts_parser_delete(parser); }
};

void typeIntoBareRuntime(bench::State& state) {
  const std::u16string typed = [&] {
    std::u16string text = source(state.size());
    text.insert(static_cast<std::size_t>(placeToType(text)), u"x");
    return text;
  }();
  const std::u16string untyped = source(state.size());
  const auto place = static_cast<std::uint32_t>(placeToType(untyped));
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::typescript);
  const std::unique_ptr<TSParser, ParserDeleter> parser(ts_parser_new());
  ts_parser_set_language(parser.get(), grammar->base());
  const auto parsed = [&](const TSTree* old, const std::u16string& text) {
    return ts_parser_parse_string_encoding(
        parser.get(), old, reinterpret_cast<const char*>(text.data()),
        static_cast<std::uint32_t>(text.size() * sizeof(char16_t)), TSInputEncodingUTF16LE);
  };
  const std::uint32_t row = static_cast<std::uint32_t>(
      std::count(untyped.begin(), untyped.begin() + static_cast<std::ptrdiff_t>(place), u'\n'));
  const std::uint32_t column =
      2 * (place - 1 - static_cast<std::uint32_t>(untyped.rfind(u'\n', place)));
  TSTree* tree = parsed(nullptr, untyped);
  bool inserting = true;
  for (auto _ : state) {
    TSInputEdit edit{};
    edit.start_byte = place * 2;
    edit.old_end_byte = (place + (inserting ? 0U : 1U)) * 2;
    edit.new_end_byte = (place + (inserting ? 1U : 0U)) * 2;
    edit.start_point = {row, column};
    edit.old_end_point = {row, column + (inserting ? 0U : 2U)};
    edit.new_end_point = {row, column + (inserting ? 2U : 0U)};
    ts_tree_edit(tree, &edit);
    TSTree* const next = parsed(tree, inserting ? typed : untyped);
    std::uint32_t count = 0;
    std::free(ts_tree_get_changed_ranges(tree, next, &count));
    ts_tree_delete(tree);
    tree = next;
    inserting = !inserting;
  }
  ts_tree_delete(tree);
}

void typeIntoDocument(bench::State& state) {
  Parse document(ParseConfiguration(LanguageID::typescript,
                                    Grammar::fromBuiltIn(Grammar::BuiltIn::typescript), {},
                                    std::make_shared<NoQueries>()));
  const std::u16string text = source(state.size());
  const std::int64_t place = placeToType(text);
  document.replaceSubrange({0, 0}, text);
  bool inserting = true;
  for (auto _ : state) {
    benchmark::DoNotOptimize(inserting ? document.replaceSubrange({place, place}, u"x")
                                       : document.replaceSubrange({place, place + 1}, u""));
    inserting = !inserting;
  }
}

VELMAR_PAIR("document/keystroke", 1.05, typeIntoBareRuntime, typeIntoDocument, 1'000, 10'000,
            100'000);

/// How long an edit that parses 9 MB goes on after it has been cancelled somewhere in the middle.
/// Stops with an error where it takes longer than a person would forgive.
void cancelParsing(benchmark::State& state) {
  const std::u16string text = source(9'000'000 / 45);
  std::mt19937 random(3);
  for (auto _ : state) {
    Parse document(ParseConfiguration(LanguageID::typescript,
                                      Grammar::fromBuiltIn(Grammar::BuiltIn::typescript), {},
                                      std::make_shared<NoQueries>()));
    using Clock = std::chrono::steady_clock;
    Clock::time_point cancelled;
    const auto wait = std::chrono::milliseconds(400 + random() % 400);
    std::thread canceller([&] {
      std::this_thread::sleep_for(wait);
      cancelled = Clock::now();
      document.cancelParsing();
    });
    document.replaceSubrange({0, 0}, text);
    const std::chrono::duration<double> took = Clock::now() - cancelled;
    canceller.join();
    if (document.rootLayer().root())
      state.SkipWithError("The parse was over before it was cancelled.");
    else if (took > std::chrono::milliseconds(10))
      state.SkipWithError("It took longer than 10 ms.");
    state.SetIterationTime(took.count());
  }
}
BENCHMARK(cancelParsing)->Name("document/cancel")->Iterations(20)->UseManualTime();

} // namespace

} // namespace velmar
