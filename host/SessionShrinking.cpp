#include "host/SessionShrinking.h"

#include <algorithm>
#include <span>

namespace velmar::host {

namespace {

using Offset = std::int64_t;

/// A place where the old course of edits has `was` and the new one `is`. They start at one offset;
/// all in front is the same, all behind is shifted.
struct Difference {
  TextRange was;
  TextRange is;

  [[nodiscard]] Offset map(Offset offset) const {
    if (offset >= was.upperBound)
      return offset - was.upperBound + is.upperBound;
    if (offset <= was.lowerBound)
      return offset;
    return std::min(is.lowerBound + (offset - was.lowerBound), is.upperBound);
  }
};

/// Where an edit leaves `offset`.
Offset moved(Offset offset, TextRange removed, Offset added) {
  if (offset >= removed.upperBound)
    return offset - removed.length() + added;
  return std::min(offset, removed.lowerBound);
}

TextRange moved(TextRange range, TextRange removed, Offset added) {
  const Offset lower = moved(range.lowerBound, removed, added);
  return {lower, std::max(lower, moved(range.upperBound, removed, added))};
}

/// Puts edits where they belong in a text that differs.
void follow(std::span<SessionEdit> edits, Difference difference) {
  for (SessionEdit& edit : edits) {
    const TextRange was = edit.range;
    const Offset lower = difference.map(was.lowerBound);
    edit.range = {lower, std::max(lower, difference.map(was.upperBound))};
    const Offset added = std::ssize(edit.text);
    difference.was = moved(difference.was, was, added);
    difference.is = moved(difference.is, edit.range, added);
    // An edit across the place ends the same in both: there they come together again.
    const Offset start = std::min(difference.was.lowerBound, difference.is.lowerBound);
    difference.was.lowerBound = start;
    difference.is.lowerBound = start;
  }
}

class Shrinker {
public:
  Shrinker(Session session, std::int64_t mostChecks, const SessionCheck& showsFault)
      : session_(std::move(session)), checksLeft_(mostChecks), showsFault_(showsFault) {}

  Session shrink() {
    bool isSmaller = true;
    while (isSmaller && checksLeft_ > 0) {
      isSmaller = leaveOut(std::ssize(session_.edits),
                           [this](Offset at, Offset count) { return withoutEdits(at, count); });
      isSmaller |= leaveOut(std::ssize(session_.initial),
                            [this](Offset at, Offset count) { return withoutInitial(at, count); });
      for (std::size_t i = 0; i < session_.edits.size(); ++i) {
        isSmaller |= leaveOut(std::ssize(session_.edits[i].text), [&](Offset at, Offset count) {
          return withoutInserted(i, at, count);
        });
        isSmaller |= takeLess(i);
      }
    }
    return std::move(session_);
  }

private:
  /// Tries to do without pieces of `size` parts, halves first, then ever smaller ones, from the
  /// back to the front. `without` makes the session without `count` parts from `at` on.
  template <class Without>
  bool leaveOut(Offset size, const Without& without) {
    bool isSmaller = false;
    for (Offset count = size; count > 0; count = count > 1 ? (count + 1) / 2 : 0) {
      for (Offset end = size; end > 0;) {
        const Offset start = std::max<Offset>(0, end - count);
        if (checksLeft_ > 0 && adopt(without(start, end - start))) {
          size -= end - start;
          isSmaller = true;
        }
        end = start;
      }
      count = std::min(count, std::max<Offset>(size, 1));
    }
    return isSmaller;
  }

  bool takeLess(std::size_t edit) {
    bool isSmaller = false;
    for (Offset count = session_.edits[edit].range.length(); count > 0 && checksLeft_ > 0;) {
      if (adopt(takingLess(edit, count)))
        isSmaller = true;
      else
        count /= 2;
      count = std::min(count, session_.edits[edit].range.length());
    }
    return isSmaller;
  }

  bool adopt(Session candidate) {
    --checksLeft_;
    if (!showsFault_(candidate))
      return false;
    session_ = std::move(candidate);
    return true;
  }

  [[nodiscard]] Session withoutEdits(Offset at, Offset count) const {
    Session session = session_;
    auto& edits = session.edits;
    // From the back: each one that goes is followed by all that are behind it.
    for (Offset i = at + count - 1; i >= at; --i) {
      const SessionEdit gone = edits[static_cast<std::size_t>(i)];
      const Offset start = gone.range.lowerBound;
      follow(std::span(edits).subspan(static_cast<std::size_t>(i) + 1),
             {.was = {start, start + std::ssize(gone.text)}, .is = gone.range});
      edits.erase(edits.begin() + i);
    }
    return session;
  }

  [[nodiscard]] Session withoutInitial(Offset at, Offset count) const {
    Session session = session_;
    session.initial.erase(static_cast<std::size_t>(at), static_cast<std::size_t>(count));
    follow(session.edits, {.was = {at, at + count}, .is = {at, at}});
    return session;
  }

  [[nodiscard]] Session withoutInserted(std::size_t edit, Offset at, Offset count) const {
    Session session = session_;
    session.edits[edit].text.erase(static_cast<std::size_t>(at), static_cast<std::size_t>(count));
    const Offset start = session.edits[edit].range.lowerBound + at;
    follow(std::span(session.edits).subspan(edit + 1),
           {.was = {start, start + count}, .is = {start, start}});
    return session;
  }

  /// `count` units fewer go, those at the end of the range.
  [[nodiscard]] Session takingLess(std::size_t edit, Offset count) const {
    Session session = session_;
    SessionEdit& changed = session.edits[edit];
    changed.range.upperBound -= count;
    const Offset start = changed.range.lowerBound + std::ssize(changed.text);
    follow(std::span(session.edits).subspan(edit + 1),
           {.was = {start, start}, .is = {start, start + count}});
    return session;
  }

  Session session_;
  std::int64_t checksLeft_;
  const SessionCheck& showsFault_;
};

} // namespace

Session shrunkSession(Session session, std::int64_t mostChecks, const SessionCheck& showsFault) {
  session.expectedFinal.reset();
  for (SessionEdit& edit : session.edits)
    edit.expected.reset();
  return Shrinker(std::move(session), mostChecks, showsFault).shrink();
}

} // namespace velmar::host
