#include "VelmarCore/Text/CompiledPattern.h"

#include "VelmarCore/Text/LiteralPattern.h"
#include "VelmarCore/Text/MatcherPool.h"
#include "VelmarCore/Text/RegularExpressionError.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <unicode/uregex.h>

#include <limits>
#include <utility>

namespace velmar {

namespace {

using Clock = std::chrono::steady_clock;
using Options = RegularExpressionOptions;

struct RegexDeleter {
  void operator()(URegularExpression* regex) const noexcept { uregex_close(regex); }
};
using RegexPointer = std::unique_ptr<URegularExpression, RegexDeleter>;

/// What the engine may keep to come back to, in bytes. Enough for a quoted text of some hundred
/// thousand characters inside a repeated group; memory is only taken as it is needed.
constexpr std::int32_t stackLimit = 64 << 20;

/// What the engine can count.
constexpr std::size_t longestText = std::numeric_limits<std::int32_t>::max();

/// Texts from this length on are watched at every attempt: there a single attempt may take long
/// without the engine ever counting a step.
constexpr std::size_t longText = 4096;

/// In long texts the clock is looked at after about so many characters in attempts, if each attempt
/// runs to the end.
constexpr std::size_t stepsPerLook = std::size_t{1} << 20;

/// Watches the clock for one search. The engine calls back each ten thousand steps or so, which is
/// a fraction of a millisecond: a search that is over before that never looks at the clock.
struct Watch {
  std::chrono::nanoseconds limit{0};
  Clock::time_point start;
  bool isRunning = false;
  /// Whether the engine has counted so many steps that its stack may have grown large.
  bool isDeep = false;
  std::size_t attemptsPerLook = 0;
  std::size_t attempts = 0;

  [[nodiscard]] std::chrono::nanoseconds time() const {
    return isRunning ? Clock::now() - start : std::chrono::nanoseconds(0);
  }
  /// Whether the search may go on.
  [[nodiscard]] bool look() {
    if (isRunning)
      return time() < limit;
    start = Clock::now();
    isRunning = true;
    return true;
  }
};

extern "C" {
UBool velmarRegexSteps(const void* context, std::int32_t) {
  Watch& watch = *static_cast<Watch*>(const_cast<void*>(context));
  watch.isDeep = true;
  return watch.look() ? 1 : 0;
}
UBool velmarRegexAttempt(const void* context, std::int64_t) {
  Watch& watch = *static_cast<Watch*>(const_cast<void*>(context));
  if (++watch.attempts < watch.attemptsPerLook)
    return 1;
  watch.attempts = 0;
  return watch.look() ? 1 : 0;
}
}

std::uint32_t engineFlags(Options options) {
  std::uint32_t flags = 0;
  if (holds(options, Options::caseInsensitive))
    flags |= UREGEX_CASE_INSENSITIVE;
  if (holds(options, Options::allowCommentsAndWhitespace))
    flags |= UREGEX_COMMENTS;
  if (holds(options, Options::ignoreMetacharacters))
    flags |= UREGEX_LITERAL;
  if (holds(options, Options::dotMatchesLineSeparators))
    flags |= UREGEX_DOTALL;
  if (holds(options, Options::anchorsMatchLines))
    flags |= UREGEX_MULTILINE;
  return flags;
}

/// The engine has codes but no words.
const char* wordsFor(UErrorCode code) {
  switch (code) {
  case U_ILLEGAL_ARGUMENT_ERROR:
    return "the pattern is empty";
  case U_REGEX_RULE_SYNTAX:
    return "the syntax is wrong";
  case U_REGEX_BAD_ESCAPE_SEQUENCE:
    return "an escape sequence is unknown or incomplete";
  case U_REGEX_PROPERTY_SYNTAX:
    return "a character property is unknown or incomplete";
  case U_REGEX_UNIMPLEMENTED:
    return "the construct isn't supported";
  case U_REGEX_MISMATCHED_PAREN:
    return "a parenthesis has no partner";
  case U_REGEX_NUMBER_TOO_BIG:
    return "a number is too large";
  case U_REGEX_BAD_INTERVAL:
    return "an interval in braces is malformed";
  case U_REGEX_MAX_LT_MIN:
    return "an interval's upper bound is below its lower bound";
  case U_REGEX_INVALID_BACK_REF:
    return "a reference to a group that doesn't exist";
  case U_REGEX_INVALID_FLAG:
    return "a mode flag is unknown";
  case U_REGEX_LOOK_BEHIND_LIMIT:
    return "an expression that looks behind must have a bounded length";
  case U_REGEX_MISSING_CLOSE_BRACKET:
    return "a bracket has no partner";
  case U_REGEX_INVALID_RANGE:
    return "a character range is reversed";
  case U_REGEX_PATTERN_TOO_BIG:
    return "the pattern is too large";
  case U_REGEX_INVALID_CAPTURE_GROUP_NAME:
    return "a group's name is malformed or used twice";
  case U_REGEX_INTERNAL_ERROR:
    return "the pattern is nested too deeply";
  default:
    return nullptr;
  }
}

/// The byte of `pattern` behind `column` characters of line `line`, as the engine counts them:
/// lines from 1, line breaks as no character, and CR LF as one break.
std::int64_t patternOffset(std::string_view pattern, std::int32_t line, std::int32_t column) {
  std::int32_t currentLine = 1;
  std::int32_t currentColumn = 0;
  char32_t last = 0;
  std::size_t index = 0;
  while (index < pattern.size() &&
         (currentLine < line || (currentLine == line && currentColumn < column))) {
    const DecodedScalar decoded = decodeUTF8(pattern, index);
    index += decoded.length;
    const char32_t scalar = decoded.scalar;
    if (scalar == 0x0D || scalar == 0x85 || scalar == 0x2028 || (scalar == 0x0A && last != 0x0D)) {
      ++currentLine;
      currentColumn = 0;
    } else if (scalar != 0x0A) {
      ++currentColumn;
    }
    last = scalar;
  }
  return static_cast<std::int64_t>(index);
}

RegularExpressionError errorFor(std::string_view pattern, UErrorCode code,
                                const UParseError& place) {
  const std::int64_t offset = patternOffset(pattern, place.line, place.offset);
  const char* words = wordsFor(code);
  return {std::string(words != nullptr ? words : u_errorName(code)) + " at offset " +
              std::to_string(offset),
          offset};
}

/// The ranges of the match that `regex` has just found.
void readGroups(URegularExpression* regex, std::int64_t groupCount,
                CompiledPattern::Groups& groups) {
  UErrorCode status = U_ZERO_ERROR;
  groups.whole = {uregex_start(regex, 0, &status), uregex_end(regex, 0, &status)};
  groups.captures.clear();
  for (std::int32_t group = 1; group <= groupCount; ++group) {
    const std::int32_t lower = uregex_start(regex, group, &status);
    const std::int32_t upper = uregex_end(regex, group, &status);
    if (lower < 0 || upper < lower)
      groups.captures.emplace_back();
    else
      groups.captures.emplace_back(TextRange(lower, upper));
  }
}

} // namespace

/// One matcher of the engine, used by one search at a time.
struct CompiledPattern::Matcher {
  RegexPointer regex;
  Watch watch;
  bool watchesAttempts = false;

