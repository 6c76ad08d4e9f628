// Carries out the predicates of a pattern for one match after the other.
#pragma once

#include "VelmarCore/Text/RegularExpressionPass.h"
#include "VelmarCore/Text/UTF16LineArray.h"
#include "VelmarParser/Query/NodeAncestry.h"
#include "VelmarParser/Query/NodeText.h"
#include "VelmarParser/Query/QueryMatch.h"
#include "VelmarParser/Query/QueryMatchMetadata.h"
#include "VelmarParser/Query/QueryPredicates.h"

#include <concepts>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace velmar {

/// Hides nodes from predicates: where it says no to a node under a capture's name, they behave as
/// if the capture didn't have that node. Borrows the callable; without one, every node is accepted,
/// at the price of one comparison.
class QueryNodePredicate {
public:
  QueryNodePredicate() = default;
  template <class Function>
    requires(!std::same_as<std::remove_cvref_t<Function>, QueryNodePredicate> &&
             std::predicate<Function&, std::string_view, ParseNode>)
  QueryNodePredicate(
      Function& function) noexcept // NOLINT(google-explicit-constructor): stands for the callable
      : object_(const_cast<void*>(static_cast<const void*>(&function))),
        call_([](void* object, std::string_view captureName, ParseNode node) -> bool {
          return (*static_cast<Function*>(object))(captureName, node);
        }) {}

  [[nodiscard]] bool accepts(std::string_view captureName, ParseNode node) const {
    return !call_ || call_(object_, captureName, node);
  }

private:
  void* object_ = nullptr;
  bool (*call_)(void*, std::string_view, ParseNode) = nullptr;
};

/// What evaluation reads besides the match. Borrowed.
struct QueryContext {
  const DocumentText& text;
  /// What searches for regular expressions are charged to. A pattern that used up its time matches
  /// nothing from then on.
  RegularExpressionPass* pass = nullptr;
};

/// Evaluates predicates over the trees of one text, which must not be edited meanwhile. Make one
/// for a whole walk: it keeps buffers, so that evaluating allocates nothing in the long run. One
/// thread.
///
/// Texts are equal if their code units are. Nothing here fails: a match of another query than the
/// predicates' is the only misuse, and harmless.
class PredicateEvaluator {
public:
  explicit PredicateEvaluator(QueryContext context) : text_(&context.text), pass_(context.pass) {}

  /// Whether every filter holds; tested in order up to the first that doesn't.
  [[nodiscard]] bool satisfies(std::span<const QueryPredicates::Filter> filters,
                               const Query::Match& match, QueryNodePredicate nodePredicate = {});
  /// Whether one filter holds.
  [[nodiscard]] bool evaluate(const QueryPredicates::Filter& filter, const Query::Match& match,
                              QueryNodePredicate nodePredicate = {});
  /// Lets the setters write into `metadata`, in order: the last to write a key wins.
  void perform(std::span<const QueryPredicates::PropertySet> setters, const Query::Match& match,
               QueryMatchMetadata& metadata, QueryNodePredicate nodePredicate = {});
  /// Whether every test of a property holds.
  [[nodiscard]] static bool satisfies(std::span<const QueryPredicates::Property> properties,
                                      const QueryMatchMetadata& metadata);

private:
  class Pass;

  const DocumentText* text_;
  RegularExpressionPass* pass_;
  std::u16string nodeScratch_;
  std::u16string otherScratch_;
  NodeAncestry ancestry_;
};

} // namespace velmar
