#include "host/LanguageTable.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace velmar::host {

namespace {

using Words = std::vector<std::string>;

/// A row as it is written down below.
struct Row {
  LanguageID id;
  std::optional<Grammar::BuiltIn> grammar = std::nullopt;
  /// Without the dot in front, compound ones too.
  Words extensions = {};
  Words filenames = {};
  /// Programs that an interpreter line ("#!") can name; "python" stands for "python3.11" as well.
  Words interpreters = {};
  std::vector<std::string_view> aliases = {};
  LanguageSyntax syntax = {};
};

/// What makes a bookmark of a comment beside the "!" that does in every language: "MARK: Parsing"
/// is one named "Parsing", "TODO: test it" one of that name.
LanguageSyntax::Bookmarks bookmarks() {
  static const RegularExpression words(
      R"(^[/*!\s]*(?:MARK:\s*(?=\S)|(?=(?:TODO|FIXME|HACK|XXX)\b))(.+))");
  return {.regex = words, .contentCapture = 1};
}

LanguageSyntax syntaxOf(std::optional<std::string> single,
                        std::optional<LanguageSyntax::Comments::Multiline> multiline,
                        std::optional<std::string> identifierCharacters = std::nullopt,
                        std::vector<BracketPair> brackets = {
                            {U'(', U')'}, {U'[', U']'}, {U'{', U'}'}}) {
  return {.comments = {.single = std::move(single), .multiline = std::move(multiline)},
          .bookmarks = bookmarks(),
          .identifiers = {.characters = std::move(identifierCharacters)},
          .brackets = {.pairs = std::move(brackets)}};
}

LanguageSyntax slashes(std::optional<std::string> identifierCharacters = std::nullopt) {
  return syntaxOf("//", {{.prefix = "/*", .suffix = "*/"}}, std::move(identifierCharacters));
}

LanguageSyntax hashes(std::optional<std::string> identifierCharacters = std::nullopt) {
  return syntaxOf("#", std::nullopt, std::move(identifierCharacters));
}

/// Its tags aren't brackets: they never nest, and the "<" of "1 < 2" would open one for good.
LanguageSyntax markup() {
  return syntaxOf(std::nullopt, {{.prefix = "<!--", .suffix = "-->"}}, "-:");
}

// clang-format off: a row reads best as it is written.
std::vector<Row> rows() {
  using enum Grammar::BuiltIn;
  using ID = LanguageID;
  return {
      {.id = ID::c, .grammar = c, .extensions = {"c", "h"}, .interpreters = {"tcc"}, .syntax = slashes()},
      {.id = ID::cmake, .grammar = cmake, .extensions = {"cmake", "cmake.in"}, .filenames = {"CMakeLists.txt"},
       .syntax = syntaxOf("#", {{.prefix = "#[[", .suffix = "]]"}})},
      {.id = ID::cPlusPlus, .grammar = cpp,
       .extensions = {"cpp", "cc", "cxx", "c++", "C", "h", "hpp", "hh", "hxx", "h++", "H", "ipp", "inl", "inl.h", "tpp", "ixx",
                      "cppm"},
       .aliases = {"c++", "cplusplus", "cxx", "hpp"}, .syntax = slashes()},
      {.id = ID::cSharp, .grammar = csharp, .extensions = {"cs", "csx"}, .interpreters = {"dotnet-script"},
       .aliases = {"c#", "cs", "c_sharp"}, .syntax = slashes("@")},
      {.id = ID::css, .grammar = css, .extensions = {"css"},
       .syntax = syntaxOf(std::nullopt, {{.prefix = "/*", .suffix = "*/"}}, "-")},
      {.id = ID::diff, .grammar = diff, .extensions = {"diff", "patch"}, .aliases = {"patch"}},
      {.id = ID::html, .grammar = html, .extensions = {"html", "htm", "xhtml", "shtml"}, .aliases = {"htm", "xhtml"},
       .syntax = markup()},
      {.id = ID::htmlEJS, .grammar = embeddedTemplate, .extensions = {"ejs", "html.ejs"}, .aliases = {"ejs"},
       .syntax = syntaxOf(std::nullopt, {{.prefix = "<%#", .suffix = "%>"}})},
      {.id = ID::htmlERB, .grammar = embeddedTemplate, .extensions = {"erb", "html.erb", "rhtml"}, .aliases = {"erb"},
       .syntax = syntaxOf(std::nullopt, {{.prefix = "<%#", .suffix = "%>"}})},
      {.id = ID::htmlJinja, .grammar = jinja, .extensions = {"html.j2", "html.jinja", "html.jinja2", "htm.j2"},
       .syntax = syntaxOf(std::nullopt, {{.prefix = "{#", .suffix = "#}"}})},
      {.id = ID::ini, .grammar = ini, .extensions = {"ini", "cfg", "inf", "desktop", "service"},
       .filenames = {".editorconfig", ".gitconfig", ".gitmodules", ".npmrc"},
       .aliases = {"cfg", "editorconfig", "gitconfig"},
       .syntax = syntaxOf(";", std::nullopt, "-.", {{U'[', U']'}})},
      {.id = ID::javascript, .grammar = javascript, .extensions = {"js", "mjs", "cjs", "jsx", "es6"},
       .filenames = {"Jakefile"}, .interpreters = {"node", "nodejs", "bun"},
       .aliases = {"js", "jsx", "mjs", "cjs", "node", "ecmascript"}, .syntax = slashes("$")},
      {.id = ID::jinja, .grammar = jinja, .extensions = {"j2", "jinja", "jinja2"}, .aliases = {"j2", "jinja2"},
       .syntax = syntaxOf(std::nullopt, {{.prefix = "{#", .suffix = "#}"}})},
      {.id = ID::jsdoc, .grammar = jsdoc},
      {.id = ID::json, .grammar = json,
       .extensions = {"json", "jsonc", "geojson", "webmanifest", "code-workspace", "har", "ipynb"},
       .filenames = {".babelrc", ".eslintrc", ".prettierrc", "composer.lock", "Pipfile.lock", "flake.lock"},
       .aliases = {"jsonc", "geojson"}, .syntax = slashes()},
      {.id = ID::less, .extensions = {"less"}, .syntax = slashes("-@")},
      {.id = ID::lua, .grammar = lua, .extensions = {"lua", "rockspec"}, .filenames = {".luacheckrc"},
       .interpreters = {"lua", "luajit"}, .syntax = syntaxOf("--", {{.prefix = "--[[", .suffix = "]]"}})},
      {.id = ID::make, .grammar = make, .extensions = {"mk", "mak", "make"},
       .filenames = {"Makefile", "makefile", "GNUmakefile", "BSDmakefile"}, .interpreters = {"make", "gmake"},
       .aliases = {"makefile", "mk"}, .syntax = hashes("-.")},
      {.id = ID::markdown, .grammar = markdown, .extensions = {"md", "markdown", "mdown", "mkd"}, .aliases = {"md"},
       .syntax = markup()},
      {.id = ID::markdownInline, .grammar = markdownInline, .syntax = markup()},
      {.id = ID::modulemap, .grammar = modulemap, .extensions = {"modulemap"}, .filenames = {"module.map"},
       .syntax = slashes()},
      {.id = ID::objectiveC, .extensions = {"m"}, .aliases = {"objective-c", "objectivec"}, .syntax = slashes("@")},
      {.id = ID::objectiveCPlusPlus, .extensions = {"mm"}, .aliases = {"objective-c++", "objectivec++"},
       .syntax = slashes("@")},
      {.id = ID::perl, .grammar = perl, .extensions = {"pl", "pm", "t", "psgi"},
       .filenames = {"cpanfile", "Makefile.PL"}, .interpreters = {"perl"}, .aliases = {"pl"}, .syntax = hashes()},
      {.id = ID::php, .grammar = php, .extensions = {"php", "phtml", "php3", "php4", "php5", "phps"},
       .interpreters = {"php"}, .syntax = slashes("$")},
      {.id = ID::phpEmbedded, .grammar = phpOnly, .aliases = {"php_only"}, .syntax = slashes("$")},
      {.id = ID::plainText, .extensions = {"txt", "text", "log"}, .filenames = {"LICENSE", "COPYING", "AUTHORS", "README"},
       .aliases = {"text", "txt", "plain", "plaintext"}},
      {.id = ID::pod, .grammar = pod, .extensions = {"pod"}},
      {.id = ID::python, .grammar = python, .extensions = {"py", "pyi", "pyw", "py3", "bzl"},
       .filenames = {"SConstruct", "SConscript", "wscript"}, .interpreters = {"python", "pypy"},
       .aliases = {"py", "py3", "python3", "pyi"}, .syntax = hashes()},
      {.id = ID::regex, .grammar = regex, .aliases = {"regexp"}, .syntax = syntaxOf(std::nullopt, std::nullopt)},
      {.id = ID::ruby, .grammar = ruby, .extensions = {"rb", "rake", "gemspec", "ru", "podspec"},
       .filenames = {"Gemfile", "Rakefile", "Guardfile", "Podfile", "Brewfile", "Vagrantfile", "Fastfile", ".irbrc"},
       .interpreters = {"ruby", "jruby", "rbx"}, .aliases = {"rb"},
       .syntax = syntaxOf("#", {{.prefix = "=begin", .suffix = "=end"}}, "?!@$")},
      {.id = ID::rust, .grammar = rust, .extensions = {"rs"}, .interpreters = {"rust-script"}, .aliases = {"rs"},
       .syntax = slashes()},
      {.id = ID::sass, .extensions = {"sass"}, .syntax = slashes("-$")},
      {.id = ID::scss, .grammar = scss, .extensions = {"scss"}, .syntax = slashes("-$")},
      {.id = ID::shell, .grammar = bash, .extensions = {"sh", "bash", "zsh", "ksh", "bats", "ebuild"},
       .filenames = {".bashrc", ".bash_profile", ".bash_aliases", ".bash_logout", ".profile", ".zshrc", ".zshenv",
                     ".zprofile", "PKGBUILD", "APKBUILD"},
       .interpreters = {"sh", "bash", "dash", "ash", "zsh", "ksh", "mksh"},
       .aliases = {"sh", "bash", "zsh", "ksh", "shellscript", "shell-script"}, .syntax = hashes("-")},
      {.id = ID::sql, .grammar = sql, .extensions = {"sql", "psql", "ddl"},
       .aliases = {"psql", "postgresql", "mysql", "sqlite"},
       .syntax = syntaxOf("--", {{.prefix = "/*", .suffix = "*/"}}, "$")},
      {.id = ID::swift, .grammar = swift, .extensions = {"swift", "swiftinterface"}, .interpreters = {"swift"},
       .syntax = slashes()},
      {.id = ID::toml, .grammar = toml, .extensions = {"toml"},
       .filenames = {"Cargo.lock", "Pipfile", "poetry.lock", "uv.lock"}, .syntax = hashes("-")},
      {.id = ID::tsq, .grammar = query, .extensions = {"scm", "tsq"}, .aliases = {"query", "scm"},
       .syntax = syntaxOf(";", std::nullopt, "-.?!#@", {{U'(', U')'}, {U'[', U']'}})},
      {.id = ID::tsx, .grammar = tsx, .extensions = {"tsx"}, .syntax = slashes("$")},
      {.id = ID::typescript, .grammar = typescript, .extensions = {"ts", "mts", "cts", "d.ts"},
       .interpreters = {"ts-node", "deno", "tsx"}, .aliases = {"ts", "mts", "cts"}, .syntax = slashes("$")},
      {.id = ID::xml, .grammar = xml,
       .extensions = {"xml", "xsd", "xsl", "xslt", "svg", "plist", "rss", "atom", "xib", "storyboard", "csproj", "vcxproj",
                      "props", "targets", "wsdl"},
       .aliases = {"svg", "xsd", "xslt", "plist"}, .syntax = markup()},
      {.id = ID::yaml, .grammar = yaml, .extensions = {"yaml", "yml"},
       .filenames = {".clang-format", ".clang-tidy", ".clangd", "CITATION.cff"}, .aliases = {"yml"},
       .syntax = syntaxOf("#", std::nullopt, "-", {{U'[', U']'}, {U'{', U'}'}})},
  };
}
// clang-format on

/// Matches "#!/usr/bin/env -S python3 -u" and the like, where `programs` holds "python".
RegularExpression interpreterLine(const Words& programs) {
  return RegularExpression(fmt::format(
      R"(^#!\s*(?:\S*/)?(?:env\s+(?:(?:-\S+|\w+=\S*)\s+)*(?:\S*/)?)?(?:{})[\d.-]*(?!\S))",
      fmt::join(programs, "|")));
}

std::vector<LanguageDetectionRulePointer> rulesOf(const Row& row) {
  using Priority = LanguageDetectionPriority;
  std::vector<LanguageDetectionRulePointer> rules;
  if (!row.filenames.empty())
    rules.push_back(LanguageDetection::filenames(row.filenames, Priority::required));
  if (!row.extensions.empty())
    rules.push_back(LanguageDetection::pathExtensions(row.extensions, Priority::high));
  if (!row.interpreters.empty())
    rules.push_back(std::make_shared<const LanguageDetection::Content<RegularExpression>>(
        interpreterLine(row.interpreters), 1, Priority::medium));
  return rules;
}

std::string lowercased(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower)
    letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  return lower;
}

