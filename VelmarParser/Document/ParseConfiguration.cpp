#include "VelmarParser/Document/ParseConfiguration.h"

#include "VelmarPlatform/Basics/LockedState.h"
#include "VelmarPlatform/Basics/Result.h"

#include <exception>
#include <map>
#include <string>

namespace velmar {

namespace {

using QueryPtr = std::shared_ptr<const Query>;
using QuerySetPtr = std::shared_ptr<const QuerySet<ParseStructureKey>>;

/// What a cache keeps: a value, perhaps null for "there is none", or the failure.
template <class Value>
using Cached = Result<Value, std::exception_ptr>;

/// The entry's value, made by `make` if the entry is still empty; throws its failure.
template <class Value, class Make>
Value filled(std::optional<Cached<Value>>& entry, Make&& make) {
  if (!entry) {
    try {
      entry.emplace(make());
    } catch (...) { // The failure is the entry's content, whatever the application threw.
      entry.emplace(Failure(std::current_exception()));
    }
  }
  if (!entry->hasValue())
    std::rethrow_exception(entry->error());
  return entry->value();
}

template <class Key, class Value>
using CacheByKey = LockedState<std::map<Key, std::optional<Cached<Value>>, std::less<>>>;

template <class Value>
using SingleCache = LockedState<std::optional<Cached<Value>>>;

bool givesLexicalClass(const Query& query, std::int64_t captureID) {
  const auto& selector = query.captureSelectors()[static_cast<std::size_t>(captureID)];
  return selector && selector->lexicalClass();
}

/// What a highlights query finds of keywords, strings, expressions and comments, in a query that
/// finds nothing else: the patterns for these, and in them the captures.
QueryPtr lexicalClassesIn(const Query& highlights) {
  const auto captureCount = static_cast<std::int64_t>(highlights.captureNames().size());
  std::string text;
  for (const Query::Pattern pattern : highlights.patterns()) {
    for (std::int64_t id = 0; id < captureCount; ++id) {
      if (givesLexicalClass(highlights, id) && highlights.patternCaptures(pattern.index(), id)) {
        const auto [start, end] = pattern.byteRange();
        text.append(highlights.text(), static_cast<std::size_t>(start),
                    static_cast<std::size_t>(end - start));
        text += '\n';
        break;
      }
    }
  }
  auto query = std::make_shared<Query>(text, highlights.grammar());
  for (std::int64_t id = 0; id < static_cast<std::int64_t>(query->captureNames().size()); ++id) {
    if (!givesLexicalClass(*query, id))
      query->disableCaptureAt(id);
  }
  return query;
}

} // namespace

struct ParseConfiguration::Shared {
  Shared(LanguageID languageID, std::shared_ptr<const Grammar> languageGrammar,
         LanguageSyntax languageSyntax,
         std::shared_ptr<ParseConfigurationResolving> applicationResolver, std::any resolverContext)
      : id(std::move(languageID)), grammar(std::move(languageGrammar)),
        syntax(std::move(languageSyntax)), resolver(std::move(applicationResolver)),
        context(std::move(resolverContext)) {}

  LanguageID id;
  std::shared_ptr<const Grammar> grammar;
  LanguageSyntax syntax;
  std::shared_ptr<ParseConfigurationResolving> resolver;
  std::any context;

  CacheByKey<ParseQueryCategory, QueryPtr> categoryQueries;
  CacheByKey<std::string, QueryPtr> namedQueries;
  CacheByKey<std::string, QueryPtr> anonymousQueries;
  SingleCache<QueryPtr> lexicalClassesQuery;
  SingleCache<QuerySetPtr> structureQuerySet;

  [[nodiscard]] QueryPtr compile(const std::optional<std::string>& text) const {
    return text ? std::make_shared<const Query>(*text, grammar) : nullptr;
  }
};

ParseConfiguration::ParseConfiguration(LanguageID id, std::shared_ptr<const Grammar> grammar,
                                       LanguageSyntax syntax,
                                       std::shared_ptr<ParseConfigurationResolving> resolver,
                                       std::any context)
    : shared_(std::make_shared<const Shared>(std::move(id), std::move(grammar), std::move(syntax),
                                             std::move(resolver), std::move(context))) {}

const LanguageID& ParseConfiguration::id() const noexcept {
  return shared_->id;
}
const std::shared_ptr<const Grammar>& ParseConfiguration::grammar() const noexcept {
  return shared_->grammar;
}
const LanguageSyntax& ParseConfiguration::syntax() const noexcept {
  return shared_->syntax;
}
const std::shared_ptr<ParseConfigurationResolving>& ParseConfiguration::resolver() const noexcept {
  return shared_->resolver;
}
const std::any& ParseConfiguration::context() const noexcept {
  return shared_->context;
}

std::optional<ParseConfiguration>
ParseConfiguration::injectionConfigurationMatching(std::string_view languageName) const {
  return shared_->resolver->configurationMatching(languageName, *this);
}

QueryPtr ParseConfiguration::queryFor(ParseQueryCategory category) const {
  return shared_->categoryQueries.withLock([&](auto& cache) {
    return filled(cache[category], [&] {
      return shared_->compile(shared_->resolver->queryTextFor(category, *this));
    });
  });
}

QueryPtr ParseConfiguration::queryNamed(std::string_view name) const {
  return shared_->namedQueries.withLock([&](auto& cache) {
    return filled(cache[std::string(name)],
                  [&] { return shared_->compile(shared_->resolver->queryTextNamed(name, *this)); });
  });
}

QueryPtr ParseConfiguration::anonymousQueryFor(std::string_view text) const {
  return shared_->anonymousQueries.withLock([&](auto& cache) {
    return filled(cache[std::string(text)], [&] { return shared_->compile(std::string(text)); });
  });
}

QueryPtr ParseConfiguration::lexicalClassesQuery() const {
  return shared_->lexicalClassesQuery.withLock([&](auto& entry) {
    return filled(entry, [&]() -> QueryPtr {
      const auto text = shared_->resolver->queryTextFor(ParseQueryCategory::highlights, *this);
      if (!text)
        return nullptr;
      // Compiling is the dear part, and most often the whole query is at hand or soon wanted.
      QueryPtr highlights = queryFor(ParseQueryCategory::highlights);
      if (!highlights || highlights->text() != *text)
        highlights = shared_->compile(text);
      return lexicalClassesIn(*highlights);
    });
  });
}

QuerySetPtr ParseConfiguration::structureQuerySet() const {
  return shared_->structureQuerySet.withLock([&](auto& entry) {
    return filled(entry, [&]() -> QuerySetPtr {
      std::map<ParseStructureKey, std::string> texts;
      const auto add = [&](ParseStructureKey key, ParseQueryCategory category) {
        try {
          if (auto text = shared_->resolver->queryTextFor(category, *this))
            texts.emplace(key, std::move(*text));
        } catch (...) { // One category's trouble doesn't stop the others.
        }
      };
      add(ParseStructureKey::folds, ParseQueryCategory::folds);
      add(ParseStructureKey::symbols, ParseQueryCategory::symbols);
      add(ParseStructureKey::locals, ParseQueryCategory::locals);
      return std::make_shared<const QuerySet<ParseStructureKey>>(texts, shared_->grammar);
    });
  });
}

} // namespace velmar