  void setText(std::u16string_view text);
  Search search(std::size_t from, Start start, std::chrono::nanoseconds timeLimit, Groups* groups,
                std::int64_t groupCount);
};

// Inlined, because a predicate of a query costs little more than what stands here.
[[gnu::always_inline]] inline void CompiledPattern::Matcher::setText(std::u16string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  watch.isDeep = false;
  const bool isLong = text.size() >= longText;
  if (isLong != watchesAttempts) [[unlikely]] {
    uregex_setFindProgressCallback(regex.get(), isLong ? velmarRegexAttempt : nullptr, &watch,
                                   &status);
    watchesAttempts = isLong;
  }
  if (isLong)
    watch.attemptsPerLook = stepsPerLook / text.size() + 1;
  // The engine wants an address even for no text at all.
  uregex_setText(regex.get(), text.empty() ? u"" : text.data(),
                 static_cast<std::int32_t>(text.size()), &status);
}

[[gnu::always_inline]] inline CompiledPattern::Search
CompiledPattern::Matcher::search(std::size_t from, Start start, std::chrono::nanoseconds timeLimit,
                                 Groups* groups, std::int64_t groupCount) {
  watch.limit = timeLimit;
  watch.isRunning = false;
  watch.attempts = 0;
  UErrorCode status = U_ZERO_ERROR;
  const auto place = static_cast<std::int32_t>(from);
  const bool found = start == Start::anchored ? uregex_lookingAt(regex.get(), place, &status)
                                              : uregex_find(regex.get(), place, &status);
  Search result{found ? Outcome::found : Outcome::notFound};
  if (U_FAILURE(status)) [[unlikely]]
    result.outcome = Outcome::stopped;
  else if (found && groups != nullptr)
    readGroups(regex.get(), groupCount, *groups);
  if (watch.isRunning) [[unlikely]]
    result.time = watch.time();
  return result;
}

/// The prototype, which is never searched with, and the matchers made from it.
struct CompiledPattern::Engine {
  RegexPointer prototype;
  MatcherPool<Matcher> idle;

