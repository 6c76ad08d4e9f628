// The name by which everything refers to a language: grammars, parse configurations, language
// servers.
#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <utility>

namespace velmar {

/// The name of a language. Any text is one; the constants only name the languages that are
/// mentioned in this code. Compared and hashed by its text. The JSON form is the text.
struct LanguageID {
  using RawValue = std::string;
  std::string rawValue;

  constexpr LanguageID() = default;
  constexpr explicit LanguageID(std::string value) : rawValue(std::move(value)) {}

  auto operator<=>(const LanguageID&) const = default;

  static const LanguageID plainText;
  static const LanguageID c;
  static const LanguageID cmake;
  static const LanguageID cPlusPlus;
  static const LanguageID cSharp;
  static const LanguageID css;
  static const LanguageID diff;
  static const LanguageID html;
  static const LanguageID htmlEJS;
  static const LanguageID htmlERB;
  static const LanguageID htmlJinja;
  static const LanguageID ini;
  static const LanguageID javascript;
  static const LanguageID jinja;
  static const LanguageID jsdoc;
  static const LanguageID json;
  static const LanguageID less;
  static const LanguageID lua;
  static const LanguageID make;
  static const LanguageID markdown;
  static const LanguageID markdownInline;
  static const LanguageID modulemap;
  static const LanguageID objectiveC;
  static const LanguageID objectiveCPlusPlus;
  static const LanguageID perl;
  static const LanguageID php;
  static const LanguageID phpEmbedded;
  static const LanguageID pod;
  static const LanguageID python;
  static const LanguageID regex;
  static const LanguageID ruby;
  static const LanguageID rust;
  static const LanguageID sass;
  static const LanguageID scss;
  static const LanguageID shell;
  static const LanguageID sql;
  static const LanguageID swift;
  static const LanguageID toml;
  static const LanguageID tsx;
  static const LanguageID typescript;
  static const LanguageID tsq;
  static const LanguageID xml;
  static const LanguageID yaml;
};

// Made when the program starts: a constant of another file must not be made from one of these.
inline const LanguageID LanguageID::plainText{"plain-text"};
inline const LanguageID LanguageID::c{"c"};
inline const LanguageID LanguageID::cmake{"cmake"};
inline const LanguageID LanguageID::cPlusPlus{"cpp"};
inline const LanguageID LanguageID::cSharp{"csharp"};
inline const LanguageID LanguageID::css{"css"};
inline const LanguageID LanguageID::diff{"diff"};
inline const LanguageID LanguageID::html{"html"};
inline const LanguageID LanguageID::htmlEJS{"html+ejs"};
inline const LanguageID LanguageID::htmlERB{"html+erb"};
inline const LanguageID LanguageID::htmlJinja{"html+jinja"};
inline const LanguageID LanguageID::ini{"ini"};
inline const LanguageID LanguageID::javascript{"javascript"};
inline const LanguageID LanguageID::jinja{"jinja"};
inline const LanguageID LanguageID::jsdoc{"jsdoc"};
inline const LanguageID LanguageID::json{"json"};
inline const LanguageID LanguageID::less{"less"};
inline const LanguageID LanguageID::lua{"lua"};
inline const LanguageID LanguageID::make{"make"};
inline const LanguageID LanguageID::markdown{"markdown"};
inline const LanguageID LanguageID::markdownInline{"markdown_inline"};
inline const LanguageID LanguageID::modulemap{"modulemap"};
inline const LanguageID LanguageID::objectiveC{"objc"};
inline const LanguageID LanguageID::objectiveCPlusPlus{"objcpp"};
inline const LanguageID LanguageID::perl{"perl"};
inline const LanguageID LanguageID::php{"php"};
inline const LanguageID LanguageID::phpEmbedded{"php_embedded"};
inline const LanguageID LanguageID::pod{"pod"};
inline const LanguageID LanguageID::python{"python"};
inline const LanguageID LanguageID::regex{"regex"};
inline const LanguageID LanguageID::ruby{"ruby"};
inline const LanguageID LanguageID::rust{"rust"};
inline const LanguageID LanguageID::sass{"sass"};
inline const LanguageID LanguageID::scss{"scss"};
inline const LanguageID LanguageID::shell{"shell"};
inline const LanguageID LanguageID::sql{"sql"};
inline const LanguageID LanguageID::swift{"swift"};
inline const LanguageID LanguageID::toml{"toml"};
inline const LanguageID LanguageID::tsx{"tsx"};
inline const LanguageID LanguageID::typescript{"typescript"};
inline const LanguageID LanguageID::tsq{"tsq"};
inline const LanguageID LanguageID::xml{"xml"};
inline const LanguageID LanguageID::yaml{"yaml"};

/// Writes the raw value.
inline std::ostream& operator<<(std::ostream& stream, const LanguageID& language) {
  return stream << language.rawValue;
}

} // namespace velmar

template <>
struct std::hash<velmar::LanguageID> {
  std::size_t operator()(const velmar::LanguageID& language) const noexcept {
    return std::hash<std::string>()(language.rawValue);
  }
};
