// Languages for tests of documents: built-in grammars with query texts that the test writes.
#pragma once

#include "VelmarParser/Document/ParseConfiguration.h"

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmar::testing {

/// A resolver over a map from language to query texts. An injection names a language by its raw
/// value; a name or query text that is "!" makes the resolver throw. Lives
/// as long as the process, for it and its configurations refer to each other.
class TestLanguages : public ParseConfigurationResolving,
                      public std::enable_shared_from_this<TestLanguages> {
public:
  struct Language {
    Grammar::BuiltIn grammar;
    std::map<ParseQueryCategory, std::string> queries;
    std::map<std::string, std::string, std::less<>> named;
    LanguageSyntax syntax = {};
  };

  static std::shared_ptr<TestLanguages> of(std::map<std::string, Language, std::less<>> languages) {
    static auto* const all = new std::vector<std::shared_ptr<TestLanguages>>;
    all->push_back(std::make_shared<TestLanguages>());
    all->back()->languages_ = std::move(languages);
    return all->back();
  }

  /// Always the same configuration for the same language.
  ParseConfiguration configuration(std::string_view id) {
    if (const auto made = made_.find(id); made != made_.end())
      return made->second;
    const Language& language = languages_.at(std::string(id));
    ParseConfiguration made(LanguageID{std::string(id)}, Grammar::fromBuiltIn(language.grammar),
                            language.syntax, shared_from_this());
    return made_.emplace(id, std::move(made)).first->second;
  }

  std::optional<ParseConfiguration> configurationMatching(std::string_view name,
                                                          const ParseConfiguration&) override {
    if (name == "!")
      throw std::runtime_error("no such luck");
    if (!languages_.contains(name))
      return std::nullopt;
    return configuration(name);
  }
  std::optional<std::string> queryTextFor(ParseQueryCategory category,
                                          const ParseConfiguration& asking) override {
    const Language& language = languages_.at(asking.id().rawValue);
    const auto text = language.queries.find(category);
    return text == language.queries.end() ? std::nullopt : checked(text->second);
  }
  std::optional<std::string> queryTextNamed(std::string_view name,
                                            const ParseConfiguration& asking) override {
    const Language& language = languages_.at(asking.id().rawValue);
    const auto text = language.named.find(name);
    return text == language.named.end() ? std::nullopt : checked(text->second);
  }

private:
  static std::optional<std::string> checked(const std::string& text) {
    if (text == "!")
      throw std::runtime_error("no such luck");
    return text;
  }

  std::map<std::string, Language, std::less<>> languages_;
  std::map<std::string, ParseConfiguration, std::less<>> made_;
};

/// One language without any queries.
inline ParseConfiguration plainLanguage(Grammar::BuiltIn grammar) {
  const std::string id(Grammar::rawValueOf(grammar));
  return TestLanguages::of({{id, {.grammar = grammar, .queries = {}, .named = {}}}})
      ->configuration(id);
}

} // namespace velmar::testing
