#include "host/ReplayCommand.h"

#include "VelmarPlatform/Files/FileContents.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/DocumentDigest.h"
#include "host/LanguageChoice.h"
#include "host/LayerList.h"
#include "host/OpenDocument.h"
#include "host/RandomSession.h"
#include "host/SessionFile.h"
#include "host/Wording.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>

namespace velmar::host {

namespace {

using std::chrono::nanoseconds;

constexpr std::int64_t mostRandomEdits = 1'000'000;
constexpr std::int64_t recordedEvery = 250;

double milliseconds(nanoseconds time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

std::uint64_t numberFrom(std::string_view text, std::string_view option) {
  std::uint64_t number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size())
    throw UsageError(fmt::format("“{}” needs a number, and “{}” is none.", option, text));
  return number;
}

/// Plays the edits one by one and keeps account.
class Player {
public:
  Player(const Session& session, OpenDocument& document, Streams& streams)
      : session_(session), document_(document), streams_(streams) {}

  /// What to do after each edit: its number from 1, the ranges it changed, the document's digest.
  template <class After>
  void play(After after) {
    for (const SessionEdit& edit : session_.edits) {
      Parse& parse = document_.parse();
      const nanoseconds start = streams_.now();
      const TextRangeSet changed = parse.replaceSubrange(edit.range, edit.text);
      times_.push_back(streams_.now() - start);

      Digest digest;
      addTo(digest, changed);
      nodes_ = addTo(digest, parse);
      digests_.push_back(digest.value());
      all_.add(digest.value());
      after(std::ssize(digests_), edit, changed);
    }
  }

  [[nodiscard]] const std::vector<std::uint64_t>& digests() const { return digests_; }
  [[nodiscard]] std::uint64_t finalDigest() const { return all_.value(); }

