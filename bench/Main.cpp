// The main function of every benchmark program. Without arguments it prints the table of its pairs,
// with "--plain" the benchmarks that have no floor. bench/run calls it and, where the processor's
// counter can't be had, first under callgrind with "--count-into", then with "--instructions" to
// print what was counted there.

#include "bench/InstructionCounter.h"
#include "bench/Measurement.h"
#include "bench/Pair.h"
#include "bench/Table.h"

#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace velmar::bench {

namespace {

constexpr std::string_view usage =
    R"(Usage: bench [OPTION]…
  --filter=REGEX         measure only what has a match in its name
  --repetitions=N        how often each side is timed (5)
  --min-time=SECONDS     for how long each time (0.1)
  --plain                the benchmarks without a floor instead of the pairs
  --list                 the names of the pairs
  --no-heading           the lines of the table alone
  --can-count            succeeds if the processor's counter can be had here
  --count-into=FILE      under callgrind: count and write the counts, time nothing
  --callgrind-out=FILE   what valgrind got as --callgrind-out-file
  --instructions=FILE    take the counts from a file that --count-into wrote
Exit code: 0, or 1 if a pair is over its bound, or 2 if it can't be run like this.
)";

struct Options {
  TimingOptions timing;
  std::string filter = ".";
  std::string countInto;
  std::string callgrindOut;
  std::string instructions;
  bool plain = false;
  bool list = false;
  bool heading = true;
  bool canCount = false;
  bool help = false;
};

template <class Number>
Number numberFrom(std::string_view text) {
  Number value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !(value > 0))
    throw std::invalid_argument("\"" + std::string(text) + "\" isn't a number above zero.");
  return value;
}

Options optionsFrom(int argumentCount, char** arguments) {
  Options options;
  for (int index = 1; index < argumentCount; ++index) {
    const std::string_view argument = arguments[index];
    const std::size_t equals = argument.find('=');
    const std::string_view name = argument.substr(0, equals);
    const std::string_view value = equals == argument.npos ? "" : argument.substr(equals + 1);
    if (name == "--filter")
      options.filter = value;
    else if (name == "--repetitions")
      options.timing.repetitions = numberFrom<int>(value);
    else if (name == "--min-time")
      options.timing.minimumTime = numberFrom<double>(value);
    else if (name == "--count-into")
      options.countInto = value;
    else if (name == "--callgrind-out")
      options.callgrindOut = value;
    else if (name == "--instructions")
      options.instructions = value;
    else if (name == "--plain")
      options.plain = true;
    else if (name == "--list")
      options.list = true;
    else if (name == "--no-heading")
      options.heading = false;
    else if (name == "--can-count")
      options.canCount = true;
    else if (name == "--help")
      options.help = true;
    else
      throw std::invalid_argument("There is no option \"" + std::string(name) + "\".");
  }
  return options;
}

std::vector<SinglePair> chosenPairs(const Options& options) {
  const std::regex filter(options.filter);
  std::vector<SinglePair> pairs = registeredPairs();
  std::erase_if(pairs,
                [&](const SinglePair& pair) { return !std::regex_search(pair.name, filter); });
  return pairs;
}

using CountsByName = std::map<std::string, InstructionCounts>;

/// One line for each pair: the counts of floor and ours, then the name.
void writeCounts(const std::string& path, const CountsByName& counts) {
  std::ofstream file(path);
  file.precision(17);
  for (const auto& [name, count] : counts)
    file << count.floor << ' ' << count.ours << ' ' << name << '\n';
  if (!file.flush())
    throw std::invalid_argument("\"" + path + "\" can't be written.");
}

CountsByName readCounts(const std::string& path) {
  std::ifstream file(path);
  if (!file)
    throw std::invalid_argument("\"" + path + "\" can't be read.");
  CountsByName counts;
  InstructionCounts count;
  std::string name;
  while (file >> count.floor >> count.ours && file.get() && std::getline(file, name))
    counts[name] = count;
  return counts;
}

