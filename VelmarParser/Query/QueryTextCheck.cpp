#include "VelmarParser/Query/QueryTextCheck.h"

#include "VelmarPlatform/Unicode/UTF.h"

#include <cstddef>
#include <cwctype>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velmar {

namespace {

constexpr std::size_t none = SIZE_MAX;
/// The compiler numbers its steps, captures and strings with 16 bits, and one value means none.
constexpr std::size_t largestCount = 60'000;

/// One step of the compiler's state machine, as far as its jumps go.
struct Step {
  std::size_t depth = 0;
  bool isWildcard = false;
  bool isImmediate = false;
  bool hasField = false;
  /// Goes on to the next step without looking at a node.
  bool isPassThrough = false;
  /// Where else a match may go on from here, without looking at a node.
  std::size_t alternative = none;
};

/// The text, character by character, as the compiler reads it.
class QueryTextStream {
public:
  explicit QueryTextStream(std::string_view text) : text_(text) { read(); }

  [[nodiscard]] std::size_t offset() const { return offset_; }
  [[nodiscard]] bool isAtEnd() const { return offset_ >= text_.size(); }
  /// The next character; 0 at the end.
  [[nodiscard]] char32_t next() const { return next_; }
  [[nodiscard]] std::string_view textFrom(std::size_t start) const {
    return text_.substr(start, offset_ - start);
  }

  void advance() {
    offset_ += length_;
    read();
  }
  bool skip(char32_t character) {
    if (next_ != character || isAtEnd())
      return false;
    advance();
    return true;
  }
  void skipBlanks() {
    while (std::iswspace(static_cast<std::wint_t>(next_)) || next_ == U';') {
      if (next_ == U';') {
        while (next_ != 0 && next_ != U'\n')
          advance();
      } else {
        advance();
      }
    }
  }
  [[nodiscard]] bool isAtName() const {
    return std::iswalnum(static_cast<std::wint_t>(next_)) || next_ == U'_' || next_ == U'-';
  }
  /// Reads a name; the stream must be at one.
  std::string_view name() {
    const std::size_t start = offset_;
    do
      advance();
    while (isAtName() || next_ == U'.' || next_ == U'?' || next_ == U'!');
    return textFrom(start);
  }
  /// Reads a string, without its quotes and escapes; absent if it isn't closed on its line.
  std::optional<std::string> string() {
    std::string content;
    bool isEscaped = false;
    advance();
    for (; !isAtEnd(); advance()) {
      if (isEscaped) {
        content += unescaped();
        isEscaped = false;
      } else if (next_ == U'\\') {
        isEscaped = true;
      } else if (next_ == U'"') {
        advance();
        return content;
      } else if (next_ == U'\n') {
        return std::nullopt;
      } else {
        content += text_.substr(offset_, length_);
      }
    }
    return std::nullopt;
  }

private:
  /// What a backslash in front of the next character makes of it.
  [[nodiscard]] std::string_view unescaped() const {
    switch (next_) {
    case U'n':
      return "\n";
    case U'r':
      return "\r";
    case U't':
      return "\t";
    case U'0':
      return std::string_view("\0", 1);
    default:
      return text_.substr(offset_, length_);
    }
  }

  void read() {
    next_ = 0;
    length_ = 0;
    if (isAtEnd())
      return;
    const DecodedScalar decoded = decodeUTF8(text_, offset_);
    length_ = decoded.length;
    next_ = decoded.valid ? decoded.scalar : char32_t{0xFFFD};
  }

  std::string_view text_;
  std::size_t offset_ = 0;
  std::size_t length_ = 0;
  char32_t next_ = 0;
};

/// Goes through the text in the compiler's own steps. Where the compiler would report an error,
/// this stops without one: up to there the text was harmless.
class QueryTextChecker {
public:
  QueryTextChecker(std::string_view text, const TSLanguage* language)
      : stream_(text), language_(language) {}

  QueryTextReport check() {
    stream_.skipBlanks();
    for (; !stream_.isAtEnd(); ++patternIndex_) {
      const std::size_t patternOffset = stream_.offset();
      const std::size_t firstStep = steps_.size();
      const Outcome outcome = pattern(0, false);
      steps_.push_back({.depth = none, .isWildcard = true});
      if (outcome == Outcome::unsafe || steps_.size() > largestCount || nameCount_ > largestCount ||
          rootsNeverEnd(firstStep) || canRepeatNothing(firstStep))
        report_.unsafeOffset = static_cast<std::int64_t>(patternOffset);
      if (outcome != Outcome::parsed || report_.unsafeOffset)
        break;
    }
    return report_;
  }

private:
  enum class Outcome {
    parsed,
    /// In place of a pattern stands the bracket that closes the list.
    listEnded,
    /// The compiler reports an error here.
    failed,
    unsafe,
  };

