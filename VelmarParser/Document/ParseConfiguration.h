// A language as documents use it: its grammar, its few fixed facts, and its queries, compiled once.
#pragma once

#include "VelmarCode/Language/LanguageID.h"
#include "VelmarCode/Language/LanguageSyntax.h"
#include "VelmarParser/Document/ParseConfigurationResolving.h"
#include "VelmarParser/Grammar/Grammar.h"
#include "VelmarParser/Query/ParseQueryCategory.h"
#include "VelmarParser/Query/Query.h"
#include "VelmarParser/Query/QuerySet.h"

#include <any>
#include <memory>
#include <optional>
#include <string_view>

namespace velmar {

/// A value whose copies share everything, the compiled queries too. Any thread.
///
/// A query is compiled when it is first asked for. A failure is kept like a result: later requests
/// throw the same error. To pick up a changed query text, make a new configuration. Each of the
/// five caches has a lock of its own, which is held while it is filled, the resolver's call
/// included.
class ParseConfiguration {
public:
  /// `context` is the resolver's own: the engine only hands it back.
  ParseConfiguration(LanguageID id, std::shared_ptr<const Grammar> grammar, LanguageSyntax syntax,
                     std::shared_ptr<ParseConfigurationResolving> resolver, std::any context = {});

  /// Tells languages apart.
  [[nodiscard]] const LanguageID& id() const noexcept;
  [[nodiscard]] const std::shared_ptr<const Grammar>& grammar() const noexcept;
  [[nodiscard]] const LanguageSyntax& syntax() const noexcept;
  [[nodiscard]] const std::shared_ptr<ParseConfigurationResolving>& resolver() const noexcept;
  [[nodiscard]] const std::any& context() const noexcept;

  /// What the resolver knows by that name. Throws what the resolver throws.
  [[nodiscard]] std::optional<ParseConfiguration>
  injectionConfigurationMatching(std::string_view languageName) const;

  /// The language's query of a category; null if it has none. Throws what the resolver throws,
  /// QueryError or QueryPredicateError, and so do the next four.
  [[nodiscard]] std::shared_ptr<const Query> queryFor(ParseQueryCategory category) const;
  /// The query that the resolver knows by that name; null if it has none.
  [[nodiscard]] std::shared_ptr<const Query> queryNamed(std::string_view name) const;
  /// The query with that text. Never null.
  [[nodiscard]] std::shared_ptr<const Query> anonymousQueryFor(std::string_view text) const;
  /// The highlights query, with only those captures enabled that give a lexical class; null if
  /// there is none.
  [[nodiscard]] std::shared_ptr<const Query> lexicalClassesQuery() const;
  /// Folds, symbols and locals compiled as one. A category whose text is absent, or can't be had,
  /// is left out.
  [[nodiscard]] std::shared_ptr<const QuerySet<ParseStructureKey>> structureQuerySet() const;

private:
  struct Shared;
  std::shared_ptr<const Shared> shared_;
};

} // namespace velmar
