// Keystrokes in large documents, with everything kept up to date by the packs of the house, beside
// what the bare runtime alone must do for the layers that they change. One iteration types all of
// them, each at a place of its own, and takes them back.
//
// VELMAR_KEYSTROKES says how many (20; 500 make a good picture). With VELMAR_LARGE set the largest
// documents are measured, too, which take a minute each to load where instructions are counted.

#include "VelmarParser/Highlight/Highlight.h"
#include "bench/Pair.h"
#include "bench/packs/Documents.h"
#include "bench/packs/Keystrokes.h"

#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmar::bench {

namespace {

using Repaint = BareKeystrokes::Repaint;

struct Subject {
  std::string name;
  std::string language;
  std::function<std::u16string()> text;
  double bound = 1.25;
  bool isLarge = false;
};

std::vector<Subject> subjects() {
  return {
      {"javascript/9MB", "javascript", [] { return javaScript(9'000'000); }, 1.10, true},
      {"typescript/40000Lines", "typescript", [] { return typeScript(40'000); }, 1.10},
      {"cpp/18000Lines", "cpp", [] { return cPlusPlus(18'000); }, 1.10},
      {"python/5000Lines", "python", [] { return python(5'000); }, 1.10},
      {"html/200Scripts", "html", [] { return html(200); }},
      {"markdown/1000Fences", "markdown", [] { return shortMarkdown(1'000); }},
      {"cpp/unclosedQuote", "cpp", [] { return openQuote(10'000); }},
      {"curve/1000Lines", "typescript", [] { return typeScript(1'000); }, 0},
      {"curve/10000Lines", "typescript", [] { return typeScript(10'000); }, 0},
      {"curve/100000Lines", "typescript", [] { return typeScript(100'000); }, 0, true},
  };
}

std::size_t keystrokeCount(std::int64_t length) {
  constexpr std::int64_t manyUnits = 4'000'000;
  const char* const wanted = std::getenv("VELMAR_KEYSTROKES"); // NOLINT(concurrency-mt-unsafe)
  const std::size_t count = wanted ? std::strtoul(wanted, nullptr, 10) : 0;
  return length > manyUnits || count == 0 ? 20 : count;
}

/// A document at rest with keystrokes to come.
struct Prepared {
  Prepared(const Subject& subject, Keys keys) : document(packedLanguage(subject.language)) {
    document.replaceSubrange({0, 0}, subject.text());
    keystrokes = keystrokesIn(document.count(), keystrokeCount(document.count()), keys);
    bare.emplace(document, keystrokes);
  }

  Parse document;
  std::vector<Keystroke> keystrokes;
  std::optional<BareKeystrokes> bare;
};

/// Keeps the last one, which is wanted ten times in a row.
Prepared& prepared(const Subject& subject, Keys keys) {
  static std::string name;
  static std::unique_ptr<Prepared> last;
  const std::string wanted = subject.name + (keys == Keys::plain ? "" : "/unbalancing");
  if (name != wanted) {
    last.reset();
    last = std::make_unique<Prepared>(subject, keys);
    name = wanted;
  }
  return *last;
}

void paint(const Parse& document, std::int64_t place) {
  const TextRange lines = linesAround(document.text(), place);
  for (const Parse::Layer& layer : document.layersIntersecting(lines))
    benchmark::DoNotOptimize(highlight(layer, lines));
}

void type(Parse& document, const Keystroke& keystroke, Repaint repaint) {
  const auto& [place, text] = keystroke;
  document.replaceSubrange({place, place}, text);
  if (repaint == Repaint::yes)
    paint(document, place);
  document.replaceSubrange({place, place + static_cast<std::int64_t>(text.size())}, u"");
  if (repaint == Repaint::yes)
    paint(document, place);
}

void registerKeystrokes(const Subject& subject, const std::string& kind, Keys keys, Repaint repaint,
                        double bound) {
  const std::string name = "keystroke/" + subject.name + kind;
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets any
  if (subject.isLarge && !std::getenv("VELMAR_LARGE")) {
    leaveOut(name, "VELMAR_LARGE isn't set");
    return;
  }
  registerPair({.name = name,
                .bound = bound,
                .floor =
                    [=](State& state) {
                      BareKeystrokes& bare = *prepared(subject, keys).bare;
                      for (auto _ : state)
                        bare.play(repaint, [](std::size_t) {});
                    },
                .ours =
                    [=](State& state) {
                      Prepared& document = prepared(subject, keys);
                      for (auto _ : state) {
                        for (const Keystroke& keystroke : document.keystrokes)
                          type(document.document, keystroke, repaint);
                      }
                    }});
}

[[maybe_unused]] const bool registered = [] {
  for (const Subject& subject : subjects()) {
    registerKeystrokes(subject, "", Keys::plain, Repaint::no, subject.bound);
    if (subject.bound == 0)
      continue;
    registerKeystrokes(subject, "/repaint", Keys::plain, Repaint::yes, 1.25);
    registerKeystrokes(subject, "/unbalancing", Keys::unbalancing, Repaint::no, subject.bound);
  }
  return true;
}();

} // namespace

} // namespace velmar::bench
