// Keystrokes in large documents, with everything kept up to date by the packs of the house, beside
// what the bare runtime alone must do for the layers that they change. One iteration types all of
// them, each at a place of its own, and takes them back.

#include "bench/Pair.h"
#include "bench/packs/KeystrokeSubjects.h"

#include <memory>
#include <string>

namespace velmar::bench {

namespace {

using Repaint = BareKeystrokes::Repaint;

/// Keeps the last one, which is wanted ten times in a row.
PreparedKeystrokes& prepared(const KeystrokeSubject& subject, Keys keys) {
  static std::string name;
  static std::unique_ptr<PreparedKeystrokes> last;
  const std::string wanted = subject.name + (keys == Keys::plain ? "" : "/unbalancing");
  if (name != wanted) {
    last.reset();
    last = std::make_unique<PreparedKeystrokes>(subject, keys);
    name = wanted;
  }
  return *last;
}

void registerKeystrokes(const KeystrokeSubject& subject, const KeystrokeManner& manner) {
  const std::string name = "keystroke/" + subject.name + manner.suffix;
  if (isLeftOut(subject)) {
    leaveOut(name, "VELMAR_LARGE isn't set");
    return;
  }
  registerPair({.name = name,
                .bound = goalsOf(subject, manner).instructions,
                .floor =
                    [=](State& state) {
                      BareKeystrokes& bare = *prepared(subject, manner.keys).bare;
                      for (auto _ : state)
                        bare.play(manner.repaint, [](std::size_t) {});
                    },
                .ours =
                    [=](State& state) {
                      PreparedKeystrokes& keystrokes = prepared(subject, manner.keys);
                      for (auto _ : state)
                        keystrokes.play(manner.repaint, [](std::size_t) {});
                    }});
}

[[maybe_unused]] const bool registered = [] {
  for (const KeystrokeSubject& subject : keystrokeSubjects()) {
    for (const KeystrokeManner& manner : keystrokeManners()) {
      if (subject.bound > 0 || manner.suffix.empty())
        registerKeystrokes(subject, manner);
    }
  }
  return true;
}();

} // namespace

} // namespace velmar::bench
