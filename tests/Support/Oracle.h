// A document that is checked against the reference after every edit.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "tests/reference/ReferenceDocument.h"

#include <cstdint>
#include <ostream>
#include <random>
#include <string>

namespace velmar::testing {

/// What was compared, and how often the states were such that a comparison with a fresh parse means
/// nothing.
struct OracleCounts {
  std::int64_t edits = 0;
  std::int64_t layers = 0;
  std::int64_t freshParses = 0;
  /// Fresh parses in which a layer's tree differed from the incremental one, as the runtime allows
  /// itself.
  std::int64_t otherTrees = 0;
  /// States in which the line table or the text can't be had by loading: a CR and an LF that stay
  /// apart, a lone surrogate.
  std::int64_t notLoadable = 0;
};
std::ostream& operator<<(std::ostream& stream, const OracleCounts& counts);

/// Makes each edit in a document and in the reference, and throws where they differ.
class CheckedParse {
public:
  /// A fresh parse is compared after each `freshEvery` edits; never for 0.
  explicit CheckedParse(ParseConfiguration configuration, std::int64_t freshEvery = 0)
      : document_(configuration), reference_(document_), configuration_(std::move(configuration)),
        freshEvery_(freshEvery) {}

  void edit(TextRange range, const std::u16string& text);
  void compareWithFreshParse();

  [[nodiscard]] const Parse& document() const { return document_; }
  [[nodiscard]] const std::u16string& text() const { return reference_.text(); }
  [[nodiscard]] const OracleCounts& counts() const { return counts_; }

private:
  Parse document_;
  reference::Document reference_;
  ParseConfiguration configuration_;
  std::int64_t freshEvery_;
  OracleCounts counts_;
};

/// Where two documents of one text differ first, in words; empty if all their layers hold the same.
std::string documentDifference(const Parse& left, const Parse& right);

struct RandomEdit {
  TextRange range;
  std::u16string text;
};

/// What people do to a text: mostly small edits near one place, some of them with `inserts`, the
/// tokens that matter in its language; now and then a piece of the text itself moves, or a larger
/// part goes.
class RandomTyping {
public:
  RandomTyping(std::uint32_t seed, std::vector<std::u16string> inserts)
      : random_(seed), inserts_(std::move(inserts)) {}
  RandomEdit next(const std::u16string& text);

private:
  std::int64_t below(std::int64_t bound) {
    return std::uniform_int_distribution<std::int64_t>(0, bound - 1)(random_);
  }
  std::mt19937 random_;
  std::vector<std::u16string> inserts_;
  std::int64_t place_ = 0;
};

} // namespace velmar::testing
