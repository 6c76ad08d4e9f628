#include "bench/packs/KeystrokeSubjects.h"

#include "VelmarParser/Highlight/Highlight.h"
#include "bench/packs/Documents.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>

namespace velmar::bench {

namespace {

std::size_t keystrokeCount(std::int64_t length) {
  constexpr std::int64_t manyUnits = 4'000'000;
  constexpr std::size_t fewKeys = 20;
  const char* const wanted = std::getenv("VELMAR_KEYSTROKES"); // NOLINT(concurrency-mt-unsafe)
  std::size_t count = wanted ? std::strtoul(wanted, nullptr, 10) : 0;
  if (count == 0)
    count = fewKeys;
  return length > manyUnits ? std::min(count, fewKeys) : count;
}

} // namespace

const std::vector<KeystrokeSubject>& keystrokeSubjects() {
  static const std::vector<KeystrokeSubject> all = {
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
  return all;
}

const std::vector<KeystrokeManner>& keystrokeManners() {
  static const std::vector<KeystrokeManner> all = {
      {"", Keys::plain, BareKeystrokes::Repaint::no},
      {"/repaint", Keys::plain, BareKeystrokes::Repaint::yes},
      {"/unbalancing", Keys::unbalancing, BareKeystrokes::Repaint::no},
  };
  return all;
}

KeystrokeGoals goalsOf(const KeystrokeSubject& subject, const KeystrokeManner& manner) {
  if (subject.bound == 0)
    return {};
  const bool isStrict = subject.bound < 1.25 && manner.repaint == BareKeystrokes::Repaint::no;
  if (manner.keys == Keys::unbalancing) {
    const double goal = isStrict ? 1.5 : 2;
    return {.instructions = goal, .slowest = goal};
  }
  return {.instructions = isStrict ? subject.bound : 1.25, .half = isStrict ? 1.25 : 1.5};
}

bool isLeftOut(const KeystrokeSubject& subject) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody sets any
  return subject.isLarge && !std::getenv("VELMAR_LARGE");
}

PreparedKeystrokes::PreparedKeystrokes(const KeystrokeSubject& subject, Keys keys)
    : document(packedLanguage(subject.language)) {
  document.replaceSubrange({0, 0}, subject.text());
  keystrokes = keystrokesIn(document.count(), keystrokeCount(document.count()), keys);
  bare.emplace(document, keystrokes);
}

void PreparedKeystrokes::paint(std::int64_t place, BareKeystrokes::Repaint repaint) const {
  if (repaint == BareKeystrokes::Repaint::no)
    return;
  const TextRange lines = linesAround(document.text(), place);
  for (const Parse::Layer& layer : document.layersIntersecting(lines))
    benchmark::DoNotOptimize(highlight(layer, lines));
}

} // namespace velmar::bench
