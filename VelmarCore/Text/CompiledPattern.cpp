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

/// Texts from this length on are watched at every attempt: there a single attempt may take long
/// without the engine ever counting a step.
constexpr std::size_t longText = 4096;

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

  void run() {
    start = Clock::now();
    isRunning = true;
  }
  [[nodiscard]] std::chrono::nanoseconds time() const {
    return isRunning ? Clock::now() - start : std::chrono::nanoseconds(0);
  }
  /// Whether the search may go on.
  [[nodiscard]] bool look() {
    if (!isRunning)
      run();
    return time() < limit;
  }
};

extern "C" {
UBool velmarRegexSteps(const void* context, std::int32_t) {
  Watch& watch = *static_cast<Watch*>(const_cast<void*>(context));
  watch.isDeep = true;
  return watch.look();
}
UBool velmarRegexAttempt(const void* context, std::int64_t) {
  Watch& watch = *static_cast<Watch*>(const_cast<void*>(context));
  if (++watch.attempts < watch.attemptsPerLook)
    return true;
  watch.attempts = 0;
  return watch.look();
}
}

/// One matcher of the engine, used by one search at a time.
struct Matcher {
  RegexPointer regex;
  Watch watch;
  bool watchesAttempts = false;
};

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

} // namespace

/// The prototype, which is never searched with, and the matchers made from it.
struct CompiledPattern::Engine {
  RegexPointer prototype;
  MatcherPool<Matcher> idle;

  /// Null if there is no memory for another.
  std::unique_ptr<Matcher> takeMatcher() {
    if (std::unique_ptr<Matcher> matcher = idle.take())
      return matcher;
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
  if (units.size() > std::size_t(std::numeric_limits<std::int32_t>::max()))
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
  if (literal_ == nullptr)
    return searchByEngine(text, from, start, timeLimit, groups);
  precondition(from <= text.size(), "A search can't begin behind the end of the text.");
  const auto hit = literal_->find(text, from, start == Start::anchored);
  if (!hit)
    return {};
  if (groups != nullptr)
    groups->assign(
        static_cast<std::size_t>(groupCount_) + 1,
        TextRange(static_cast<std::int64_t>(hit->start), static_cast<std::int64_t>(hit->end)));
  return {Outcome::found};
}

CompiledPattern::Search CompiledPattern::searchByEngine(std::u16string_view text, std::size_t from,
                                                        Start start,
                                                        std::chrono::nanoseconds timeLimit,
                                                        Groups* groups) const {
  precondition(from <= text.size(), "A search can't begin behind the end of the text.");
  if (text.size() > std::size_t(std::numeric_limits<std::int32_t>::max()))
    return {Outcome::stopped};
  std::unique_ptr<Matcher> matcher = engine_->takeMatcher();
  if (matcher == nullptr)
    return {Outcome::stopped};

  URegularExpression* regex = matcher->regex.get();
  UErrorCode status = U_ZERO_ERROR;
  Watch& watch = matcher->watch;
  watch.limit = timeLimit;
  watch.isRunning = false;
  watch.isDeep = false;
  const bool isLong = text.size() >= longText;
  if (isLong) {
    watch.run();
    watch.attempts = 0;
    watch.attemptsPerLook = (std::size_t{1} << 20) / text.size() + 1;
  }
  if (isLong != matcher->watchesAttempts) {
    uregex_setFindProgressCallback(regex, isLong ? velmarRegexAttempt : nullptr, &watch, &status);
    matcher->watchesAttempts = isLong;
  }
  // The engine wants an address even for no text at all.
  uregex_setText(regex, text.empty() ? u"" : text.data(), static_cast<std::int32_t>(text.size()),
                 &status);
  const auto place = static_cast<std::int32_t>(from);
  const bool found = start == Start::anchored ? uregex_lookingAt(regex, place, &status)
                                              : uregex_find(regex, place, &status);
  Search result{U_FAILURE(status) ? Outcome::stopped
                : found           ? Outcome::found
                                  : Outcome::notFound,
                watch.time()};
  if (result.outcome == Outcome::found && groups != nullptr) {
    groups->clear();
    for (std::int32_t group = 0; group <= groupCount_; ++group) {
      const std::int32_t lower = uregex_start(regex, group, &status);
      const std::int32_t upper = uregex_end(regex, group, &status);
      if (lower < 0 || upper < lower)
        groups->emplace_back();
      else
        groups->emplace_back(TextRange(lower, upper));
    }
  }
  // A search that went deep may leave megabytes of stack behind, which aren't worth keeping.
  if (!watch.isDeep)
    engine_->idle.giveBack(std::move(matcher));
  return result;
}

} // namespace velmar
