// Loading a file into a document and parsing it, beside the runtime's own parse of the same text in
// one buffer.

#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/Parser.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "bench/Pair.h"
#include "cmake/SourceTree.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>

namespace velmar {

namespace {

constexpr std::size_t generatedSize = 4'000'000;

/// `write` over and over, until there are some megabytes of text.
std::string generated(std::string start, std::string_view end,
                      const std::function<void(std::string&, unsigned)>& write) {
  std::mt19937 random(17);
  std::string text = std::move(start);
  while (text.size() < generatedSize)
    write(text, static_cast<unsigned>(random() % 1000));
  return text.append(end);
}

std::string generatedCPP() {
  return generated("#include <vector>\n\n", "", [](std::string& text, unsigned n) {
    const std::string id = std::to_string(n);
    text +=
        "/// Adds up what stands before item " + id + ".\ntemplate <class Item>\nint sum" + id +
        "(const std::vector<Item>& items, int limit = " + id +
        ") {\n  int total = 0;\n  for (const auto& item : items) {\n    if (item.value > limit && "
        "item.name != \"item " +
        id + "\")\n      total += item.value * " + id + ";\n  }\n  return total;\n}\n\n";
  });
}

std::string generatedJSON() {
  return generated("[\n", "  null\n]\n", [](std::string& text, unsigned n) {
    const std::string id = std::to_string(n);
    text += "  {\n    \"id\": " + id + ",\n    \"name\": \"item " + id +
            "\",\n    \"tags\": [\"a\", \"b\\n\", true, null],\n    \"size\": {\"width\": " + id +
            ".5, \"height\": -1e3}\n  },\n";
  });
}

std::string generatedHTML() {
  return generated(
      "<!DOCTYPE html>\n<html>\n<body>\n", "</body>\n</html>\n", [](std::string& text, unsigned n) {
        const std::string id = std::to_string(n);
        text += "  <!-- Item " + id + " -->\n  <div class=\"item\" id=\"item-" + id +
                "\">\n    <h2>Item " + id +
                "</h2>\n    <p>Some words with <b>weight</b> &amp; more.<br>\n    And <a "
                "href=\"#" +
                id + "\">back</a></p>\n  </div>\n";
      });
}

std::string contentsOf(const std::filesystem::path& path) {
  std::stringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

/// The largest file with that extension below the folder; absent if there is none.
std::optional<std::filesystem::path> largestFile(const std::filesystem::path& folder,
                                                 std::string_view extension) {
  std::optional<std::filesystem::path> largest;
  std::uintmax_t size = 0;
  std::error_code error;
  for (std::filesystem::recursive_directory_iterator entry(folder, error), end;
       !error && entry != end; entry.increment(error)) {
    if (!entry->is_regular_file() || entry->path().extension() != extension ||
        entry->file_size() <= size)
      continue;
    largest = entry->path();
    size = entry->file_size();
  }
  return largest;
}

/// A text to parse, the same for both sides.
struct Source {
  std::shared_ptr<const Grammar> grammar;
  std::u16string text;
};

struct ParserDeleter {
  void operator()(TSParser* parser) const noexcept { ts_parser_delete(parser); }
};

void parseOneBuffer(const Source& source, bench::State& state) {
  const std::unique_ptr<TSParser, ParserDeleter> parser(ts_parser_new());
  ts_parser_set_language(parser.get(), source.grammar->base());
  for (auto _ : state) {
    TSTree* const tree = ts_parser_parse_string_encoding(
        parser.get(), nullptr, reinterpret_cast<const char*>(source.text.data()),
        static_cast<std::uint32_t>(source.text.size() * sizeof(char16_t)), TSInputEncodingUTF16LE);
    benchmark::DoNotOptimize(tree);
    state.pause(); // Freeing a tree is the same for both.
    ts_tree_delete(tree);
    state.resume();
  }
}

void loadAndParseLines(const Source& source, bench::State& state) {
  Parser parser("benchmark", source.grammar, std::make_shared<const AtomicFlag>());
  for (auto _ : state) {
    auto text = std::make_unique<DocumentText>();
    text->replaceSubrange({0, 0}, source.text);
    ParseInput input(*text);
    auto tree = parser.parse(nullptr, input.input());
    benchmark::DoNotOptimize(tree->base());
    state.pause();
    tree.reset();
    text.reset();
    state.resume();
  }
}

/// The text is made when the pair is first run: pairs that a filter leaves out cost nothing.
void registerSource(const std::string& name, Grammar::BuiltIn grammar,
                    std::function<std::string()> makeText) {
  const auto source = std::make_shared<std::optional<Source>>();
  const auto made = [source, grammar, makeText]() -> const Source& {
    if (!*source)
      source->emplace(Grammar::fromBuiltIn(grammar), utf16RepairingUTF8(makeText()));
    return **source;
  };
  bench::registerPair({
      .name = "parse/load-and-parse/" + name,
      .bound = 1.1,
      .floor = [made](bench::State& state) { parseOneBuffer(made(), state); },
      .ours = [made](bench::State& state) { loadAndParseLines(made(), state); },
  });
}

bool registerSources() {
  registerSource("generated.cpp", Grammar::BuiltIn::cpp, generatedCPP);
  registerSource("generated.json", Grammar::BuiltIn::json, generatedJSON);
  registerSource("generated.html", Grammar::BuiltIn::html, generatedHTML);
  // Real files: the largest of what the grammars' packages bring, or one that the user names.
  const char* const named = std::getenv("VELMAR_LARGE_JS");
  const auto script = named ? std::optional<std::filesystem::path>(named)
                            : largestFile(sourcePath("grammars/node_modules"), ".js");
  if (script && std::filesystem::exists(*script))
    registerSource("largest.js", Grammar::BuiltIn::javascript,
                   [path = *script] { return contentsOf(path); });
  else
    bench::leaveOut("parse/load-and-parse/largest.js", "there is no such file");
  const std::filesystem::path parser =
      sourcePath("grammars/node_modules/tree-sitter-rust/src/parser.c");
  if (std::filesystem::exists(parser))
    registerSource("parser.c", Grammar::BuiltIn::c, [parser] { return contentsOf(parser); });
  else
    bench::leaveOut("parse/load-and-parse/parser.c", "there is no such file");
  return true;
}

[[maybe_unused]] const bool sourcesRegistered = registerSources();

} // namespace

} // namespace velmar
