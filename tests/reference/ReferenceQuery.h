// Queries evaluated the plain way: the runtime's matches, and predicates read anew for each match.
//
// Part of the reference that the engine is checked against. It shares the runtime's trees, the text
// and the regular expression engine with what it checks, and no other code. It may be slow; it may
// not be clever.
#pragma once

#include "VelmarCore/Text/RegularExpression.h"

#include <tree_sitter/api.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velmar::reference {

/// Half-open, in UTF-16 code units.
using Span = std::pair<std::int64_t, std::int64_t>;

/// The text of a document.
using Text = std::u16string;

struct Capture {
  std::string name;
  TSNode node;
  Span range;
};

struct Match {
  std::uint32_t pattern = 0;
  std::vector<Capture> captures;
  /// What `set!` and its kin wrote about the match; an absent text for a key without a value.
  std::map<std::string, std::optional<std::string>> properties;
};

class Query {
public:
  /// Null if the text doesn't compile.
  static std::shared_ptr<Query> compiled(const std::string& text, const TSLanguage* language);

  /// All matches in a tree that pass their predicates, in the runtime's order. `enabled` says which
  /// captures the runtime is to report at all; it must be the same at each call.
  std::vector<Match> matches(TSNode root, const Text& text,
                             const std::function<bool(const std::string&)>& enabled = nullptr);

private:
  struct Argument {
    bool isCapture = false;
    std::string text; // a capture's name, or the string
  };
  struct Predicate {
    std::string name;
    std::vector<Argument> arguments;
  };

  explicit Query(TSQuery* base) : base_(base, &ts_query_delete) {}

  bool passes(const Predicate& predicate, const Match& match, const Text& text);
  bool passesFilter(const std::string& family, const std::vector<Argument>& arguments, TSNode node,
                    const Match& match, const Text& text);
  void set(const Predicate& predicate, Match& match,
           std::map<std::string, std::optional<std::string>>& onCaptures, const Text& text);
  bool someTextPasses(const std::vector<Argument>& arguments, std::size_t from, std::size_t to,
                      const Match& match, const Text& text,
                      const std::function<bool(const Text&)>& test);
  bool hasMatch(const std::string& pattern, const Text& text);

  std::unique_ptr<TSQuery, decltype(&ts_query_delete)> base_;
  std::vector<std::vector<Predicate>> predicates_; // by pattern
  std::map<std::string, RegularExpression> expressions_;
  bool capturesChosen_ = false;
};

/// The text between the bounds of a node.
Text textOf(TSNode node, const Text& text);
Span rangeOf(TSNode node);

} // namespace velmar::reference
