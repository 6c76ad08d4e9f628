// The outline and the folds of a document, beside the runtime's bare cursor walking the same query
// over the same tree; and how soon the reading of a large one is given up.

#include "VelmarParser/Structure/Structure.h"

#include "VelmarPlatform/Concurrency/Cancellation.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "bench/Pair.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace velmar {

namespace {

using std::chrono::steady_clock;

std::string contentsOf(const std::string& path) {
  std::stringstream content;
  content << std::ifstream(std::filesystem::path(VELMAR_SOURCE_DIR) / "packs" / path,
                           std::ios::binary)
                 .rdbuf();
  return content.str();
}

/// JavaScript with the packs of the house, each category from the files that make it up.
class JavaScript : public ParseConfigurationResolving {
public:
  static ParseConfiguration configuration() {
    static const ParseConfiguration made(
        LanguageID::javascript, Grammar::fromBuiltIn(Grammar::BuiltIn::javascript),
        {.comments = {.single = "//", .multiline = {{.prefix = "/*", .suffix = "*/"}}},
         .bookmarks = std::nullopt,
         .identifiers = {},
         .brackets = {}},
        std::make_shared<JavaScript>());
    return made;
  }

  std::optional<ParseConfiguration> configurationMatching(std::string_view,
                                                          const ParseConfiguration&) override {
    return std::nullopt;
  }
  std::optional<std::string> queryTextFor(ParseQueryCategory category,
                                          const ParseConfiguration&) override {
    const std::string file = std::string(rawValueOf(category)) + ".scm";
    switch (category) {
    case ParseQueryCategory::symbols:
      return contentsOf("_ecmascript/" + file) + contentsOf("javascript/" + file);
    case ParseQueryCategory::folds:
      return contentsOf("_ecmascript/" + file) + contentsOf("_jsx/" + file);
    case ParseQueryCategory::highlights:
      return "(comment) @comment (string) @string";
    default:
      return std::nullopt;
    }
  }
  std::optional<std::string> queryTextNamed(std::string_view name,
                                            const ParseConfiguration&) override {
    return contentsOf("javascript/named/" + std::string(name) + ".scm");
  }
};

/// Classes, functions and calls as people write them, twelve lines at a time.
std::u16string sourceOf(std::int64_t lineCount) {
  std::string text;
  for (std::int64_t line = 0; line < lineCount; line += 12) {
    const std::string id = std::to_string(line);
    text += "// Adds up item " + id + ",\n// one by one.\nclass Item" + id +
            " extends Base {\n  static LIMIT = " + id + ";\n  constructor(name, value = " + id +
            ") {\n    super(name); // ! set up\n    this.value = { name, value, at: [1, 2, " + id +
            "] };\n    console.log(`made ${name}`);\n  }\n  get total() { return "
            "require('./sum').sum(this.items.map(x => x * " +
            id + "), MAX_COUNT); }\n}\n\n";
  }
  return utf16RepairingUTF8(text);
}

const Parse& documentOf(std::int64_t lineCount) {
  static std::map<std::int64_t, std::unique_ptr<Parse>> documents;
  auto& document = documents[lineCount];
  if (!document) {
    document = std::make_unique<Parse>(JavaScript::configuration());
    document->setErrorHandler(
        [](const ParseConfiguration&, std::string_view, const std::exception&) {
          precondition(false, "A query of the packs doesn't work.");
        });
    document->replaceSubrange({0, 0}, sourceOf(lineCount));
  }
  return *document;
}

void walkBare(bench::State& state) {
  const Parse& document = documentOf(state.size());
  const auto queries = JavaScript::configuration().structureQuerySet();
  for (auto _ : state) {
    TSQueryCursor* const cursor = ts_query_cursor_new();
    ts_query_cursor_exec(cursor, queries->query()->base(), document.rootLayer().root()->base());
    TSQueryMatch match;
    while (ts_query_cursor_next_match(cursor, &match))
      benchmark::DoNotOptimize(match.captures);
    ts_query_cursor_delete(cursor);
  }
}

void readStructure(bench::State& state) {
  const Parse& document = documentOf(state.size());
  precondition(!parseStructure(document.rootLayer()).symbols.empty(), "There is an outline.");
  for (auto _ : state)
    benchmark::DoNotOptimize(parseStructure(document.rootLayer()));
}

VELMAR_PAIR("structure/parseStructure", 2.0, walkBare, readStructure, 1'000, 10'000, 100'000);

/// From the call of `cancel` on another thread to the end of `parseStructure`, at moments all
/// through its run; the slowest of them is what a user would wait.
void cancelAnywhere(benchmark::State& state) {
  constexpr std::int64_t lines = 300'000; // 9 MB of UTF-8
  const Parse& document = documentOf(lines);
  const auto start = steady_clock::now();
  benchmark::DoNotOptimize(parseStructure(document.rootLayer()));
  const auto whole = steady_clock::now() - start;

  std::vector<double> waits;
  int moment = 0;
  constexpr int moments = 40;
  for (auto _ : state) {
    const auto delay = whole * (moment++ % moments) / moments;
    const CancellationToken token;
    steady_clock::time_point cancelled;
    std::atomic<bool> runs = false;
    std::jthread canceller([&] {
      runs.wait(false);
      std::this_thread::sleep_for(delay);
      cancelled = steady_clock::now();
      token.cancel();
    });
    runs = true;
    runs.notify_one();
    bool isWhole = true;
    try {
      benchmark::DoNotOptimize(parseStructure(document.rootLayer(), token));
    } catch (const CancellationError&) {
      isWhole = false;
    }
    const auto ended = steady_clock::now();
    canceller.join();
    if (!isWhole)
      waits.push_back(std::chrono::duration<double, std::milli>(ended - cancelled).count());
    state.SetIterationTime(waits.empty() ? 0 : waits.back() / 1000);
  }
  std::ranges::sort(waits);
  if (waits.empty())
    return;
  state.counters["whole ms"] = std::chrono::duration<double, std::milli>(whole).count();
  state.counters["median ms"] = waits[waits.size() / 2];
  state.counters["slowest ms"] = waits.back();
}
BENCHMARK(cancelAnywhere)->Name("structure/cancel/9MB")->UseManualTime()->Iterations(80);

} // namespace

} // namespace velmar
