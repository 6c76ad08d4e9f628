// A file opened as an editor would: parsed with all the languages nested in it, and with somebody
// who listens to what goes wrong on the way.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "host/Command.h"
#include "host/LanguageTable.h"
#include "host/Languages.h"
#include "host/Streams.h"

#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace velmar::host {

/// Tells sentences on standard error, each of them once.
class Complaints {
public:
  explicit Complaints(Output& errors) : errors_(errors) {}
  void tell(const std::string& sentence);

private:
  Output& errors_;
  std::set<std::string, std::less<>> told_;
};

struct OpenOptions {
  /// As the user named it.
  std::optional<std::string> language = std::nullopt;
  /// Tell also what need not worry anybody.
  bool isVerbose = false;

  /// From "--language" and "--verbose".
  [[nodiscard]] static OpenOptions from(const Arguments& arguments);
};

/// The rows of the two options above, for the tables of commands.
[[nodiscard]] Option languageOption();
[[nodiscard]] Option verboseOption();

/// Stays where it is made, and `streams` must outlive it.
class OpenDocument {
public:
  /// Reads the file at `path`, or standard input where that is "-", and parses it. What there is to
  /// say about the bytes, and what the engine swallows from now on, is told on standard error.
  /// Throws Error where the file can't be read or no language fits.
  static std::unique_ptr<OpenDocument> fromFile(const std::string& path, const OpenOptions& options,
                                                Streams& streams);
  /// The same with a text at hand, in the language of that name. `name` is what to call it.
  static std::unique_ptr<OpenDocument> fromText(std::u16string_view text, std::string name,
                                                const Language& language, bool isVerbose,
                                                Streams& streams);

  [[nodiscard]] Parse& parse() noexcept { return *parse_; }
  [[nodiscard]] const Parse& parse() const noexcept { return *parse_; }
  [[nodiscard]] const Languages& languages() const noexcept { return languages_; }
  /// The path or, for standard input, that word. Valid UTF-8.
  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  [[nodiscard]] const LanguageID& language() const noexcept { return language_; }
  /// How long the first parse took, nested languages included.
  [[nodiscard]] std::chrono::nanoseconds loadTime() const noexcept { return loadTime_; }

private:
  OpenDocument(std::string name, const Language& language, bool isVerbose, Streams& streams);
  void load(std::u16string_view text, Streams& streams);

  std::string name_;
  LanguageID language_;
  Complaints complaints_;
  Languages languages_; // outlives `parse_`, which refers to it
  std::unique_ptr<Parse> parse_;
  std::chrono::nanoseconds loadTime_{};
};

} // namespace velmar::host