/// What the rule that speaks most clearly for `language` has to say.
Confidence claimOf(const Language& language, std::string_view text,
                   std::optional<std::string_view> filename) {
  Confidence claim = Confidence::failed;
  for (const auto& rule : language.rules)
    claim = std::max(claim, rule->confidenceFor(text, filename) * rule->priority().rawValue);
  return claim;
}

} // namespace

std::span<const Language> languages() {
  static const std::vector<Language> all = [] {
    std::vector<Language> made;
    for (const Row& row : rows())
      made.push_back({.id = row.id,
                      .grammar = row.grammar,
                      .aliases = row.aliases,
                      .syntax = row.syntax,
                      .rules = rulesOf(row)});
    return made;
  }();
  return all;
}

const Language* languageNamed(std::string_view name) {
  const std::string lower = lowercased(name);
  for (const Language& language : languages()) {
    if (language.id.rawValue == lower ||
        std::ranges::find(language.aliases, lower) != language.aliases.end())
      return &language;
  }
  return nullptr;
}

std::vector<const Language*> languagesOf(std::optional<std::string_view> filename,
                                         std::string_view text) {
  std::vector<const Language*> best;
  Confidence highest = Confidence::failed;
  const auto consider = [&](std::optional<std::string_view> name) {
    for (const Language& language : languages()) {
      const Confidence claim = claimOf(language, text, name);
      if (claim > highest) {
        highest = claim;
        best.clear();
      }
      if (claim > Confidence::failed && claim == highest)
        best.push_back(&language);
    }
  };
  consider(filename);
  // Rules are strict about letter case: "README.MD" gets a second chance.
  if (best.empty() && filename)
    consider(lowercased(*filename));
  return best;
}

const Language* languageOf(std::optional<std::string_view> filename, std::string_view text) {
  const auto best = languagesOf(filename, text);
  return best.empty() ? nullptr : best.front();
}

} // namespace velmar::host
