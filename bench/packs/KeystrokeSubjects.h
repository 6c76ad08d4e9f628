// The documents in which keystrokes are measured beside the bare runtime, and what is aimed at.
//
// VELMAR_KEYSTROKES says how many keys are typed (20; 500 make a good picture). With VELMAR_LARGE
// set the largest documents are measured, too, which take a minute each to load where instructions
// are counted.
#pragma once

#include "VelmarParser/Document/Parse.h"
#include "bench/packs/Keystrokes.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmar::bench {

struct KeystrokeSubject {
  std::string name;
  std::string language;
  std::function<std::u16string()> text;
  double bound = 1.25; ///< On the ratio of instructions; 0 promises nothing.
  bool isLarge = false;
};

/// A way to type in each of them. All ratios are to the floor.
struct KeystrokeManner {
  std::string suffix; ///< Of a measurement's name.
  Keys keys = Keys::plain;
  BareKeystrokes::Repaint repaint = BareKeystrokes::Repaint::no;
};

/// What the ratios to the floor are to be at most; 0 promises nothing.
struct KeystrokeGoals {
  double instructions = 0; ///< A bound.
  double half = 0;         ///< By the clock, of the half of all keys.
  double slowest = 0;      ///< By the clock, of the slowest hundredth.
};

[[nodiscard]] KeystrokeGoals goalsOf(const KeystrokeSubject& subject,
                                     const KeystrokeManner& manner);

[[nodiscard]] const std::vector<KeystrokeSubject>& keystrokeSubjects();
[[nodiscard]] const std::vector<KeystrokeManner>& keystrokeManners();
/// Whether it is too large for this run.
[[nodiscard]] bool isLeftOut(const KeystrokeSubject& subject);

/// A document at rest with keystrokes to come, and the least that they cost.
struct PreparedKeystrokes {
  PreparedKeystrokes(const KeystrokeSubject& subject, Keys keys);

  /// Types all keystrokes and takes them back, and may paint the lines around each. Calls
  /// `after(index)` after each of these edits, from 0.
  template <class After>
  void play(BareKeystrokes::Repaint repaint, After after) {
    std::size_t index = 0;
    for (const auto& [place, text] : keystrokes) {
      document.replaceSubrange({place, place}, text);
      paint(place, repaint);
      after(index++);
      document.replaceSubrange({place, place + static_cast<std::int64_t>(text.size())}, u"");
      paint(place, repaint);
      after(index++);
    }
  }

  Parse document;
  std::vector<Keystroke> keystrokes;
  std::optional<BareKeystrokes> bare;

private:
  void paint(std::int64_t place, BareKeystrokes::Repaint repaint) const;
};

} // namespace velmar::bench