  /// A matcher with that text; null if the text is too long, or there is no memory for a matcher.
  std::unique_ptr<Matcher> takeMatcherFor(std::u16string_view text) {
    if (text.size() > longestText)
      return nullptr;
    std::unique_ptr<Matcher> matcher = idle.take();
    if (matcher == nullptr) [[unlikely]]
      matcher = makeMatcher();
    if (matcher != nullptr)
      matcher->setText(text);
    return matcher;
  }

  void giveBack(std::unique_ptr<Matcher> matcher) {
    // A search that went deep may leave megabytes of stack behind, which aren't worth keeping.
    if (!matcher->watch.isDeep) [[likely]]
      idle.giveBack(std::move(matcher));
  }

  [[gnu::noinline]] std::unique_ptr<Matcher> makeMatcher() const {
    UErrorCode status = U_ZERO_ERROR;
    auto matcher = std::make_unique<Matcher>();
    matcher->regex.reset(uregex_clone(prototype.get(), &status));
    uregex_setStackLimit(matcher->regex.get(), stackLimit, &status);
    uregex_setMatchCallback(matcher->regex.get(), velmarRegexSteps, &matcher->watch, &status);
    return U_SUCCESS(status) ? std::move(matcher) : nullptr;
  }
};

Result<std::shared_ptr<const CompiledPattern>, RegularExpressionError>
CompiledPattern::compile(std::string pattern, Options options) {
  const std::u16string units = utf16RepairingUTF8(pattern);
  UErrorCode status = U_ZERO_ERROR;
  UParseError place{};
  if (units.size() > longestText)
    return Failure(errorFor(pattern, U_REGEX_PATTERN_TOO_BIG, place));
  RegexPointer prototype(uregex_open(units.data(), static_cast<std::int32_t>(units.size()),
                                     engineFlags(options), &place, &status));
  if (U_FAILURE(status))
    return Failure(errorFor(pattern, status, place));

  auto engine = std::make_unique<Engine>();
  engine->prototype = std::move(prototype);
  std::unique_ptr<LiteralPattern> literal;
  if (std::optional<LiteralPattern> found = LiteralPattern::fromPattern(units, options))
    literal = std::make_unique<LiteralPattern>(std::move(*found));
  return std::shared_ptr<const CompiledPattern>(
      new CompiledPattern(std::move(pattern), options, std::move(engine), std::move(literal)));
}

CompiledPattern::CompiledPattern(std::string pattern, Options options,
                                 std::unique_ptr<Engine> engine,
                                 std::unique_ptr<LiteralPattern> literal)
    : pattern_(std::move(pattern)), options_(options), engine_(std::move(engine)),
      literal_(std::move(literal)) {
  UErrorCode status = U_ZERO_ERROR;
  groupCount_ = uregex_groupCount(engine_->prototype.get(), &status);
}

CompiledPattern::~CompiledPattern() = default;

std::optional<std::int64_t> CompiledPattern::groupNamed(std::string_view name) const {
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t number = uregex_groupNumberFromCName(
      engine_->prototype.get(), name.data(), static_cast<std::int32_t>(name.size()), &status);
  if (U_FAILURE(status))
    return std::nullopt;
  return number;
}

CompiledPattern::Search CompiledPattern::search(std::u16string_view text, std::size_t from,
                                                Start start, std::chrono::nanoseconds timeLimit,
                                                Groups* groups) const {
  precondition(from <= text.size(), "A search can't begin behind the end of the text.");
  if (literal_ != nullptr) {
    const auto hit = literal_->find(text, from, start == Start::anchored);
    if (hit && groups != nullptr) {
      groups->whole = {static_cast<std::int64_t>(hit->start), static_cast<std::int64_t>(hit->end)};
      groups->captures.assign(static_cast<std::size_t>(groupCount_), groups->whole);
    }
    return {hit ? Outcome::found : Outcome::notFound};
  }
  std::unique_ptr<Matcher> matcher = engine_->takeMatcherFor(text);
  if (matcher == nullptr)
    return {Outcome::stopped};
  const Search result = matcher->search(from, start, timeLimit, groups, groupCount_);
  engine_->giveBack(std::move(matcher));
  return result;
}

PatternSession::PatternSession(const CompiledPattern& pattern, std::u16string_view text)
    : pattern_(pattern), length_(text.size()), matcher_(pattern.engine_->takeMatcherFor(text)) {}

PatternSession::~PatternSession() {
  if (matcher_ != nullptr)
    pattern_.engine_->giveBack(std::move(matcher_));
}

CompiledPattern::Search PatternSession::search(std::size_t from, CompiledPattern::Start start,
                                               std::chrono::nanoseconds timeLimit,
                                               CompiledPattern::Groups* groups) {
  precondition(from <= length_, "A search can't begin behind the end of the text.");
  if (matcher_ == nullptr)
    return {CompiledPattern::Outcome::stopped};
  return matcher_->search(from, start, timeLimit, groups, pattern_.groupCount());
}

} // namespace velmar
