#include "host/TreeWatch.h"

#include "VelmarPlatform/Unicode/UTF.h"
#include "host/LayerList.h"
#include "host/SourceText.h"

#include <algorithm>
#include <fmt/format.h>

namespace velmar::host {

namespace {

/// Whether the place behind `first` and in front of `second` is inside something.
bool belongTogether(char16_t first, char16_t second) {
  return (first == u'\r' && second == u'\n') ||
         (isLeadSurrogate(first) && isTrailSurrogate(second));
}

bool canCut(std::u16string_view text, std::size_t at) {
  return at == 0 || at == text.size() || !belongTogether(text[at - 1], text[at]);
}

} // namespace

Replacement replacementBetween(std::u16string_view before, std::u16string_view after) {
  const std::size_t shorter = std::min(before.size(), after.size());
  auto prefix = static_cast<std::size_t>(
      std::mismatch(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(shorter),
                    after.begin())
          .first -
      before.begin());
  while (!canCut(before, prefix) || !canCut(after, prefix))
    --prefix;

  const auto rest = static_cast<std::ptrdiff_t>(shorter - prefix);
  auto suffix = static_cast<std::size_t>(
      std::mismatch(before.rbegin(), before.rbegin() + rest, after.rbegin()).first -
      before.rbegin());
  while (!canCut(before, before.size() - suffix) || !canCut(after, after.size() - suffix))
    --suffix;

  return {.range = {static_cast<std::int64_t>(prefix),
                    static_cast<std::int64_t>(before.size() - suffix)},
          .text = after.substr(prefix, after.size() - suffix - prefix)};
}

void updateAndReport(OpenDocument& document, std::u16string_view after, Streams& streams) {
  Parse& parse = document.parse();
  const std::u16string before = parse.textFor(TextRange(0, parse.count()));
  const Replacement edit = replacementBetween(before, after);
  if (edit.range.isEmpty() && edit.text.empty())
    return;
  const auto start = streams.now();
  const TextRangeSet changed = parse.replaceSubrange(edit.range, edit.text);
  const std::chrono::duration<double, std::milli> time = streams.now() - start;

  const auto place = parse.text().positionOf(edit.range.lowerBound);
  streams.output.write(fmt::format("{}:{}", place.line + 1, place.column + 1), Style::heading);
  streams.output.write(fmt::format(
      " -{} +{} units, changed {}, {} layers, {:.2f} ms\n", edit.range.length(), edit.text.size(),
      placesOf(parse.text(), changed), parse.layers().size(), time.count()));
}

void watchDocument(OpenDocument& document, const std::string& path, FileWatch& watch,
                   Streams& streams) {
  streams.output.flush();
  while (watch.wait() == FileWatch::Event::changed) {
    try {
      const SourceText source = readSource(path, streams);
      for (const std::string& note : source.notes)
        streams.errors.write(fmt::format("velmar: {}\n", note));
      updateAndReport(document, source.text->substringFor({0, source.text->count()}), streams);
    } catch (const Error& error) {
      streams.errors.write(fmt::format("velmar: {}\n", error.message()));
    }
    streams.output.flush();
    streams.errors.flush();
  }
}

} // namespace velmar::host
