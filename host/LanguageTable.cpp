#include "host/LanguageTable.h"

#include <algorithm>
#include <cctype>

namespace velmar::host {

namespace {

using enum Grammar::BuiltIn;

// clang-format off
const std::vector<Language>& table() {
  static const std::vector<Language> rows = {
    {.id = "c", .grammar = c, .extensions = {"c", "h"}, .filenames = {}, .interpreters = {"tcc"}, .aliases = {}},
    {.id = "cmake", .grammar = cmake, .extensions = {"cmake", "cmake.in"}, .filenames = {"CMakeLists.txt"},
     .interpreters = {}, .aliases = {}},
    {.id = "cpp", .grammar = cpp,
     .extensions = {"cpp", "cc", "cxx", "c++", "hpp", "hh", "hxx", "h++", "ipp", "inl", "inl.h", "tpp", "ixx", "cppm"},
     .filenames = {}, .interpreters = {}, .aliases = {"c++", "cplusplus", "cxx", "hpp"}},
    {.id = "csharp", .grammar = csharp, .extensions = {"cs", "csx"}, .filenames = {}, .interpreters = {"dotnet-script"},
     .aliases = {"c#", "cs", "c_sharp"}},
    {.id = "css", .grammar = css, .extensions = {"css"}, .filenames = {}, .interpreters = {}, .aliases = {}},
    {.id = "diff", .grammar = diff, .extensions = {"diff", "patch"}, .filenames = {}, .interpreters = {},
     .aliases = {"patch"}},
    {.id = "html", .grammar = html, .extensions = {"html", "htm", "xhtml", "shtml"}, .filenames = {}, .interpreters = {},
     .aliases = {"htm", "xhtml"}},
    {.id = "html+ejs", .grammar = embeddedTemplate, .extensions = {"ejs", "html.ejs"}, .filenames = {},
     .interpreters = {}, .aliases = {"ejs"}},
    {.id = "html+erb", .grammar = embeddedTemplate, .extensions = {"erb", "html.erb", "rhtml"}, .filenames = {},
     .interpreters = {}, .aliases = {"erb"}},
    {.id = "html+jinja", .grammar = jinja, .extensions = {"html.j2", "html.jinja", "html.jinja2", "htm.j2"},
     .filenames = {}, .interpreters = {}, .aliases = {}},
    {.id = "ini", .grammar = ini, .extensions = {"ini", "cfg", "inf", "desktop", "service"},
     .filenames = {".editorconfig", ".gitconfig", ".gitmodules", ".npmrc"}, .interpreters = {},
     .aliases = {"cfg", "editorconfig", "gitconfig"}},
    {.id = "javascript", .grammar = javascript, .extensions = {"js", "mjs", "cjs", "jsx", "es6"},
     .filenames = {"Jakefile"}, .interpreters = {"node", "nodejs", "bun"}, .aliases = {"js", "jsx", "mjs", "cjs", "node", "ecmascript"}},
    {.id = "jinja", .grammar = jinja, .extensions = {"j2", "jinja", "jinja2"}, .filenames = {}, .interpreters = {},
     .aliases = {"j2", "jinja2"}},
    {.id = "jsdoc", .grammar = jsdoc, .extensions = {}, .filenames = {}, .interpreters = {}, .aliases = {}},
    {.id = "json", .grammar = json, .extensions = {"json", "jsonc", "geojson", "webmanifest", "code-workspace", "har", "ipynb"},
     .filenames = {".babelrc", ".eslintrc", ".prettierrc", "composer.lock", "Pipfile.lock", "flake.lock"},
     .interpreters = {}, .aliases = {"jsonc", "geojson"}},
    {.id = "less", .grammar = {}, .extensions = {"less"}, .filenames = {}, .interpreters = {}, .aliases = {}},
    {.id = "lua", .grammar = lua, .extensions = {"lua", "rockspec"}, .filenames = {".luacheckrc"},
     .interpreters = {"lua", "luajit"}, .aliases = {}},
    {.id = "make", .grammar = make, .extensions = {"mk", "mak", "make"},
     .filenames = {"Makefile", "makefile", "GNUmakefile", "BSDmakefile"}, .interpreters = {"make", "gmake"},
     .aliases = {"makefile", "mk"}},
    {.id = "markdown", .grammar = markdown, .extensions = {"md", "markdown", "mdown", "mkd"}, .filenames = {},
     .interpreters = {}, .aliases = {"md"}},
    {.id = "markdown_inline", .grammar = markdownInline, .extensions = {}, .filenames = {}, .interpreters = {},
     .aliases = {}},
    {.id = "modulemap", .grammar = modulemap, .extensions = {"modulemap"}, .filenames = {"module.map"},
     .interpreters = {}, .aliases = {}},
    {.id = "objc", .grammar = {}, .extensions = {"m"}, .filenames = {}, .interpreters = {},
     .aliases = {"objective-c", "objectivec"}},
    {.id = "objcpp", .grammar = {}, .extensions = {"mm"}, .filenames = {}, .interpreters = {},
     .aliases = {"objective-c++", "objectivec++"}},
    {.id = "perl", .grammar = perl, .extensions = {"pl", "pm", "t", "psgi"}, .filenames = {"cpanfile", "Makefile.PL"},
     .interpreters = {"perl"}, .aliases = {"pl"}},
    {.id = "php", .grammar = php, .extensions = {"php", "phtml", "php3", "php4", "php5", "phps"}, .filenames = {},
     .interpreters = {"php"}, .aliases = {}},
    {.id = "php_embedded", .grammar = phpOnly, .extensions = {}, .filenames = {}, .interpreters = {},
     .aliases = {"php_only"}},
    {.id = "plain-text", .grammar = {}, .extensions = {"txt", "text", "log"},
     .filenames = {"LICENSE", "COPYING", "AUTHORS", "README"}, .interpreters = {},
     .aliases = {"text", "txt", "plain", "plaintext"}},
    {.id = "pod", .grammar = pod, .extensions = {"pod"}, .filenames = {}, .interpreters = {}, .aliases = {}},
    {.id = "python", .grammar = python, .extensions = {"py", "pyi", "pyw", "py3", "bzl"},
     .filenames = {"SConstruct", "SConscript", "wscript"}, .interpreters = {"python", "pypy"},
     .aliases = {"py", "py3", "python3", "pyi"}},
    {.id = "regex", .grammar = regex, .extensions = {}, .filenames = {}, .interpreters = {}, .aliases = {"regexp"}},
    {.id = "ruby", .grammar = ruby, .extensions = {"rb", "rake", "gemspec", "ru", "podspec"},
     .filenames = {"Gemfile", "Rakefile", "Guardfile", "Podfile", "Brewfile", "Vagrantfile", "Fastfile", ".irbrc"},
     .interpreters = {"ruby", "jruby", "rbx"}, .aliases = {"rb"}},
    {.id = "rust", .grammar = rust, .extensions = {"rs"}, .filenames = {}, .interpreters = {"rust-script"}, .aliases = {"rs"}},
    {.id = "sass", .grammar = {}, .extensions = {"sass"}, .filenames = {}, .interpreters = {}, .aliases = {}},
    {.id = "scss", .grammar = scss, .extensions = {"scss"}, .filenames = {}, .interpreters = {}, .aliases = {}},
    {.id = "shell", .grammar = bash, .extensions = {"sh", "bash", "zsh", "ksh", "bats", "ebuild"},
     .filenames = {".bashrc", ".bash_profile", ".bash_aliases", ".bash_logout", ".profile", ".zshrc", ".zshenv",
                   ".zprofile", "PKGBUILD", "APKBUILD"},
     .interpreters = {"sh", "bash", "dash", "ash", "zsh", "ksh", "mksh"},
     .aliases = {"sh", "bash", "zsh", "ksh", "shellscript", "shell-script"}},
    {.id = "sql", .grammar = sql, .extensions = {"sql", "psql", "ddl"}, .filenames = {}, .interpreters = {},
     .aliases = {"psql", "postgresql", "mysql", "sqlite"}},
    {.id = "swift", .grammar = swift, .extensions = {"swift", "swiftinterface"}, .filenames = {},
     .interpreters = {"swift"}, .aliases = {}},
    {.id = "toml", .grammar = toml, .extensions = {"toml"},
     .filenames = {"Cargo.lock", "Pipfile", "poetry.lock", "uv.lock"}, .interpreters = {}, .aliases = {}},
    {.id = "tsq", .grammar = query, .extensions = {"scm", "tsq"}, .filenames = {}, .interpreters = {},
     .aliases = {"query", "scm"}},
    {.id = "tsx", .grammar = tsx, .extensions = {"tsx"}, .filenames = {}, .interpreters = {}, .aliases = {}},
    {.id = "typescript", .grammar = typescript, .extensions = {"ts", "mts", "cts", "d.ts"}, .filenames = {},
     .interpreters = {"ts-node", "deno", "tsx"}, .aliases = {"ts", "mts", "cts"}},
    {.id = "xml", .grammar = xml,
     .extensions = {"xml", "xsd", "xsl", "xslt", "svg", "plist", "rss", "atom", "xib", "storyboard", "csproj", "vcxproj",
                    "props", "targets", "wsdl"},
     .filenames = {}, .interpreters = {}, .aliases = {"svg", "xsd", "xslt", "plist"}},
    {.id = "yaml", .grammar = yaml, .extensions = {"yaml", "yml", "clang-format"},
     .filenames = {".clang-format", ".clang-tidy", ".clangd", "CITATION.cff"}, .interpreters = {}, .aliases = {"yml"}},
  };
  return rows;
}
// clang-format on

std::string lowercased(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower)
    letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  return lower;
}

/// The next word of `text` up to a blank, taken off its front together with the blanks before it.
std::string_view takeWord(std::string_view& text) {
  constexpr std::string_view blanks = " \t\r\n";
  text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(blanks));
  text.remove_prefix(word.size());
  return word;
}

