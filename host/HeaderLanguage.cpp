#include "host/HeaderLanguage.h"

#include "VelmarCode/Language/LanguageID.h"
#include "VelmarParser/Grammar/ParseInput.h"
#include "VelmarParser/Grammar/Parser.h"
#include "VelmarParser/Query/QueryMatches.h"

#include <algorithm>

namespace velmar::host {

namespace {

/// Far behind the end of most headers; more isn't parsed only to tell the language.
constexpr std::int64_t longestLook = 200'000;

constexpr std::string_view onlyCPlusPlus = R"scm(
  [(namespace_definition) (class_specifier) (template_declaration) (using_declaration)
   (alias_declaration) (access_specifier) (base_class_clause) (reference_declarator)
   (qualified_identifier) (concept_definition) (operator_name) (destructor_name)
   (delete_method_clause) (default_method_clause)] @construct
  ((preproc_include path: (system_lib_string) @construct) (#not-match? @construct "[.]h>$"))
)scm";

/// Whether only compilers of C++ get to see `node`, or only others.
bool isConditional(ParseNode node, const DocumentText& text) {
  for (auto around = node.parent(); around; around = around->parent()) {
    const std::string_view type = around->type().value_or("");
    if (type != "preproc_ifdef" && type != "preproc_if")
      continue;
    const auto line =
        text.lineBoundariesFor(around->utf16Range().lowerBound, LineAffinity::downstream);
    if (text.substringFor(line.contentsRange()).find(u"__cplusplus") != std::u16string::npos)
      return true;
  }
  return false;
}

} // namespace

bool isCPlusPlusHeader(const DocumentText& text) {
  if (!Grammar::isAvailable(Grammar::BuiltIn::cpp))
    return false;
  const auto grammar = Grammar::fromBuiltIn(Grammar::BuiltIn::cpp);
  static const auto query = std::make_shared<const Query>(onlyCPlusPlus, grammar);

  DocumentText start;
  start.replaceSubrange({0, 0}, text.substringFor({0, std::min(text.count(), longestLook)}));
  Parser parser(LanguageID::cPlusPlus.rawValue, grammar, std::make_shared<AtomicFlag>());
  const auto tree = parser.parse(nullptr, ParseInput(start).input());
  if (!tree)
    return false;
  for (const QueryMatches::Element& match :
       QueryMatches(query, tree->rootNode(), {0, start.count()}, start)) {
    if (!isConditional(match.captures()[0].node(), start))
      return true;
  }
  return false;
}

} // namespace velmar::host
