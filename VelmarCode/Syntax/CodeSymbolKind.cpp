#include "VelmarCode/Syntax/CodeSymbolKind.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace velmar {

namespace {

struct Row {
  std::string_view text;
  CodeSymbolKind kind;
};

constexpr std::array rowsByKind = {
    Row{"type", CodeSymbolKind::type},
    Row{"class", CodeSymbolKind::class_},
    Row{"category", CodeSymbolKind::category},
    Row{"interface", CodeSymbolKind::interface},
    Row{"enum", CodeSymbolKind::enum_},
    Row{"union", CodeSymbolKind::union_},
    Row{"struct", CodeSymbolKind::struct_},
    Row{"function", CodeSymbolKind::function},
    Row{"method", CodeSymbolKind::method},
    Row{"closure", CodeSymbolKind::closure},
    Row{"constructor", CodeSymbolKind::constructor},
    Row{"getter", CodeSymbolKind::getter},
    Row{"setter", CodeSymbolKind::setter},
    Row{"destructor", CodeSymbolKind::destructor},
    Row{"static-method", CodeSymbolKind::staticMethod},
    Row{"variable", CodeSymbolKind::variable},
    Row{"constant", CodeSymbolKind::constant},
    Row{"property", CodeSymbolKind::property},
    Row{"argument", CodeSymbolKind::argument},
    Row{"color", CodeSymbolKind::color},
    Row{"enum-member", CodeSymbolKind::enumMember},
    Row{"static-property", CodeSymbolKind::staticProperty},
    Row{"expression", CodeSymbolKind::expression},
    Row{"statement", CodeSymbolKind::statement},
    Row{"block", CodeSymbolKind::block},
    Row{"heading", CodeSymbolKind::heading},
    Row{"comment", CodeSymbolKind::comment},
    Row{"package", CodeSymbolKind::package},
    Row{"file", CodeSymbolKind::file},
    Row{"reference", CodeSymbolKind::reference},
    Row{"keyword", CodeSymbolKind::keyword},
    Row{"bookmark", CodeSymbolKind::bookmark},
    Row{"style-ruleset", CodeSymbolKind::styleRuleset},
    Row{"style-directive", CodeSymbolKind::styleDirective},
    Row{"style-id", CodeSymbolKind::styleID},
    Row{"style-class", CodeSymbolKind::styleClass},
    Row{"style-pseudoclass", CodeSymbolKind::stylePseudoClass},
    Row{"style-pseudoelement", CodeSymbolKind::stylePseudoElement},
    Row{"tag", CodeSymbolKind::tag},
    Row{"tag-head", CodeSymbolKind::tagHead},
    Row{"tag-title", CodeSymbolKind::tagTitle},
    Row{"tag-meta", CodeSymbolKind::tagMeta},
    Row{"tag-link", CodeSymbolKind::tagLink},
    Row{"tag-body", CodeSymbolKind::tagBody},
    Row{"tag-script", CodeSymbolKind::tagScript},
    Row{"tag-style", CodeSymbolKind::tagStyle},
    Row{"tag-heading", CodeSymbolKind::tagHeading},
    Row{"tag-section", CodeSymbolKind::tagSection},
    Row{"tag-container", CodeSymbolKind::tagContainer},
    Row{"tag-ul", CodeSymbolKind::tagUnorderedList},
    Row{"tag-ol", CodeSymbolKind::tagOrderedList},
    Row{"tag-li", CodeSymbolKind::tagListItem},
    Row{"tag-anchor", CodeSymbolKind::tagAnchor},
    Row{"tag-image", CodeSymbolKind::tagImage},
    Row{"tag-media", CodeSymbolKind::tagMedia},
    Row{"tag-form", CodeSymbolKind::tagForm},
    Row{"tag-form-field", CodeSymbolKind::tagFormField},
    Row{"tag-framework", CodeSymbolKind::tagFramework},
};

constexpr auto rowsByText = [] {
  auto rows = rowsByKind;
  std::ranges::sort(rows, {}, &Row::text);
  return rows;
}();

} // namespace

std::optional<CodeSymbolKind> CodeSymbolKind::fromString(std::string_view text) {
  const auto* const row = std::ranges::lower_bound(rowsByText, text, {}, &Row::text);
  return row != rowsByText.end() && row->text == text ? std::optional(row->kind) : std::nullopt;
}

std::optional<std::string_view> CodeSymbolKind::string() const noexcept {
  const auto* const row = std::ranges::lower_bound(rowsByKind, *this, {}, &Row::kind);
  return row != rowsByKind.end() && row->kind == *this ? std::optional(row->text) : std::nullopt;
}

std::string CodeSymbolKind::description() const {
  const auto text = string();
  return text ? std::string(*text) : "(" + std::to_string(rawValue) + ")";
}

std::ostream& operator<<(std::ostream& stream, CodeSymbolKind kind) {
  return stream << kind.description();
}

} // namespace velmar
