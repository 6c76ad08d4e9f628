#include "bench/VelmarParser/JavaScriptDocument.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "cmake/SourceTree.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>

namespace velmar {

namespace {

std::string contentsOf(const std::string& path) {
  std::stringstream content;
  content << std::ifstream(sourcePath("packs/" + path), std::ios::binary).rdbuf();
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
         .identifiers = {.characters = "$"},
         .brackets = {.pairs = {{U'(', U')'}, {U'[', U']'}, {U'{', U'}'}}}},
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

} // namespace

ParseConfiguration javaScript() {
  return JavaScript::configuration();
}

const Parse& javaScriptDocument(std::int64_t lineCount) {
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

} // namespace velmar
