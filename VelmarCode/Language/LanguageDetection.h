// Rules by which a language claims a file: its name, its extension, its first lines.
//
//     const auto rules = {
//         LanguageDetection::pathExtensions({"sh", "bash"}, LanguageDetectionPriority::high),
//         LanguageDetection::content(RegularExpression("^#!.*\\bsh\\b"),
//         LanguageDetectionPriority::medium),
//     };
//
// A rule says how sure it is and how much it counts. Choosing a language from what the rules of all
// languages say is the application's part.
#pragma once

#include "VelmarCode/Language/Confidence.h"
#include "VelmarCore/Text/CharacterClass.h"
#include "VelmarCore/Text/RegularExpression.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmar {

/// One reason to take a file for one in a certain language. Rules are immutable; any thread.
class LanguageDetectionRule {
public:
  virtual ~LanguageDetectionRule() = default;

  /// How much the rule counts beside others.
  [[nodiscard]] virtual LanguageDetectionPriority priority() const = 0;
  /// How sure the rule is of a document with that text, of a file with that name. Never fails: what
  /// isn't there or doesn't fit gives `Confidence::failed`.
  [[nodiscard]] virtual Confidence
  confidenceFor(std::string_view text, std::optional<std::string_view> filename) const = 0;
};

using LanguageDetectionRulePointer = std::shared_ptr<const LanguageDetectionRule>;

namespace LanguageDetection {

/// What the simple rules have in common.
class Rule : public LanguageDetectionRule {
public:
  [[nodiscard]] LanguageDetectionPriority priority() const final { return priority_; }

protected:
  explicit Rule(LanguageDetectionPriority priority) : priority_(priority) {}

private:
  LanguageDetectionPriority priority_;
};

/// `required` for a file with one of these names, to the letter.
class Filename final : public Rule {
public:
  Filename(std::vector<std::string> filenames, LanguageDetectionPriority priority)
      : Rule(priority), filenames_(std::move(filenames)) {}
  [[nodiscard]] Confidence confidenceFor(std::string_view text,
                                         std::optional<std::string_view> filename) const override;

private:
  std::vector<std::string> filenames_;
};

/// `required` for a file whose compound extension is one of these, "d.ts" of "x.d.ts"; `high` if
/// only the last part is. So the longer of two extensions that fit wins.
class PathExtension final : public Rule {
public:
  PathExtension(std::vector<std::string> extensions, LanguageDetectionPriority priority)
      : Rule(priority), extensions_(std::move(extensions)) {}
  [[nodiscard]] Confidence confidenceFor(std::string_view text,
                                         std::optional<std::string_view> filename) const override;

private:
  std::vector<std::string> extensions_;
};

/// Takes lines off a text from the front, each with its break: LF, CR, CR LF, vertical tab, form
/// feed, U+0085, U+2028 or U+2029.
class LineReader {
public:
  explicit LineReader(std::string_view text) : rest_(text) {}
  /// The next line; absent behind the last.
  [[nodiscard]] std::optional<std::string_view> next();

private:
  std::string_view rest_;
};

/// Whether the pattern is found anywhere in `text`.
[[nodiscard]] bool isFoundIn(std::string_view text, const RegularExpression& pattern,
                             RegularExpressionPass& pass);
[[nodiscard]] bool isFoundIn(std::string_view text, const std::string& pattern,
                             RegularExpressionPass& pass);
[[nodiscard]] bool isFoundIn(std::string_view text, const CharacterClass& pattern,
                             RegularExpressionPass& pass);

/// `required` if the pattern is found in one of the first `maxLines` lines, each taken by itself. A
/// pattern is a regular expression, a plain text or a class of characters.
template <class Pattern>
class Content final : public Rule {
public:
  Content(Pattern pattern, std::int64_t maxLines, LanguageDetectionPriority priority)
      : Rule(priority), pattern_(std::move(pattern)), maxLines_(maxLines) {}

  [[nodiscard]] Confidence confidenceFor(std::string_view text,
                                         std::optional<std::string_view>) const override {
    LineReader lines(text);
    RegularExpressionPass pass;
    for (std::int64_t count = 0; count < maxLines_; ++count) {
      const std::optional<std::string_view> line = lines.next();
      if (!line)
        break;
      if (isFoundIn(*line, pattern_, pass))
        return Confidence::required;
    }
    return Confidence::failed;
  }

private:
  Pattern pattern_;
  std::int64_t maxLines_;
};

/// The mean of what the subrules say, each weighted with its priority; `failed` without any. Its
/// own priority is for whoever combines it with others.
class Compound final : public Rule {
public:
  Compound(std::vector<LanguageDetectionRulePointer> subrules, LanguageDetectionPriority priority)
      : Rule(priority), subrules_(std::move(subrules)) {}
  [[nodiscard]] Confidence confidenceFor(std::string_view text,
                                         std::optional<std::string_view> filename) const override;

private:
  std::vector<LanguageDetectionRulePointer> subrules_;
};

[[nodiscard]] inline LanguageDetectionRulePointer filenames(std::vector<std::string> filenames,
                                                            LanguageDetectionPriority priority) {
  return std::make_shared<const Filename>(std::move(filenames), priority);
}

[[nodiscard]] inline LanguageDetectionRulePointer
pathExtensions(std::vector<std::string> extensions, LanguageDetectionPriority priority) {
  return std::make_shared<const PathExtension>(std::move(extensions), priority);
}

/// A rule on all lines of the text.
template <class Pattern>
[[nodiscard]] LanguageDetectionRulePointer content(Pattern pattern,
                                                   LanguageDetectionPriority priority) {
  return std::make_shared<const Content<Pattern>>(
      std::move(pattern), std::numeric_limits<std::int64_t>::max(), priority);
}

[[nodiscard]] inline LanguageDetectionRulePointer content(const char* text,
                                                          LanguageDetectionPriority priority) {
  return content(std::string(text), priority);
}

} // namespace LanguageDetection

} // namespace velmar