std::string_view lastComponent(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

/// The program that a first line such as "#!/usr/bin/env -S python3 -u" names, without its folder;
/// empty if it isn't an interpreter line.
std::string_view interpreterOf(std::string_view line) {
  if (!line.starts_with("#!"))
    return {};
  line.remove_prefix(2);
  std::string_view program = lastComponent(takeWord(line));
  if (program != "env")
    return program;
  do {
    program = takeWord(line); // past env's options and variables
  } while (program.starts_with('-') || program.find('=') != std::string_view::npos);
  return lastComponent(program);
}

/// Whether `program` is `name`, perhaps with a version behind it: "python3.11" is "python".
bool isVersionOf(std::string_view program, std::string_view name) {
  return program.starts_with(name) &&
         program.find_first_not_of("0123456789.-", name.size()) == std::string_view::npos;
}

bool holds(const std::vector<std::string_view>& list, std::string_view wanted) {
  return std::ranges::find(list, wanted) != list.end();
}

template <class Condition>
const Language* firstWhere(Condition condition) {
  const auto found = std::ranges::find_if(table(), condition);
  return found == table().end() ? nullptr : &*found;
}

} // namespace

std::span<const Language> languages() {
  return table();
}

const Language* languageNamed(std::string_view name) {
  const std::string lower = lowercased(name);
  if (const auto* exact = firstWhere([&](const Language& row) { return row.id == lower; }))
    return exact;
  return firstWhere([&](const Language& row) { return holds(row.aliases, lower); });
}

const Language* languageOfFile(std::string_view filename, std::string_view firstLine) {
  if (const auto* named =
          firstWhere([&](const Language& row) { return holds(row.filenames, filename); }))
    return named;
  const FilePath path{std::string(filename)};
  for (const auto& extension : {path.compoundExtension(), path.extension()}) {
    const std::string lower = lowercased(extension.value_or(""));
    const auto* found =
        firstWhere([&](const Language& row) { return holds(row.extensions, lower); });
    if (found)
      return found;
  }
  const std::string_view program = interpreterOf(firstLine);
  if (program.empty())
    return nullptr;
  return firstWhere([&](const Language& row) {
    return std::ranges::any_of(row.interpreters,
                               [&](std::string_view name) { return isVersionOf(program, name); });
  });
}

} // namespace velmar::host