  Outcome pattern(std::size_t depth, bool isImmediate) {
    if (stream_.next() == U')' || stream_.next() == U']')
      return Outcome::listEnded;
    if (++nesting_ > largestQueryNesting)
      return Outcome::unsafe; // `nesting_` doesn't matter any more
    const std::size_t firstStep = steps_.size();
    bool isPredicate = false;
    Outcome outcome = patternWithoutSuffixes(depth, isImmediate, isPredicate);
    if (outcome == Outcome::parsed && !isPredicate) {
      stream_.skipBlanks();
      outcome = suffixes(firstStep, depth);
    }
    --nesting_;
    return outcome;
  }

  Outcome patternWithoutSuffixes(std::size_t depth, bool isImmediate, bool& isPredicate) {
    switch (stream_.next()) {
    case 0:
      return Outcome::failed;
    case U'[':
      return alternatives(depth, isImmediate);
    case U'(':
      stream_.advance();
      stream_.skipBlanks();
      if (stream_.next() == U'(' || stream_.next() == U'"' || stream_.next() == U'[')
        return group(depth, isImmediate);
      if (stream_.next() == U'.' || stream_.next() == U'#') {
        isPredicate = true;
        return predicate();
      }
      return node(depth, isImmediate);
    case U'_':
      stream_.advance();
      steps_.push_back({.depth = depth, .isWildcard = true, .isImmediate = isImmediate});
      noteRoot(depth, std::nullopt);
      return Outcome::parsed;
    case U'"': {
      const auto type = stream_.string();
      const TSSymbol symbol = type ? symbolOf(*type, false) : TSSymbol{0};
      if (symbol == 0)
        return Outcome::failed;
      steps_.push_back({.depth = depth, .isImmediate = isImmediate});
      noteRoot(depth, symbol);
      return Outcome::parsed;
    }
    default:
      return stream_.isAtName() ? field(depth, isImmediate) : Outcome::failed;
    }
  }

  Outcome alternatives(std::size_t depth, bool isImmediate) {
    stream_.advance();
    stream_.skipBlanks();
    std::vector<std::size_t> branches;
    while (true) {
      const std::size_t firstStep = steps_.size();
      const Outcome outcome = pattern(depth, isImmediate);
      if (outcome == Outcome::listEnded && stream_.next() == U']' && !branches.empty())
        break;
      if (outcome != Outcome::parsed)
        return outcome == Outcome::unsafe ? outcome : Outcome::failed;
      branches.push_back(firstStep);
      steps_.push_back({.depth = depth, .isWildcard = true});
    }
    stream_.advance();
    steps_.pop_back();
    for (std::size_t index = 0; index + 1 < branches.size(); ++index) {
      steps_[branches[index]].alternative = branches[index + 1];
      steps_[branches[index + 1] - 1].alternative = steps_.size();
    }
    return Outcome::parsed;
  }

  Outcome group(std::size_t depth, bool isImmediate) {
    while (true) {
      if (stream_.skip(U'.')) {
        isImmediate = true;
        stream_.skipBlanks();
      }
      const Outcome outcome = pattern(depth, isImmediate);
      if (outcome == Outcome::listEnded && stream_.skip(U')'))
        return Outcome::parsed;
      if (outcome != Outcome::parsed)
        return outcome == Outcome::unsafe ? outcome : Outcome::failed;
      isImmediate = false;
    }
  }

  Outcome predicate() {
    stream_.advance();
    if (!stream_.isAtName()) {
      if (stream_.next() == U'@' || stream_.next() == U')')
        report_.namelessPredicate = {patternIndex_, static_cast<std::int64_t>(stream_.offset())};
      return Outcome::failed;
    }
    stream_.name();
    ++nameCount_;
    while (true) {
      stream_.skipBlanks();
      if (stream_.skip(U')')) {
        stream_.skipBlanks();
        return Outcome::parsed;
      }
      ++nameCount_;
      if (stream_.skip(U'@')) {
        if (!stream_.isAtName() || !captureNames_.contains(stream_.name()))
          return Outcome::failed;
      } else if (stream_.isAtName()) {
        stream_.name();
      } else if (stream_.next() != U'"' || !stream_.string()) {
        return Outcome::failed;
      }
    }
  }

