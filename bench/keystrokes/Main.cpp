// How long single keystrokes take in documents of several lengths: the half of them and the slowest
// hundredth. The first table tells in which steps, the second what the bare runtime takes for the
// like.
//
// For the first a line of code is typed letter by letter at the ends of lines that lie all over the
// document, and taken back. On its way it opens strings and brackets, as typing does.

#include "VelmarParser/Document/Parse.h"
#include "bench/Table.h"
#include "bench/keystrokes/BesideTheFloor.h"
#include "bench/packs/Documents.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <iostream>
#include <random>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::bench {

namespace {

constexpr std::string_view usage = R"(Usage: keystrokes [OPTION]…
  --filter=REGEX   only the documents with a match in their name
  --seconds=N      how long to type in each document of the first table (10)
  --table=NAME     only this table: "steps" or "floor"
In the environment VELMAR_KEYSTROKES says how many keys each line of the second table tells of (20),
and with VELMAR_LARGE set it has lines of the largest documents, too.
)";

struct Options {
  std::regex filter{"."};
  std::chrono::seconds time{10};
  bool steps = true;
  bool floor = true;
  bool help = false;
};

Options optionsFrom(int argumentCount, char** arguments) {
  Options options;
  for (int index = 1; index < argumentCount; ++index) {
    const std::string_view argument = arguments[index];
    const std::size_t equals = std::min(argument.find('='), argument.size());
    const std::string_view name = argument.substr(0, equals);
    const std::string_view value = argument.substr(std::min(equals + 1, argument.size()));
    if (name == "--filter") {
      options.filter = std::regex(std::string(value));
    } else if (name == "--seconds") {
      int seconds = 0;
      const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), seconds);
      if (error != std::errc() || end != value.data() + value.size() || seconds < 1)
        throw std::invalid_argument("\"" + std::string(value) + "\" isn't a number of seconds.");
      options.time = std::chrono::seconds(seconds);
    } else if (name == "--table") {
      if (value != "steps" && value != "floor")
        throw std::invalid_argument("There is no table \"" + std::string(value) + "\".");
      options.steps = value == "steps";
      options.floor = value == "floor";
    } else if (name == "--help") {
      options.help = true;
    } else {
      throw std::invalid_argument("There is no option \"" + std::string(name) + "\".");
    }
  }
  return options;
}

struct Subject {
  std::string name;
  std::string language;
  std::u16string (*text)(std::int64_t size);
  std::int64_t size;
};

const std::vector<Subject>& subjects() {
  static const std::vector<Subject> all = {
      {"typescript/1000 lines", "typescript", typeScript, 1'000},
      {"typescript/10000 lines", "typescript", typeScript, 10'000},
      {"typescript/100000 lines", "typescript", typeScript, 100'000},
      {"markdown/1000 fences", "markdown", markdown, 1'000},
      {"html/200 scripts", "html", html, 200},
      {"cpp/open quote", "cpp", openQuote, 10'000},
      {"javascript/commas", "javascript", commas, 10'000},
      {"json/one line", "json", oneLine, 5'000'000},
  };
  return all;
}

/// Types and takes back, at least one line, until `time` is over. What each keystroke took.
std::vector<EditTimes> typeInto(Parse& document, std::chrono::seconds time) {
  constexpr std::u16string_view line = u"\n  let a = f(\"b\"); // c";
  std::vector<EditTimes> keystrokes;
  document.setEditObserver([&](const EditTimes& times) { keystrokes.push_back(times); });
  std::mt19937 random(5);
  const auto end = std::chrono::steady_clock::now() + time;
  do {
    const auto offset =
        static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(document.count()));
    const std::int64_t place = document.lineBoundariesFor({offset, offset}).contentsEnd;
    for (std::size_t index = 0; index < line.size(); ++index) {
      const auto at = place + static_cast<std::int64_t>(index);
      document.replaceSubrange({at, at}, line.substr(index, 1));
    }
    for (auto at = place + static_cast<std::int64_t>(line.size()); at > place; --at)
      document.replaceSubrange({at - 1, at}, u"");
  } while (std::chrono::steady_clock::now() < end);
  document.setEditObserver({});
  return keystrokes;
}

/// The value below which `share` of them lie.
template <class Time>
double quantile(const std::vector<EditTimes>& keystrokes, double share, Time&& time) {
  std::vector<double> values;
  for (const EditTimes& times : keystrokes)
    values.push_back(static_cast<double>(time(times).count()));
  const auto index = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1));
  std::ranges::nth_element(values, values.begin() + static_cast<std::ptrdiff_t>(index));
  return values[index];
}

std::string lineFor(std::string_view name, std::string_view which,
                    const std::vector<EditTimes>& keystrokes, double share) {
  const auto whole = [](const EditTimes& times) { return times.total(); };
  std::vector<std::string> cells = {timeText(quantile(keystrokes, share, whole))};
  for (std::size_t phase = 0; phase < editPhaseCount; ++phase) {
    cells.push_back(timeText(quantile(keystrokes, share, [&](const EditTimes& times) {
      return times[static_cast<EditPhase>(phase)];
    })));
  }
  return keystrokeLine(name, which, cells);
}

void measure(const Subject& subject, std::chrono::seconds time) {
  Parse document(packedLanguage(subject.language));
  document.setErrorHandler(
      [](const ParseConfiguration& language, std::string_view label, const std::exception& error) {
        throw std::runtime_error(language.id().rawValue + ", " + std::string(label) + ": " +
                                 error.what());
      });
  document.replaceSubrange({0, 0}, subject.text(subject.size));
  const std::vector<EditTimes> keystrokes = typeInto(document, time);
  std::cout << lineFor(subject.name, "p50", keystrokes, 0.5) << '\n'
            << lineFor(std::to_string(keystrokes.size()) + " keystrokes", "p99", keystrokes, 0.99)
            << '\n'
            << std::flush;
}

void measureSteps(const Options& options) {
  const std::vector<std::string> phases = {"whole",   "text",       "tree edit", "parse",
                                           "changes", "injections", "spans"};
  std::cout << keystrokeLine("keystroke", "", phases) << '\n';
  for (const Subject& subject : subjects()) {
    if (std::regex_search(subject.name, options.filter))
      measure(subject, options.time);
  }
}

int run(const Options& options) {
  if (options.help) {
    std::cout << usage;
    return 0;
  }
  if (options.steps)
    measureSteps(options);
  if (options.steps && options.floor)
    std::cout << '\n';
  if (options.floor)
    measureBesideTheFloor(options.filter);
  return 0;
}

} // namespace

} // namespace velmar::bench

int main(int argumentCount, char** arguments) {
  try {
    return velmar::bench::run(velmar::bench::optionsFrom(argumentCount, arguments));
  } catch (const std::exception& error) {
    std::cerr << "keystrokes: " << error.what() << '\n';
    return 2;
  }
}
