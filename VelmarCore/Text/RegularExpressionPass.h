// Keeps runaway patterns from stalling one pass over a document: highlighting it, listing its
// symbols.
//
// A single search never takes longer than half a second, but a pattern from a query file may be
// tried at ten thousand nodes. Whoever makes such a pass has one of these for its length and hands
// it to every search:
//
//     RegularExpressionPass pass;
//     for (const Node& node : nodes)
//       if (expression.hasMatchIn(textOf(node), &pass)) …
//     for (const std::string& pattern : pass.patternsOff()) …   // tell the author of the query
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace velmar {

class CompiledPattern;
class RegularExpression;

/// Which patterns used up their time during one pass. A pattern that is off matches nothing until
/// the pass is over.
///
/// One owner at a time.
class RegularExpressionPass {
public:
  struct Limits {
    /// What one search may take. Behind that there is no match, and the pattern is off.
    std::chrono::nanoseconds perSearch = std::chrono::milliseconds(500);
    /// What all slow searches of one pattern may take together before it is off. Searches are slow
    /// from some ten thousand steps of the engine on, or in texts of some thousand units; the many
    /// quick ones aren't counted.
    std::chrono::nanoseconds perPattern = std::chrono::seconds(2);
  };

  RegularExpressionPass() = default;
  explicit RegularExpressionPass(Limits limits) : limits_(limits) {}

  [[nodiscard]] const Limits& limits() const noexcept { return limits_; }
  /// Whether `expression` hit a limit in this pass: its answers since then mean nothing. Copies of
  /// an expression count as one.
  [[nodiscard]] bool isOff(const RegularExpression& expression) const noexcept;
  /// The text of each pattern that is off.
  [[nodiscard]] std::vector<std::string> patternsOff() const;

private:
  friend class RegularExpression;

  struct Account {
    std::shared_ptr<const CompiledPattern> pattern;
    std::chrono::nanoseconds time{0};
    bool isOff = false;
  };

  [[nodiscard]] bool isPatternOff(const CompiledPattern* pattern) const noexcept {
    for (const Account& account : accounts_)
      if (account.pattern.get() == pattern)
        return account.isOff;
    return false;
  }
  void charge(const std::shared_ptr<const CompiledPattern>& pattern, std::chrono::nanoseconds time,
              bool wasStopped);

  Limits limits_;
  /// One for each pattern that was ever slow: nearly always none.
  std::vector<Account> accounts_;
};

} // namespace velmar
