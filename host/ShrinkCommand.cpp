#include "host/ShrinkCommand.h"

#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Files/FileContents.h"
#include "VelmarPlatform/Process/Subprocess.h"
#include "host/SessionFile.h"
#include "host/SessionShrinking.h"
#include "host/Wording.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::string_view sessionWord = "{}";

/// A file that the command finds each session in, in a folder that goes when this does.
class Candidate {
public:
  Candidate() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "velmar-shrink-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr)
      throw SystemError("There is no place for a temporary folder.", errno);
    folder_ = pattern;
  }
  Candidate(const Candidate&) = delete;
  Candidate& operator=(const Candidate&) = delete;
  ~Candidate() {
    std::error_code ignored; // what can't be removed stays for the system to remove
    std::filesystem::remove_all(folder_, ignored);
  }

  [[nodiscard]] std::string path() const { return folder_ + "/candidate.session"; }

private:
  std::string folder_;
};

/// The command, with the path in the place of "{}" or, where there is none, behind it.
Subprocess::Configuration commandFor(std::vector<std::string> words, const std::string& path) {
  if (std::ranges::find(words, sessionWord) == words.end())
    words.emplace_back(sessionWord);
  std::ranges::replace(words, std::string(sessionWord), path);
  return {.executable = Subprocess::Executable::name(words.front()),
          .arguments = {words.begin() + 1, words.end()},
          .environment = SubprocessEnvironment::inherited()};
}

/// Whether the command fails for `session`: with an exit status or by a signal.
bool failsFor(const Session& session, const std::vector<std::string>& words,
              const Candidate& candidate) {
  writeFileAtomically(FilePath(candidate.path()), bytesOf(writtenSession(session)));
  const auto result = mainExecutor().run([&] {
    return Subprocess::run(
        commandFor(words, candidate.path()),
        {.output = Subprocess::DiscardedOutput(), .error = Subprocess::DiscardedOutput()});
  });
  return !result.status.isSuccess();
}

std::string sizeOf(const Session& session) {
  std::int64_t inserted = 0;
  for (const SessionEdit& edit : session.edits)
    inserted += std::ssize(edit.text);
  return fmt::format("{} that bring {}, in a text of {}",
                     counted(std::ssize(session.edits), "edit"), counted(inserted, "unit"),
                     session.initial.size());
}

std::int64_t checksFrom(const Arguments& arguments) {
  const std::string_view text = arguments.valueOf("--checks").value_or("2000");
  std::int64_t checks = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), checks);
  if (failure != std::errc() || end != text.data() + text.size() || checks < 1)
    throw UsageError(fmt::format("“--checks” needs a number from 1 on, and “{}” is none.", text));
  return checks;
}

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.operands.size() < 2)
    throw UsageError(
        "“velmar shrink” needs a session and, behind “--”, a command that fails for it.");
  const FilePath path(arguments.operands.front());
  const std::vector<std::string> words(arguments.operands.begin() + 1, arguments.operands.end());
  const std::int64_t mostChecks = checksFrom(arguments);
  const auto write = [&](const Session& session) {
    if (const auto output = arguments.valueOf("--output"))
      writeFileAtomically(FilePath(*output), bytesOf(writtenSession(session)));
  };

  Session session = readSessionFile(path, streams).session;
  const Candidate candidate;
  if (!failsFor(session, words, candidate))
    throw Error(
        fmt::format("“{}” finds nothing wrong with {}.", words.front(), path.description()));
  streams.errors.write(fmt::format("{}\n", sizeOf(session)));
  streams.errors.flush();
  const Session small = shrunkSession(std::move(session), mostChecks, [&](const Session& smaller) {
    if (!failsFor(smaller, words, candidate))
      return false;
    streams.errors.write(fmt::format("{}\n", sizeOf(smaller)));
    streams.errors.flush();
    write(smaller);
    return true;
  });
  write(small);
  if (!arguments.has("--output"))
    streams.output.write(writtenSession(small));
}

} // namespace

Command shrinkCommand() {
  return {
      .name = "shrink",
      .summary = "Make a session that shows a fault small.",
      .usage = "shrink SESSION -- COMMAND [ARGUMENT …]",
      .details =
          "The command says whether a session shows the fault, by failing: with an exit code other "
          "than 0, or by a signal. The session’s path stands behind its arguments, or wherever one "
          "of them is “{}”. Edits and texts are left out as long as it goes on failing. What is "
          "left goes to standard output; each step is told on standard error.",
      .options = {{"--output", "FILE", "Write it there, also after each step on the way."},
                  {"--checks", "N", "Ask at most N times; 2000 if not given."}},
      .examples = {{"velmar shrink crash.session -- velmar replay", "What makes the engine crash."},
                   {"velmar shrink fault.session --output small.session -- ./check {} --quick",
                    "By a check of one’s own."}},
      .run = run,
  };
}

} // namespace velmar::host