  Outcome node(std::size_t depth, bool isImmediate) {
    Step step{.depth = depth, .isImmediate = isImmediate};
    std::optional<TSSymbol> type;
    bool hasSupertype = false;
    if (!nodeName(step, type, hasSupertype))
      return Outcome::failed;
    steps_.push_back(step);
    noteRoot(depth, hasSupertype ? std::nullopt : type); // only its parent tells
    if (stream_.next() != U')')
      note(report_.nodeTypes.parents, type);
    return children(depth);
  }

  void noteRoot(std::size_t depth, std::optional<TSSymbol> type) {
    if (depth == 0)
      note(report_.nodeTypes.roots, type);
  }
  /// Absent where it may be any.
  static void note(NodeTypeSet& types, std::optional<TSSymbol> type) {
    type ? types.insert(*type) : types.insertAll();
  }

  /// Reads `name`, `_`, `MISSING …` or `supertype/subtype`; false where there is an error. Leaves
  /// `type` absent where it may be any.
  bool nodeName(Step& step, std::optional<TSSymbol>& type, bool& hasSupertype) {
    if (!stream_.isAtName())
      return false;
    const std::string_view name = stream_.name();
    std::optional<TSSymbol> symbol; // of a node type that has a name
    if (std::string_view("MISSING").starts_with(
            name)) { // to the compiler, the word's beginning is the word
      stream_.skipBlanks();
      if (stream_.isAtName()) {
        symbol = symbolOf(stream_.name(), true);
      } else if (stream_.next() == U'"') {
        if (const auto token = stream_.string(); !token || symbolOf(*token, false) == 0)
          return false;
      } else if (stream_.next() != U')') {
        return false;
      } else {
        step.isWildcard = true;
      }
    } else if (name == "_") {
      step.isWildcard = true;
    } else {
      symbol = symbolOf(name, true);
    }
    if (symbol == TSSymbol{0})
      return false;
    hasSupertype = symbol && ts_language_symbol_type(language_, *symbol) == TSSymbolTypeSupertype;
    step.isWildcard |= hasSupertype;
    stream_.skipBlanks();
    if (stream_.skip(U'/')) {
      symbol = hasSupertype && stream_.isAtName() ? symbolOf(stream_.name(), true) : TSSymbol{0};
      if (symbol == TSSymbol{0})
        return false;
      step.isWildcard = false;
      stream_.skipBlanks();
    }
    if (!step.isWildcard)
      type = symbol;
    return true;
  }

  [[nodiscard]] TSSymbol symbolOf(std::string_view type, bool isNamed) const {
    return ts_language_symbol_for_name(language_, type.data(),
                                       static_cast<std::uint32_t>(type.size()), isNamed);
  }
  [[nodiscard]] bool isField(std::string_view name) const {
    return ts_language_field_id_for_name(language_, name.data(),
                                         static_cast<std::uint32_t>(name.size())) != 0;
  }

  Outcome children(std::size_t depth) {
    while (true) {
      if (stream_.skip(U'!')) {
        stream_.skipBlanks();
        if (!stream_.isAtName() || !isField(stream_.name()))
          return Outcome::failed;
        stream_.skipBlanks();
        continue;
      }
      const bool isImmediate = stream_.skip(U'.');
      if (isImmediate)
        stream_.skipBlanks();
      const Outcome outcome = pattern(depth + 1, isImmediate);
      if (outcome == Outcome::listEnded && stream_.skip(U')'))
        return Outcome::parsed;
      if (outcome != Outcome::parsed)
        return outcome == Outcome::unsafe ? outcome : Outcome::failed;
    }
  }

  Outcome field(std::size_t depth, bool isImmediate) {
    const std::size_t offset = stream_.offset();
    const std::string_view name = stream_.name();
    stream_.skipBlanks();
    if (!stream_.skip(U':'))
      return Outcome::failed;
    stream_.skipBlanks();
    const std::size_t firstStep = steps_.size();
    noteRoot(depth, std::nullopt); // what field a root stands in, its parent tells
    const Outcome outcome = pattern(depth, isImmediate);
    if (outcome != Outcome::parsed)
      return outcome == Outcome::unsafe ? outcome : Outcome::failed;
    if (!isField(name)) {
      report_.unknownFieldOffset = static_cast<std::int64_t>(offset);
      return Outcome::failed;
    }
    if (steps_.size() == firstStep)
      return Outcome::unsafe;
    forEachAlternative(firstStep, [](Step& step) { step.hasField = true; });
    return Outcome::parsed;
  }

