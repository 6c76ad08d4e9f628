#include "VelmarParser/Structure/SymbolReader.h"

#include "VelmarCore/Text/TextTrimming.h"
#include "VelmarParser/Grammar/ParseError.h"
#include "VelmarParser/Structure/ScopingRegions.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <algorithm>

namespace velmar {

using namespace StructureAttributes;

namespace {

using Capture = SymbolCandidateCapture;

void setName(std::string name, TextRange range, ScopingCandidate& candidate) {
  if (candidate.groupByName)
    candidate.group = name;
  candidate.attributes.set<SymbolName>(std::move(name));
  candidate.attributes.set<SymbolNameRange>(range);
}

std::string joined(const std::vector<CaptureValue>& values, std::u16string_view separator) {
  std::u16string text;
  for (const CaptureValue& value : values) {
    if (&value != &values.front())
      text += separator;
    text += value.text;
  }
  return utf8RepairingUTF16(text);
}

/// From the first of the values to the last.
TextRange hullOf(const std::vector<CaptureValue>& values) {
  TextRange hull = values.front().range;
  for (const CaptureValue& value : values)
    hull = {std::min(hull.lowerBound, value.range.lowerBound),
            std::max(hull.upperBound, value.range.upperBound)};
  return hull;
}

} // namespace

/// The nodes that queries known by name are run on: the last one captured for each.
struct SymbolReader::Targets {
  explicit Targets(const QueryMatches::Element& match) {
    for (const auto capture : match.capturesNamed<Capture>()) {
      if (capture.name == Capture::nameTarget)
        name = capture.node();
      else if (capture.name == Capture::displayNameTarget)
        displayName = capture.node();
      else if (capture.name == Capture::argumentsTarget)
        arguments = capture.node();
    }
  }

  std::optional<ParseNode> name;
  std::optional<ParseNode> displayName;
  std::optional<ParseNode> arguments;
};

std::optional<ScopingCandidate>
SymbolReader::candidateFor(const QueryMatches::Element& match) const {
  auto candidate = scopingCandidateFor(match, context_.text, false);
  if (!candidate)
    return std::nullopt;
  const Targets targets(match);
  readKind(match, *candidate);
  readName(match, targets, *candidate);
  const auto* const arguments =
      match.metadata.keyedBy<SymbolMetadata>().valueFor(SymbolMetadata::argumentsQuery);
  if (arguments && targets.arguments)
    withQueryNamed(*arguments, [&](const std::shared_ptr<const Query>& query) {
      candidate->attributes.set<SymbolArguments>(argumentsIn(*targets.arguments, query));
    });
  readAutoclose(match, *candidate);
  return candidate;
}

void SymbolReader::readKind(const QueryMatches::Element& match, ScopingCandidate& candidate) const {
  const auto* const role = match.metadata.keyedBy<SymbolMetadata>().valueFor(SymbolMetadata::role);
  if (!role)
    return;
  if (const auto special = fromRawValue<SpecialSymbolKind>(role->text()))
    candidate.attributes.set<SymbolSpecialKind>(*special);
  else
    candidate.attributes.set<SymbolKind>(CodeSymbolKind::fromString(role->text()));
}

/// Names that the match captures come before those that a query works out.
void SymbolReader::readName(const QueryMatches::Element& match, const Targets& targets,
                            ScopingCandidate& candidate) const {
  static const std::set<Capture> names{Capture::name, Capture::displayName};
  const auto metadata = match.metadata.keyedBy<SymbolMetadata>();
  const auto captured = captureValues<Capture>(match.base, context_, names, CaptureTrimming::trim);

  const auto* const nameQuery = metadata.valueFor(SymbolMetadata::nameQuery);
  if (const auto name = captured.find(Capture::name); name != captured.end())
    setName(utf8RepairingUTF16(name->second.text), name->second.range, candidate);
  else if (nameQuery && targets.name)
    withQueryNamed(*nameQuery, [&](const std::shared_ptr<const Query>& query) {
      const auto values = evaluateResultBuilder(query, *targets.name, context_);
      if (std::string text = joined(values, u" "); !text.empty())
        setName(std::move(text), hullOf(values), candidate);
    });

  const auto* const displayNameQuery = metadata.valueFor(SymbolMetadata::displayNameQuery);
  if (const auto name = captured.find(Capture::displayName); name != captured.end())
    candidate.attributes.set<SymbolDisplayName>(utf8RepairingUTF16(name->second.text));
  else if (displayNameQuery && targets.displayName)
    withQueryNamed(*displayNameQuery, [&](const std::shared_ptr<const Query>& query) {
      const std::string text =
          joined(evaluateResultBuilder(query, *targets.displayName, context_), {});
      if (const std::string_view shown = trimmed(text); !shown.empty())
        candidate.attributes.set<SymbolDisplayName>(std::string(shown));
    });
}

void SymbolReader::readAutoclose(const QueryMatches::Element& match,
                                 ScopingCandidate& candidate) const {
  const auto metadata = match.metadata.keyedBy<SymbolMetadata>();
  const auto* const expression = metadata.valueFor(SymbolMetadata::autocloseExpression);
  const auto* const completion = metadata.valueFor(SymbolMetadata::autocloseCompletion);
  if (expression && completion)
    candidate.attributes.set<SymbolAutoclose>(
        {.expression = expression->text(), .completion = completion->text()});
}

std::vector<CodeSymbol::Argument>
SymbolReader::argumentsIn(ParseNode node, const std::shared_ptr<const Query>& query) const {
  // From the root it would take as long as there are nodes in front of this one. A pattern may name
  // what the arguments belong to, which is one step up.
  const auto regions = scopingRegionsIn(
      node.parent().value_or(node), node.utf16Range(), context_.text, query,
      [&](ScopingCandidate& candidate, const QueryMatches::Element& match) {
        auto values = captureValues<SymbolArgumentCapture>(match.base, context_, std::nullopt,
                                                           CaptureTrimming::trim);
        if (const auto name = values.find(SymbolArgumentCapture::name); name != values.end())
          setName(utf8RepairingUTF16(name->second.text), name->second.range, candidate);
        if (const auto type = values.find(SymbolArgumentCapture::type); type != values.end())
          candidate.attributes.set<SymbolTypeString>(utf8RepairingUTF16(type->second.text));
      },
      context_.pass);
  std::vector<CodeSymbol::Argument> arguments;
  for (const ScopingRegion& region : regions) {
    const auto* const name = region.attributes.valueFor<SymbolName>();
    const auto* const nameRange = region.attributes.valueFor<SymbolNameRange>();
    const auto* const type = region.attributes.valueFor<SymbolTypeString>();
    if (name && nameRange)
      arguments.push_back({.range = region.range,
                           .name = *name,
                           .nameRange = *nameRange,
                           .typeName = type ? std::optional(*type) : std::nullopt});
  }
  return arguments;
}

/// Runs `operation` with the query of that name, if it can be had.
template <class Operation>
void SymbolReader::withQueryNamed(const QueryPropertyValue& name, Operation&& operation) const {
  const ParseConfiguration& configuration = layer_.configuration();
  const auto query = layer_.parse().withErrorHandling(
      [&] { return std::string_view(name.text()); }, configuration,
      [&] {
        auto found = configuration.queryNamed(name.text());
        if (!found)
          throw ParseError("Could not find a query named “" + name.text() + "” for the language “" +
                           configuration.id().rawValue + "”.");
        return found;
      });
  if (query)
    operation(query);
}

} // namespace velmar
