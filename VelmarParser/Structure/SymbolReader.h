// Reads what the symbols query of a language says of one symbol: its kind, its names, its
// arguments.
#pragma once

#include "VelmarCode/Syntax/CodeSymbol.h"
#include "VelmarParser/Document/Parse.h"
#include "VelmarParser/Query/CaptureValues.h"
#include "VelmarParser/Structure/ScopingCandidate.h"
#include "VelmarParser/Structure/StructureKeys.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace velmar {

/// Reads the matches of one layer. Queries that a match refers to by name run on its nodes only;
/// one that can't be had reaches the document's error handler under its name, and what it was for
/// stays absent. One thread; the layer's document and `pass` must outlive it.
class SymbolReader {
public:
  SymbolReader(const Parse::Layer& layer, RegularExpressionPass& pass)
      : layer_(layer), context_{.text = layer.parse().text(), .pass = &pass} {}

  /// The match as a candidate with the attributes of a symbol; absent if it marks no stretch.
  [[nodiscard]] std::optional<ScopingCandidate>
  candidateFor(const QueryMatches::Element& match) const;

private:
  struct Targets;

  void readKind(const QueryMatches::Element& match, ScopingCandidate& candidate) const;
  void readName(const QueryMatches::Element& match, const Targets& targets,
                ScopingCandidate& candidate) const;
  void readAutoclose(const QueryMatches::Element& match, ScopingCandidate& candidate) const;
  [[nodiscard]] std::vector<CodeSymbol::Argument>
  argumentsIn(ParseNode node, const std::shared_ptr<const Query>& query) const;
  template <class Operation>
  void withQueryNamed(const QueryPropertyValue& name, Operation&& operation) const;

  const Parse::Layer& layer_;
  QueryContext context_;
};

} // namespace velmar