  void writeTotals() {
    const Parse& parse = document_.parse();
    streams_.output.write(
        fmt::format("{}: digest {:016x}\n", counted(std::ssize(digests_), "edit"), all_.value()));
    streams_.output.write(fmt::format("{}, {}, {}, {} at the end\n", counted(parse.count(), "unit"),
                                      counted(lineCountForPeople(parse.text()), "line"),
                                      counted(std::ssize(parse.layers()), "layer"),
                                      counted(nodes_, "node")));
    if (times_.empty())
      return;
    std::vector<nanoseconds> sorted = times_;
    std::ranges::sort(sorted);
    const auto quantile = [&](std::size_t percent) {
      return milliseconds(sorted[(sorted.size() - 1) * percent / 100]);
    };
    nanoseconds total{};
    for (const nanoseconds time : times_)
      total += time;
    const auto slowest = std::ranges::max_element(times_) - times_.begin();
    streams_.output.write(fmt::format(
        "load {:.2f} ms; edits {:.2f} ms: half within {:.3f} ms, 99 of 100 within {:.3f} ms, the "
        "slowest, number {}, {:.3f} ms\n",
        milliseconds(document_.loadTime()), milliseconds(total), quantile(50), quantile(99),
        slowest + 1, quantile(100)));
  }

private:
  const Session& session_;
  OpenDocument& document_;
  Streams& streams_;
  std::vector<nanoseconds> times_;
  std::vector<std::uint64_t> digests_;
  Digest all_;
  std::int64_t nodes_ = 0;
};

void compare(std::optional<std::uint64_t> expected, std::uint64_t found, std::string_view what) {
  if (expected && *expected != found)
    throw Error(
        fmt::format("The digest {} is {:016x}, but {:016x} was expected.", what, found, *expected));
}

/// Plays the session and compares with what it expects.
void check(const Session& session, Player& player, Streams& streams) {
  player.play([&](std::int64_t number, const SessionEdit& edit, const TextRangeSet&) {
    compare(edit.expected, player.digests().back(), fmt::format("after edit {}", number));
  });
  if (!session.expectedFinal)
    throw Error("The session doesn’t say what to expect; “--record” writes it in.");
  compare(session.expectedFinal, player.finalDigest(), "of all edits");
  player.writeTotals();
  streams.output.write("All is as expected.\n");
}

void print(Player& player, const OpenDocument& document, Streams& streams) {
  player.play([&](std::int64_t number, const SessionEdit&, const TextRangeSet& changed) {
    const Parse& parse = document.parse();
    streams.output.write(fmt::format("{:>6} {:016x} {} layers, changed {}\n", number,
                                     player.digests().back(), parse.layers().size(),
                                     placesOf(parse.text(), changed)));
  });
  player.writeTotals();
}

void replay(const FilePath& path, const Arguments& arguments, Streams& streams) {
  const auto [text, session] = readSessionFile(path, streams);
  const auto document =
      OpenDocument::fromText(session.initial, path.description(), languageWanted(session.language),
                             arguments.has("--verbose"), streams);
  Player player(session, *document, streams);
  if (arguments.has("--check"))
    return check(session, player, streams);
  if (!arguments.has("--record"))
    return print(player, *document, streams);
  player.play([](auto&&...) {});
  writeFileAtomically(path, bytesOf(withExpectations(text, session, player.digests(),
                                                     player.finalDigest(), recordedEvery)));
  player.writeTotals();
}

/// Writes a session that edits the file at `path`.
void writeRandomSession(const std::string& path, const Arguments& arguments, Streams& streams) {
  const auto count = numberFrom(*arguments.valueOf("--random"), "--random");
  if (count > static_cast<std::uint64_t>(mostRandomEdits))
    throw UsageError(fmt::format("At most {} edits can be made up.", mostRandomEdits));
  const auto seed = numberFrom(arguments.valueOf("--seed").value_or("1"), "--seed");
  const SourceText source = readSource(path, streams);
  Session session{.language = languageFor(source, arguments.valueOf("--language")).id.rawValue,
                  .initial = source.text->substringFor({0, source.text->count()}),
                  .edits = {}};
  session.edits = randomEdits(session.initial, static_cast<std::int64_t>(count), seed);
  streams.output.write(writtenSession(session));
}

void run(const Arguments& arguments, Streams& streams) {
  if (arguments.operands.size() != 1)
    throw UsageError("“velmar replay” needs one session, or with “--random” one file.");
  const std::string& path = arguments.operands.front();
  if (arguments.has("--random"))
    return writeRandomSession(path, arguments, streams);
  if (arguments.has("--seed") || arguments.has("--language"))
    throw UsageError("“--seed” and “--language” go with “--random”.");
  if (arguments.has("--check") && arguments.has("--record"))
    throw UsageError("Only one of “--check” and “--record” can be had.");
  replay(FilePath(path), arguments, streams);
}

} // namespace

Command replayCommand() {
  return {
      .name = "replay",
      .summary = "Play recorded edits and print what comes of them.",
      .usage = "replay SESSION [--check|--record]",
      .details =
          "A session is a plain text:\n"
          "\n"
          "  velmar session 1\n"
          "  language html\n"
          "  text \"<p>Hello\\n</p>\"          the text at the start, or: file page.html\n"
          "  edit 3 5 \"Good morning\"        where, how many units go, what comes\n"
          "  expect 0123456789abcdef        the digest after this edit\n"
          "  final 0123456789abcdef         the digest of all edits\n"
          "\n"
          "After each edit a line gives the digest of what the engine knows: the changed ranges,\n"
          "and the trees, ranges and lexical spans of all layers. It is the same in every build\n"
          "with the same grammars and packs. The last lines give totals and times.\n",
      .options = {{"--check", "", "Compare with the digests in the session; 1 if one differs."},
                  {"--record", "", "Write the digests into the session."},
                  {"--random", "N", "Print a session of N made-up edits of a file instead."},
                  {"--seed", "S", "Which one of them; 1 if not given."},
                  languageOption(),
                  verboseOption()},
      .examples = {{"velmar replay fault.session", "What happens, edit by edit."},
                   {"velmar replay --check long.session", "Whether it still comes out the same."},
                   {"velmar replay --random 500 page.html",
                    "A session of 500 edits of that page."}},
      .run = run,
  };
}

} // namespace velmar::host