int count(const Options& options) {
  const auto counter = callgrindCounter(options.callgrindOut);
  if (!counter)
    throw std::invalid_argument("Only under valgrind's callgrind can counts be written to a file.");
  CountsByName counts;
  for (const SinglePair& pair : chosenPairs(options)) {
    if (const auto counted = countInstructions(pair, *counter))
      counts[pair.name] = *counted;
  }
  writeCounts(options.countInto, counts);
  return 0;
}

/// Where the counts of this run come from: the processor, a file, or nowhere.
class CountSource {
public:
  explicit CountSource(const Options& options) {
    if (options.instructions.empty())
      counter_ = processorCounter();
    else
      counts_ = readCounts(options.instructions);
  }

  std::optional<InstructionCounts> countsOf(const SinglePair& pair) {
    if (counter_)
      return countInstructions(pair, *counter_);
    const auto found = counts_.find(pair.name);
    return found == counts_.end() ? std::nullopt : std::optional(found->second);
  }

private:
  std::unique_ptr<InstructionCounter> counter_;
  CountsByName counts_;
};

int printPairs(const Options& options) {
  CountSource source(options);
  prepareTiming(options.timing);
  if (options.heading)
    std::cout << pairHeading() << '\n' << std::flush;
  bool someOver = false;
  for (const SinglePair& pair : chosenPairs(options)) {
    PairResult result{.name = pair.name, .bound = pair.bound};
    if (const auto counts = source.countsOf(pair)) {
      result.floorInstructions = counts->floor;
      result.oursInstructions = counts->ours;
    }
    timePair(pair, result);
    std::cout << lineFor(result) << '\n' << std::flush; // flushed: the next line takes seconds
    someOver = someOver || isOverBound(result);
  }
  for (const LeftOut& leftOut : leftOutPairs())
    std::cout << leftOut.name << ": left out, " << leftOut.reason << '\n' << std::flush;
  return someOver ? 1 : 0;
}

int printPlain(const Options& options) {
  prepareTiming(options.timing);
  const std::vector<PlainResult> results = timePlainBenchmarks(options.filter);
  if (options.heading)
    std::cout << plainHeading() << '\n';
  for (const PlainResult& result : results)
    std::cout << lineFor(result) << '\n';
  return 0;
}

/// Starts the program again with the C library's long copies made of ordinary instructions. By
/// default they are a single string instruction, which the processor counts as one however long it
/// takes, and callgrind as one for each byte.
void countCopiesLikeOtherWork(char** arguments) {
  constexpr const char* variable = "GLIBC_TUNABLES";
  // NOLINTBEGIN(concurrency-mt-unsafe): there is no other thread yet
  if (std::getenv(variable))
    return; // chosen by the caller, or by us before the start
  setenv(
      variable,
      "glibc.cpu.x86_rep_movsb_threshold=1000000000:glibc.cpu.x86_rep_stosb_threshold=1000000000",
      0);
  // NOLINTEND(concurrency-mt-unsafe)
  execv("/proc/self/exe",
        arguments); // comes back only if it can't; the copies then count for little
}

int run(const Options& options) {
  if (options.help) {
    std::cout << usage;
    return 0;
  }
  if (options.canCount)
    return processorCounter() ? 0 : 1;
  if (options.list) {
    for (const SinglePair& pair : chosenPairs(options))
      std::cout << pair.name << '\n';
    return 0;
  }
  if (!options.countInto.empty())
    return count(options);
  return options.plain ? printPlain(options) : printPairs(options);
}

} // namespace

} // namespace velmar::bench

int main(int argumentCount, char** arguments) {
  velmar::bench::countCopiesLikeOtherWork(arguments);
  try {
    return velmar::bench::run(velmar::bench::optionsFrom(argumentCount, arguments));
  } catch (const std::exception&
               error) { // a bad option, a bad regular expression, a benchmark's own failure
    std::cerr << "bench: " << error.what() << '\n';
    return 2;
  }
}
