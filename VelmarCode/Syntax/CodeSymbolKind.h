// What kind of thing a symbol in an outline is.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace velmar {

/// A number from an open vocabulary, whose known values have names; most of these have a text as
/// well, which queries write. The JSON form is the number. Any thread.
struct CodeSymbolKind {
  using RawValue = std::int64_t;
  std::int64_t rawValue = 0;

  static const CodeSymbolKind generic;

  static const CodeSymbolKind type;
  static const CodeSymbolKind class_;
  static const CodeSymbolKind category;
  static const CodeSymbolKind interface;
  static const CodeSymbolKind enum_;
  static const CodeSymbolKind union_;
  static const CodeSymbolKind struct_;

  static const CodeSymbolKind function;
  static const CodeSymbolKind method;
  static const CodeSymbolKind closure;
  static const CodeSymbolKind constructor;
  static const CodeSymbolKind getter;
  static const CodeSymbolKind setter;
  static const CodeSymbolKind destructor;
  static const CodeSymbolKind staticMethod;

  static const CodeSymbolKind variable;
  static const CodeSymbolKind constant;
  static const CodeSymbolKind property;
  static const CodeSymbolKind argument;
  static const CodeSymbolKind color;
  static const CodeSymbolKind enumMember;
  static const CodeSymbolKind staticProperty;

  static const CodeSymbolKind expression;
  static const CodeSymbolKind statement;
  static const CodeSymbolKind block;

  static const CodeSymbolKind heading;
  static const CodeSymbolKind comment;
  static const CodeSymbolKind package;
  static const CodeSymbolKind file;
  static const CodeSymbolKind reference;
  static const CodeSymbolKind keyword;
  static const CodeSymbolKind bookmark;
  static const CodeSymbolKind folder;

  static const CodeSymbolKind styleRuleset;
  static const CodeSymbolKind styleDirective;
  static const CodeSymbolKind styleID;
  static const CodeSymbolKind styleClass;
  static const CodeSymbolKind stylePseudoClass;
  static const CodeSymbolKind stylePseudoElement;

  static const CodeSymbolKind tag;
  static const CodeSymbolKind tagHead;
  static const CodeSymbolKind tagTitle;
  static const CodeSymbolKind tagMeta;
  static const CodeSymbolKind tagLink;
  static const CodeSymbolKind tagBody;
  static const CodeSymbolKind tagScript;
  static const CodeSymbolKind tagStyle;
  static const CodeSymbolKind tagHeading;
  static const CodeSymbolKind tagSection;
  static const CodeSymbolKind tagContainer;
  static const CodeSymbolKind tagUnorderedList;
  static const CodeSymbolKind tagOrderedList;
  static const CodeSymbolKind tagListItem;
  static const CodeSymbolKind tagAnchor;
  static const CodeSymbolKind tagImage;
  static const CodeSymbolKind tagMedia;
  static const CodeSymbolKind tagForm;
  static const CodeSymbolKind tagFormField;
  static const CodeSymbolKind tagFramework;

  /// The kind of that text, such as "static-method"; absent for any other text. O(log kinds).
  [[nodiscard]] static std::optional<CodeSymbolKind> fromString(std::string_view text);
  /// The kind's text; absent for `generic`, `folder` and numbers without a name.
  [[nodiscard]] std::optional<std::string_view> string() const noexcept;
  /// The text, or the number in parentheses.
  [[nodiscard]] std::string description() const;

  [[nodiscard]] constexpr bool isType() const noexcept { return isWithin(1, 7); }
  [[nodiscard]] constexpr bool isCallable() const noexcept { return isWithin(10, 17); }
  [[nodiscard]] constexpr bool isValue() const noexcept { return isWithin(20, 26); }
  [[nodiscard]] constexpr bool isTag() const noexcept { return isWithin(60, 79); }

  auto operator<=>(const CodeSymbolKind&) const = default;

private:
  [[nodiscard]] constexpr bool isWithin(std::int64_t first, std::int64_t last) const noexcept {
    return first <= rawValue && rawValue <= last;
  }
};

