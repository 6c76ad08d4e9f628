// The lines of a document under edits, beside the least that any program must do: an array of line
// starts, searched and shifted.

#include "VelmarCore/Text/UTF16LineArray.h"
#include "bench/Pair.h"
#include "bench/VelmarCore/BareStarts.h"
#include "bench/VelmarCore/Traces.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace velmar {

namespace {

using bench::RecordedEdit;

/// Lines of 0 to 66 units, 34 on average with their LF.
std::u16string textOfLines(std::int64_t count) {
  std::mt19937 random(7);
  std::u16string text;
  for (std::int64_t line = 0; line < count; ++line) {
    text.append(random() % 67, u'x');
    text += u'\n';
  }
  return text;
}

/// Typing at eight places, 64 units at each with a newline in every 32, and taking all of it back
/// one by one: in the end the text is what it was.
std::vector<RecordedEdit> keystrokes(std::int64_t textCount) {
  std::mt19937 random(11);
  std::vector<RecordedEdit> edits;
  for (int place = 0; place < 8; ++place) {
    const auto start = static_cast<std::int64_t>(random()) % textCount;
    for (std::int64_t typed = 0; typed < 64; ++typed)
      edits.push_back({start + typed, 0, typed % 32 == 20 ? u"\n" : u"y"});
    for (std::int64_t left = 63; left >= 0; --left)
      edits.push_back({start + left, 1, u""});
  }
  return edits;
}

void apply(DocumentText& lines, const RecordedEdit& edit) {
  lines.replaceSubrange({edit.offset, edit.offset + edit.removed}, edit.inserted);
}
void apply(UTF16LineArray<NoLineStorage>& lines, const RecordedEdit& edit) {
  lines.replaceSubrange({edit.offset, edit.offset + edit.removed}, edit.inserted);
}
template <class Start>
void apply(bench::BareStarts<Start>& lines, const RecordedEdit& edit) {
  lines.replace(edit.offset, edit.offset + edit.removed, edit.inserted);
}

/// One loaded text for each kind of lines and size: loading a million lines for each run would take
/// longer than what is measured.
template <class Lines>
Lines& loaded(std::int64_t lineCount) {
  static std::map<std::int64_t, std::unique_ptr<Lines>> made;
  auto& lines = made[lineCount];
  if (!lines) {
    lines = std::make_unique<Lines>();
    apply(*lines, RecordedEdit{0, 0, textOfLines(lineCount)});
  }
  return *lines;
}

template <class Lines>
void type(bench::State& state) {
  Lines& lines = loaded<Lines>(state.size());
  const auto edits = keystrokes(state.size() * 33);
  for (auto _ : state) {
    for (const RecordedEdit& edit : edits)
      apply(lines, edit);
  }
}

VELMAR_PAIR("lineArray/keystrokes", 1.2, type<bench::BareStarts<std::uint32_t>>, type<DocumentText>,
            1'000, 10'000, 100'000, 1'000'000);
VELMAR_PAIR("lineArray/keystrokes-without-text", 1.2, type<bench::BareStarts<std::uint32_t>>,
            type<UTF16LineArray<NoLineStorage>>, 1'000, 10'000, 100'000, 1'000'000);
VELMAR_PAIR("lineArray/keystrokes-of-64-bits", 0, type<bench::BareStarts<std::int64_t>>,
            type<DocumentText>, 1'000, 10'000, 100'000, 1'000'000);

/// 256 units, each at a place of its own, and all of them taken back.
std::vector<RecordedEdit> scatteredKeystrokes(std::int64_t textCount) {
  std::mt19937 random(13);
  std::vector<RecordedEdit> edits;
  for (int typed = 0; typed < 256; ++typed)
    edits.push_back(
        {static_cast<std::int64_t>(random()) % textCount, 0, typed % 32 == 20 ? u"\n" : u"y"});
  for (std::size_t left = edits.size(); left-- > 0;)
    edits.push_back({edits[left].offset, 1, u""});
  return edits;
}

/// The worst that typing can be: no two keystrokes in the same part of the text.
template <class Lines>
void typeAllOver(bench::State& state) {
  Lines& lines = loaded<Lines>(state.size());
  const auto edits = scatteredKeystrokes(state.size() * 33);
  for (auto _ : state) {
    for (const RecordedEdit& edit : edits)
      apply(lines, edit);
  }
}

VELMAR_PAIR("lineArray/scattered-keystrokes", 1.2, typeAllOver<bench::BareStarts<std::uint32_t>>,
            typeAllOver<DocumentText>, 1'000, 10'000, 100'000, 1'000'000);

std::vector<std::int64_t> randomOffsets(std::int64_t textCount) {
  std::mt19937 random(3);
  std::vector<std::int64_t> offsets(1 << 12);
  for (std::int64_t& offset : offsets)
    offset = static_cast<std::int64_t>(random()) % textCount;
  return offsets;
}

void findInStarts(bench::State& state) {
  const auto& lines = loaded<bench::BareStarts<std::uint32_t>>(state.size());
  const auto offsets = randomOffsets(state.size() * 33);
  for (auto _ : state) {
    for (const std::int64_t offset : offsets)
      benchmark::DoNotOptimize(lines.lineContaining(offset));
  }
}

void findInLines(bench::State& state) {
  const auto& lines = loaded<DocumentText>(state.size());
  const auto offsets = randomOffsets(state.size() * 33);
  for (auto _ : state) {
    for (const std::int64_t offset : offsets)
      benchmark::DoNotOptimize(lines.indexOfLineContaining(offset));
  }
}

VELMAR_PAIR("lineArray/offset-to-line", 1.2, findInStarts, findInLines, 1'000, 100'000, 1'000'000);

/// Promised: 20 million a second at 100,000 lines.
void offsetToLine(benchmark::State& state) {
  const auto& lines = loaded<DocumentText>(state.range(0));
  const auto offsets = randomOffsets(state.range(0) * 33);
  for (auto _ : state) {
    for (const std::int64_t offset : offsets)
      benchmark::DoNotOptimize(lines.indexOfLineContaining(offset));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(offsets.size()));
}
BENCHMARK(offsetToLine)->Name("lineArray/offset-to-line/rate")->Arg(100'000);

/// Line starts with each line's text in a block of its own, taken in and given up.
class StartsWithText {
public:
  void replace(std::int64_t from, std::int64_t to, std::u16string_view text) {
    const auto first = starts_.lineContaining(from);
    const auto last = starts_.lineContaining(to);
    starts_.replace(from, to, text);
    std::vector<std::unique_ptr<std::u16string>> added;
    for (std::size_t start = 0; start < text.size();) {
      const std::size_t end = std::min(text.find(u'\n', start), text.size() - 1) + 1;
      added.push_back(std::make_unique<std::u16string>(text.substr(start, end - start)));
      start = end;
    }
    texts_.erase(texts_.begin() + first, texts_.begin() + last);
    texts_.insert(texts_.begin() + first, std::make_move_iterator(added.begin()),
                  std::make_move_iterator(added.end()));
  }

private:
  bench::BareStarts<std::uint32_t> starts_;
  std::vector<std::unique_ptr<std::u16string>> texts_;
};

void apply(StartsWithText& lines, const RecordedEdit& edit) {
  lines.replace(edit.offset, edit.offset + edit.removed, edit.inserted);
}

/// Pastes 50,000 lines at the start of a line in the middle of 100,000, and removes them.
template <class Lines>
void paste(bench::State& state) {
  constexpr std::int64_t lineCount = 100'000;
  Lines& lines = loaded<Lines>(lineCount);
  const auto offset = loaded<DocumentText>(lineCount).rangeOfLine(lineCount / 2).lowerBound;
  const RecordedEdit insertion{offset, 0, textOfLines(50'000)};
  const RecordedEdit removal{offset, static_cast<std::int64_t>(insertion.inserted.size()), u""};
  for (auto _ : state) {
    apply(lines, insertion);
    apply(lines, removal);
  }
}

VELMAR_PAIR("lineArray/paste-50,000-lines", 1.2, paste<StartsWithText>, paste<DocumentText>);
VELMAR_PAIR("lineArray/paste-50,000-lines-beside-starts", 0,
            paste<bench::BareStarts<std::uint32_t>>, paste<DocumentText>);

template <class Lines>
void play(const bench::Trace& trace, bench::State& state) {
  for (auto _ : state) {
    Lines lines;
    apply(lines, RecordedEdit{0, 0, trace.before});
    for (const RecordedEdit& edit : trace.edits)
      apply(lines, edit);
  }
}

/// The recordings say what the text is in the end.
void checkTrace(const bench::Trace& trace) {
  DocumentText lines;
  apply(lines, RecordedEdit{0, 0, trace.before});
  for (const RecordedEdit& edit : trace.edits)
    apply(lines, edit);
  precondition(lines.substringFor({0, lines.count()}) == trace.after,
               "A recorded session ended with another text than it should.");
}

bool registerTraces() {
  const auto folder = bench::traceFolder();
  if (!folder)
    return bench::leaveOut("lineArray/trace", "VELMAR_TRACES isn't set");
  try {
    for (const bench::Trace& read : bench::readTraces(*folder)) {
      checkTrace(read);
      const auto trace = std::make_shared<const bench::Trace>(read);
      const auto beside = [&](const std::string& suffix, double bound, bench::Side ours) {
        bench::registerPair({.name = "lineArray/trace" + suffix + "/" + trace->name,
                             .bound = bound,
                             .floor =
                                 [trace](bench::State& state) {
                                   play<bench::BareStarts<std::uint32_t>>(*trace, state);
                                 },
                             .ours = std::move(ours)});
      };
      beside("", 1.3, [trace](bench::State& state) { play<DocumentText>(*trace, state); });
      beside("-without-text", 1.3,
             [trace](bench::State& state) { play<UTF16LineArray<NoLineStorage>>(*trace, state); });
    }
  } catch (const std::exception& error) {
    return bench::leaveOut("lineArray/trace", error.what());
  }
  return true;
}

[[maybe_unused]] const bool tracesRegistered = registerTraces();

} // namespace

} // namespace velmar
