#include "VelmarParser/Query/PredicateEvaluation.h"

#include "VelmarPlatform/Basics/Overloaded.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace velmar {

namespace {

using QueryPredicates::Filter;
using QueryPredicates::Property;
using QueryPredicates::PropertySet;

bool isAmong(const Filter::Names& names, std::optional<std::string_view> name) {
  return name && std::ranges::binary_search(
                     names, *name, {}, [](const auto& each) { return std::string_view(each); });
}

/// How two texts are compared. Each looks at the lengths first, which are known without the texts.
struct Equality {
  bool operator()(LazyNodeText& text, std::u16string_view other) const {
    return text.length() == other.size() && text.units() == other;
  }
  bool operator()(LazyNodeText& text, LazyNodeText& other) const {
    return text.length() == other.length() && text.units() == other.units();
  }
};
struct Containment {
  bool operator()(LazyNodeText& text, std::u16string_view other) const {
    return text.length() >= other.size() && text.units().find(other) != std::u16string_view::npos;
  }
  bool operator()(LazyNodeText& text, LazyNodeText& other) const {
    return text.length() >= other.length() &&
           text.units().find(other.units()) != std::u16string_view::npos;
  }
};

} // namespace

/// The evaluation of one predicate at one match.
class PredicateEvaluator::Pass {
public:
  Pass(PredicateEvaluator& evaluator, const Query::Match& match, QueryNodePredicate nodePredicate)
      : evaluator_(evaluator), match_(match), nodePredicate_(nodePredicate) {}

  /// Whether all accepted nodes of `capture` pass, or one where that is enough.
  template <class Test>
  bool quantified(const QueryPredicateCapture& capture, bool isAny, bool isNegated, Test&& test) {
    for (const ParseNode node : match_.nodesFor(capture)) {
      if (nodePredicate_.accepts(capture.name, node) && (test(node) != isNegated) == isAny)
        return isAny;
    }
    return !isAny;
  }

  bool holds(const Filter& filter) {
    return std::visit(
        [&](const auto& test) {
          return quantified(filter.capture, filter.isQuantifiedAny, filter.isNegated,
                            [&](ParseNode node) { return passes(node, test); });
        },
        filter.test);
  }

  void perform(const PropertySet& setter, QueryMatchMetadata& metadata) {
    const auto captureID = setter.capture ? std::optional(setter.capture->valueID) : std::nullopt;
    std::visit(
        Overloaded{
            [&](const PropertySet::Set& set) { metadata.set(captureID, setter.key, set.value); },
            [&](const PropertySet::SetByCaseIfEquals& set) {
              performCases(set, setter, captureID, metadata);
            },
            [&](const PropertySet::SetByCaseIfMatches& set) {
              performCases(set, setter, captureID, metadata);
            },
            [&](const auto& set) {
              if (isConditionMet(set))
                metadata.set(captureID, setter.key, set.value);
            },
        },
        setter.action);
  }

private:
  bool passes(ParseNode node, const Filter::Equals& test) {
    return textPasses(node, test.arguments, Equality());
  }
  bool passes(ParseNode node, const Filter::Contains& test) {
    return textPasses(node, test.arguments, Containment());
  }
  bool passes(ParseNode node, const Filter::Matches& test) { return textMatches(node, test.regex); }
  bool passes(ParseNode node, const Filter::HasType& test) {
    return isAmong(test.names, node.type());
  }
  bool passes(ParseNode node, const Filter::HasParent& test) {
    const auto parent = evaluator_.ancestry_.parentOf(node);
    return parent && isAmong(test.names, parent->type());
  }
  bool passes(ParseNode node, const Filter::HasAncestor& test) {
    const auto way = evaluator_.ancestry_.wayTo(node);
    return std::ranges::any_of(
        way.first(way.empty() ? 0 : way.size() - 1),
        [&](const NodeAncestry::Step& step) { return isAmong(test.names, step.node.type()); });
  }
  bool passes(ParseNode node, const Filter::HasParentField& test) {
    const auto way = evaluator_.ancestry_.wayTo(node);
    return !way.empty() && isAmong(test.names, fieldNameOf(way.back()));
  }
  bool passes(ParseNode node, const Filter::HasAncestorField& test) {
    return std::ranges::any_of(
        evaluator_.ancestry_.wayTo(node),
        [&](const NodeAncestry::Step& step) { return isAmong(test.names, fieldNameOf(step)); });
  }
  bool passes(ParseNode node, const Filter::IsNthChild& test) {
    const auto parent = evaluator_.ancestry_.parentOf(node);
    return parent && namedChildAt(*parent, test.index) == node;
  }

