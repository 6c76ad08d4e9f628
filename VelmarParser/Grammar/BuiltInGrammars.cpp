#include "VelmarParser/Grammar/BuiltInGrammars.h"

extern "C" {
const TSLanguage* tree_sitter_bash();
const TSLanguage* tree_sitter_c();
const TSLanguage* tree_sitter_cpp();
const TSLanguage* tree_sitter_c_sharp();
const TSLanguage* tree_sitter_css();
const TSLanguage* tree_sitter_embedded_template();
const TSLanguage* tree_sitter_html();
const TSLanguage* tree_sitter_javascript();
const TSLanguage* tree_sitter_jinja();
const TSLanguage* tree_sitter_jsdoc();
const TSLanguage* tree_sitter_json();
const TSLanguage* tree_sitter_lua();
const TSLanguage* tree_sitter_make();
const TSLanguage* tree_sitter_markdown();
const TSLanguage* tree_sitter_markdown_inline();
const TSLanguage* tree_sitter_perl();
const TSLanguage* tree_sitter_php();
const TSLanguage* tree_sitter_php_only();
const TSLanguage* tree_sitter_pod();
const TSLanguage* tree_sitter_python();
const TSLanguage* tree_sitter_query();
const TSLanguage* tree_sitter_regex();
const TSLanguage* tree_sitter_ruby();
const TSLanguage* tree_sitter_rust();
const TSLanguage* tree_sitter_scss();
const TSLanguage* tree_sitter_sql();
const TSLanguage* tree_sitter_swift();
const TSLanguage* tree_sitter_toml();
const TSLanguage* tree_sitter_tsx();
const TSLanguage* tree_sitter_typescript();
const TSLanguage* tree_sitter_xml();
const TSLanguage* tree_sitter_yaml();
}

namespace velmar::detail {

namespace {

using enum Grammar::BuiltIn;

// clang-format off
constexpr BuiltInGrammar table[] = {
    {bash, "bash", tree_sitter_bash},
    {c, "c", tree_sitter_c},
    {cmake, "cmake", nullptr},
    {cpp, "cpp", tree_sitter_cpp},
    {csharp, "c_sharp", tree_sitter_c_sharp},
    {css, "css", tree_sitter_css},
    {diff, "diff", nullptr},
    {embeddedTemplate, "embedded_template", tree_sitter_embedded_template},
    {html, "html", tree_sitter_html},
    {ini, "ini", nullptr},
    {javascript, "javascript", tree_sitter_javascript},
    {jinja, "jinja", tree_sitter_jinja},
    {jsdoc, "jsdoc", tree_sitter_jsdoc},
    {json, "json", tree_sitter_json},
    {lua, "lua", tree_sitter_lua},
    {make, "make", tree_sitter_make},
    {markdown, "markdown", tree_sitter_markdown},
    {markdownInline, "markdown_inline", tree_sitter_markdown_inline},
    {modulemap, "modulemap", nullptr},
    {perl, "perl", tree_sitter_perl},
    {php, "php", tree_sitter_php},
    {phpOnly, "php_only", tree_sitter_php_only},
    {pod, "pod", tree_sitter_pod},
    {python, "python", tree_sitter_python},
    {query, "query", tree_sitter_query},
    {regex, "regex", tree_sitter_regex},
    {ruby, "ruby", tree_sitter_ruby},
    {rust, "rust", tree_sitter_rust},
    {scss, "scss", tree_sitter_scss},
    {sql, "sql", tree_sitter_sql},
    {swift, "swift", tree_sitter_swift},
    {toml, "toml", tree_sitter_toml},
    {tsx, "tsx", tree_sitter_tsx},
    {typescript, "typescript", tree_sitter_typescript},
    {xml, "xml", tree_sitter_xml},
    {yaml, "yaml", tree_sitter_yaml},
};
// clang-format on

constexpr bool isIndexedByValue() {
  for (std::size_t index = 0; index < std::size(table); ++index) {
    if (static_cast<std::size_t>(table[index].builtIn) != index)
      return false;
  }
  return true;
}
static_assert(isIndexedByValue());

} // namespace

std::span<const BuiltInGrammar> builtInGrammars() {
  return table;
}

} // namespace velmar::detail