inline constexpr CodeSymbolKind CodeSymbolKind::generic{0};
inline constexpr CodeSymbolKind CodeSymbolKind::type{1};
inline constexpr CodeSymbolKind CodeSymbolKind::class_{2};
inline constexpr CodeSymbolKind CodeSymbolKind::category{3};
inline constexpr CodeSymbolKind CodeSymbolKind::interface{4};
inline constexpr CodeSymbolKind CodeSymbolKind::enum_{5};
inline constexpr CodeSymbolKind CodeSymbolKind::union_{6};
inline constexpr CodeSymbolKind CodeSymbolKind::struct_{7};
inline constexpr CodeSymbolKind CodeSymbolKind::function{10};
inline constexpr CodeSymbolKind CodeSymbolKind::method{11};
inline constexpr CodeSymbolKind CodeSymbolKind::closure{12};
inline constexpr CodeSymbolKind CodeSymbolKind::constructor{13};
inline constexpr CodeSymbolKind CodeSymbolKind::getter{14};
inline constexpr CodeSymbolKind CodeSymbolKind::setter{15};
inline constexpr CodeSymbolKind CodeSymbolKind::destructor{16};
inline constexpr CodeSymbolKind CodeSymbolKind::staticMethod{17};
inline constexpr CodeSymbolKind CodeSymbolKind::variable{20};
inline constexpr CodeSymbolKind CodeSymbolKind::constant{21};
inline constexpr CodeSymbolKind CodeSymbolKind::property{22};
inline constexpr CodeSymbolKind CodeSymbolKind::argument{23};
inline constexpr CodeSymbolKind CodeSymbolKind::color{24};
inline constexpr CodeSymbolKind CodeSymbolKind::enumMember{25};
inline constexpr CodeSymbolKind CodeSymbolKind::staticProperty{26};
inline constexpr CodeSymbolKind CodeSymbolKind::expression{30};
inline constexpr CodeSymbolKind CodeSymbolKind::statement{31};
inline constexpr CodeSymbolKind CodeSymbolKind::block{32};
inline constexpr CodeSymbolKind CodeSymbolKind::heading{34};
inline constexpr CodeSymbolKind CodeSymbolKind::comment{35};
inline constexpr CodeSymbolKind CodeSymbolKind::package{36};
inline constexpr CodeSymbolKind CodeSymbolKind::file{37};
inline constexpr CodeSymbolKind CodeSymbolKind::reference{38};
inline constexpr CodeSymbolKind CodeSymbolKind::keyword{39};
inline constexpr CodeSymbolKind CodeSymbolKind::bookmark{40};
inline constexpr CodeSymbolKind CodeSymbolKind::folder{41};
inline constexpr CodeSymbolKind CodeSymbolKind::styleRuleset{50};
inline constexpr CodeSymbolKind CodeSymbolKind::styleDirective{51};
inline constexpr CodeSymbolKind CodeSymbolKind::styleID{52};
inline constexpr CodeSymbolKind CodeSymbolKind::styleClass{53};
inline constexpr CodeSymbolKind CodeSymbolKind::stylePseudoClass{54};
inline constexpr CodeSymbolKind CodeSymbolKind::stylePseudoElement{55};
inline constexpr CodeSymbolKind CodeSymbolKind::tag{60};
inline constexpr CodeSymbolKind CodeSymbolKind::tagHead{61};
inline constexpr CodeSymbolKind CodeSymbolKind::tagTitle{62};
inline constexpr CodeSymbolKind CodeSymbolKind::tagMeta{63};
inline constexpr CodeSymbolKind CodeSymbolKind::tagLink{64};
inline constexpr CodeSymbolKind CodeSymbolKind::tagBody{65};
inline constexpr CodeSymbolKind CodeSymbolKind::tagScript{66};
inline constexpr CodeSymbolKind CodeSymbolKind::tagStyle{67};
inline constexpr CodeSymbolKind CodeSymbolKind::tagHeading{68};
inline constexpr CodeSymbolKind CodeSymbolKind::tagSection{69};
inline constexpr CodeSymbolKind CodeSymbolKind::tagContainer{70};
inline constexpr CodeSymbolKind CodeSymbolKind::tagUnorderedList{71};
inline constexpr CodeSymbolKind CodeSymbolKind::tagOrderedList{72};
inline constexpr CodeSymbolKind CodeSymbolKind::tagListItem{73};
inline constexpr CodeSymbolKind CodeSymbolKind::tagAnchor{74};
inline constexpr CodeSymbolKind CodeSymbolKind::tagImage{75};
inline constexpr CodeSymbolKind CodeSymbolKind::tagMedia{76};
inline constexpr CodeSymbolKind CodeSymbolKind::tagForm{77};
inline constexpr CodeSymbolKind CodeSymbolKind::tagFormField{78};
inline constexpr CodeSymbolKind CodeSymbolKind::tagFramework{79};

/// Writes the description.
std::ostream& operator<<(std::ostream& stream, CodeSymbolKind kind);

} // namespace velmar

template <>
struct std::hash<velmar::CodeSymbolKind> {
  std::size_t operator()(velmar::CodeSymbolKind kind) const noexcept {
    return std::hash<std::int64_t>()(kind.rawValue);
  }
};