  bool isConditionMet(const PropertySet::SetIfEquals& set) {
    return isConditionMet(
        set, [&](ParseNode node) { return textPasses(node, {&set.argument, 1}, Equality()); });
  }
  bool isConditionMet(const PropertySet::SetIfContains& set) {
    return isConditionMet(
        set, [&](ParseNode node) { return textPasses(node, {&set.argument, 1}, Containment()); });
  }
  bool isConditionMet(const PropertySet::SetIfMatches& set) {
    return isConditionMet(set, [&](ParseNode node) { return textMatches(node, set.regex); });
  }
  /// Like a filter, but a capture that matched nothing meets only a negated condition.
  template <class Set, class Test>
  bool isConditionMet(const Set& set, Test&& test) {
    if (!set.isQuantifiedAny && match_.nodesFor(set.compareCapture).isEmpty())
      return set.isNegated;
    return quantified(set.compareCapture, set.isQuantifiedAny, set.isNegated, test);
  }

  template <class Set>
  void performCases(const Set& set, const PropertySet& setter,
                    std::optional<std::int64_t> captureID, QueryMatchMetadata& metadata) {
    if (const auto node = lastAcceptedNode(set.compareCapture)) {
      for (const auto& [compared, value] : set.cases) {
        if (casePasses(*node, compared))
          return metadata.setText(captureID, setter.key, value);
      }
    }
    if (set.defaultValue)
      metadata.setText(captureID, setter.key, *set.defaultValue);
  }
  bool casePasses(ParseNode node, const QueryPredicateArgument& argument) {
    return textPasses(node, {&argument, 1}, Equality());
  }
  bool casePasses(ParseNode node, const RegularExpression& regex) {
    return textMatches(node, regex);
  }

  std::optional<ParseNode> lastAcceptedNode(const QueryPredicateCapture& capture) const {
    const auto nodes = match_.nodesFor(capture);
    for (auto node = nodes.end(); node != nodes.begin();) {
      if (nodePredicate_.accepts(capture.name, *--node))
        return *node;
    }
    return std::nullopt;
  }

  bool textMatches(ParseNode node, const RegularExpression& regex) {
    return regex.hasMatchIn(textOfNode(node, *evaluator_.text_, evaluator_.nodeScratch_),
                            evaluator_.pass_);
  }

  /// Whether the node's text compares with one of the arguments.
  template <class Compare>
  bool textPasses(ParseNode node, std::span<const QueryPredicateArgument> arguments,
                  Compare compare) {
    LazyNodeText text(node, *evaluator_.text_, evaluator_.nodeScratch_);
    for (const QueryPredicateArgument& argument : arguments) {
      if (const auto* const string = std::get_if<QueryPredicateString>(&argument)) {
        if (compare(text, string->units))
          return true;
      } else if (comparesWithCapture(text, std::get<QueryPredicateCapture>(argument), compare)) {
        return true;
      }
    }
    return false;
  }
  template <class Compare>
  bool comparesWithCapture(LazyNodeText& text, const QueryPredicateCapture& capture,
                           Compare compare) {
    for (const ParseNode node : match_.nodesFor(capture)) {
      if (!nodePredicate_.accepts(capture.name, node))
        continue;
      LazyNodeText other(node, *evaluator_.text_, evaluator_.otherScratch_);
      if (compare(text, other))
        return true;
    }
    return false;
  }

  PredicateEvaluator& evaluator_;
  const Query::Match& match_;
  QueryNodePredicate nodePredicate_;
};

bool PredicateEvaluator::satisfies(std::span<const Filter> filters, const Query::Match& match,
                                   QueryNodePredicate nodePredicate) {
  Pass pass(*this, match, nodePredicate);
  return std::ranges::all_of(filters, [&](const Filter& filter) { return pass.holds(filter); });
}

bool PredicateEvaluator::evaluate(const Filter& filter, const Query::Match& match,
                                  QueryNodePredicate nodePredicate) {
  return Pass(*this, match, nodePredicate).holds(filter);
}

void PredicateEvaluator::perform(std::span<const PropertySet> setters, const Query::Match& match,
                                 QueryMatchMetadata& metadata, QueryNodePredicate nodePredicate) {
  Pass pass(*this, match, nodePredicate);
  for (const PropertySet& setter : setters)
    pass.perform(setter, metadata);
}

bool PredicateEvaluator::satisfies(std::span<const Property> properties,
                                   const QueryMatchMetadata& metadata) {
  return std::ranges::all_of(properties, [&](const Property& property) {
    const QueryPropertyValue* const stored = metadata.valueFor(property.capture, property.key);
    if (!stored)
      return property.isNegated;
    if (!property.value.string())
      return !property.isNegated;
    // A key that is set without a value is neither equal to a text nor different from it.
    return stored->string() && (*stored == property.value) != property.isNegated;
  });
}

} // namespace velmar