  /// Quantifiers and captures behind a pattern whose steps begin at `firstStep`.
  Outcome suffixes(std::size_t firstStep, std::size_t depth) {
    while (true) {
      const char32_t suffix = stream_.next();
      if (suffix != U'+' && suffix != U'*' && suffix != U'?' && suffix != U'@')
        return Outcome::parsed;
      if (steps_.size() == firstStep)
        return Outcome::unsafe;
      stream_.advance();
      if (suffix == U'@') {
        if (!stream_.isAtName())
          return Outcome::failed;
        captureNames_.insert(stream_.name());
        ++nameCount_;
      } else {
        if (suffix != U'?')
          steps_.push_back({.depth = depth,
                            .isWildcard = true,
                            .isPassThrough = true,
                            .alternative = firstStep});
        if (suffix != U'+' && !makeOptional(firstStep, steps_.size() - (suffix == U'*' ? 1 : 0)))
          return Outcome::unsafe;
      }
      stream_.skipBlanks();
    }
  }

  /// Leads the last of the alternatives at `step` in front of `limit` past the end. False if they
  /// go round in a circle.
  bool makeOptional(std::size_t step, std::size_t limit) {
    for (std::size_t count = 0; count <= steps_.size(); ++count) {
      if (steps_[step].alternative == none || steps_[step].alternative >= limit) {
        steps_[step].alternative = steps_.size();
        return true;
      }
      step = steps_[step].alternative;
    }
    return false;
  }

  template <class Action>
  void forEachAlternative(std::size_t step, Action&& action) {
    while (true) {
      action(steps_[step]);
      const std::size_t alternative = steps_[step].alternative;
      if (alternative == none || alternative <= step || alternative >= steps_.size())
        return;
      step = alternative;
    }
  }

  /// Whether listing the nodes that a pattern can start with goes round in a circle. The compiler
  /// doesn't count a wildcard as a start if there is a child to look for.
  [[nodiscard]] bool rootsNeverEnd(std::size_t step) const {
    std::size_t skippedAlternative = none;
    for (std::size_t count = 0; count <= 2 * steps_.size(); ++count) {
      if (const Step& root = steps_[step];
          root.isWildcard && root.depth == 0 && !root.hasField && step + 1 < steps_.size()) {
        const Step& child = steps_[step + 1];
        if (!child.isWildcard && child.depth == 1 && !child.isImmediate) {
          skippedAlternative = root.alternative;
          ++step;
        }
      }
      if (steps_[step].alternative != none)
        step = steps_[step].alternative;
      else if (skippedAlternative != none)
        step = std::exchange(skippedAlternative, none);
      else
        return false;
      if (step >= steps_.size())
        return false; // only behind an error
    }
    return true;
  }

  /// Whether a match can go from some step behind `firstStep` back to that step without looking at
  /// a node.
  [[nodiscard]] bool canRepeatNothing(std::size_t firstStep) {
    enum : unsigned char { unseen, open, closed };
    std::vector<unsigned char> states(steps_.size() - firstStep, unseen);
    struct Visit {
      std::size_t step;
      int edge;
    };
    std::vector<Visit> path;
    for (std::size_t start = firstStep; start < steps_.size(); ++start) {
      if (states[start - firstStep] != unseen)
        continue;
      path.push_back({start, 0});
      states[start - firstStep] = open;
      while (!path.empty()) {
        auto& [step, edge] = path.back();
        const std::size_t next = edge == 0   ? steps_[step].alternative
                                 : edge == 1 ? (steps_[step].isPassThrough ? step + 1 : none)
                                             : none;
        if (edge > 1) {
          states[step - firstStep] = closed;
          path.pop_back();
          continue;
        }
        ++edge;
        if (next == none || next >= steps_.size() || states[next - firstStep] == closed)
          continue;
        if (states[next - firstStep] == open)
          return true;
        states[next - firstStep] = open;
        path.push_back({next, 0});
      }
    }
    return false;
  }

  QueryTextStream stream_;
  const TSLanguage* language_;
  std::vector<Step> steps_;
  QueryTextReport report_;
  std::set<std::string_view> captureNames_;
  std::int64_t patternIndex_ = 0;
  std::size_t nameCount_ = 0;
  int nesting_ = 0;
};

} // namespace

QueryTextReport checkedQueryText(std::string_view queryText, const TSLanguage* language) {
  return QueryTextChecker(queryText, language).check();
}

} // namespace velmar
