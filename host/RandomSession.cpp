#include "host/RandomSession.h"

#include <algorithm>
#include <array>
#include <random>

namespace velmar::host {

namespace {

/// What upsets a text most in one language or another.
constexpr std::array<std::u16string_view, 16> openings{
    u"\"",      u"'", u"`", u"/*", u"//", u"<!--", u"<script>", u"<style>",
    u"```js\n", u"{", u"(", u"${", u"</", u"#",    u"\\",       u"\xD83D"};
constexpr std::u16string_view signs = u" .,;:=+-*/<>!?&|()[]{}\"'_#@$%\n";

class Typist {
public:
  Typist(const std::u16string& text, std::uint64_t seed)
      : text_(text), random_(seed), usualCount_(std::ssize(text)) {}

  SessionEdit next() {
    if (isTakingBack_ && !done_.empty())
      return takeBack();
    isTakingBack_ = false;
    SessionEdit edit = isOpeningFresh_ && chance(80) ? edited(opening_, u"") : anything();
    done_.push_back(
        {.range = {edit.range.lowerBound, edit.range.lowerBound + std::ssize(edit.text)},
         .text = pieceAt(edit.range.lowerBound, edit.range.length())});
    apply(edit);
    if (chance(6)) { // The end of a thought.
      isTakingBack_ = chance(85);
      if (!isTakingBack_)
        done_.clear();
    }
    return edit;
  }

private:
  std::int64_t count() const { return std::ssize(text_); }
  /// A number from 0 up to `bound`, which isn't reached. Not the standard's distributions, whose
  /// numbers are left to the library.
  std::int64_t below(std::int64_t bound) {
    return static_cast<std::int64_t>(random_() %
                                     static_cast<std::uint64_t>(std::max<std::int64_t>(bound, 1)));
  }
  bool chance(std::int64_t percent) { return below(100) < percent; }

  void apply(const SessionEdit& edit) {
    text_.replace(static_cast<std::size_t>(edit.range.lowerBound),
                  static_cast<std::size_t>(edit.range.length()), edit.text);
    place_ = edit.range.lowerBound + std::ssize(edit.text);
  }

  /// Without this a text would soon be beyond repair, and one edit much like another.
  SessionEdit takeBack() {
    SessionEdit edit = std::move(done_.back());
    done_.pop_back();
    isOpeningFresh_ = false;
    apply(edit);
    return edit;
  }

  SessionEdit edited(TextRange range, std::u16string text) {
    isOpeningFresh_ = false;
    return {.range = range, .text = std::move(text)};
  }
  SessionEdit insertion(std::u16string text) { return edited({place_, place_}, std::move(text)); }

  SessionEdit anything() {
    if (chance(12))
      place_ = below(count() + 1);
    if (count() > usualCount_ * 3 / 2 + 200)
      return cut(400);
    const std::int64_t dice = below(100);
    if (dice < 50)
      return insertion(chance(60) ? word() : sign());
    if (dice < 74)
      return edited({std::max<std::int64_t>(place_ - 1 - below(8), 0), place_}, u"");
    if (dice < 82)
      return insertion(u"\n  ");
    if (dice < 88)
      return cut(80);
    if (dice < 93)
      return insertion(pieceAt(below(count()), 1 + below(120)));
    return opening();
  }

  SessionEdit cut(std::int64_t most) {
    return edited({place_, std::min(place_ + below(most) + 1, count())}, u"");
  }

  SessionEdit opening() {
    const auto text = openings[static_cast<std::size_t>(below(std::ssize(openings)))];
    SessionEdit edit = insertion(std::u16string(text));
    opening_ = {place_, place_ + std::ssize(text)};
    isOpeningFresh_ = true;
    return edit;
  }

  std::u16string sign() {
    return std::u16string(1, signs[static_cast<std::size_t>(below(std::ssize(signs)))]);
  }

  std::u16string pieceAt(std::int64_t start, std::int64_t length) const {
    return text_.substr(static_cast<std::size_t>(std::min(start, count())),
                        static_cast<std::size_t>(length));
  }

  /// One that stands somewhere in the text.
  std::u16string word() {
    const std::u16string piece = pieceAt(below(count()), 24);
    const auto isLetter = [](char16_t unit) {
      return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || unit > 0x7F;
    };
    const auto start = std::ranges::find_if(piece, isLetter);
    const auto end = std::find_if_not(start, piece.end(), isLetter);
    return start == end ? u"x" : std::u16string(start, end);
  }

  std::u16string text_;
  std::mt19937_64 random_;
  std::int64_t usualCount_;
  std::int64_t place_ = 0;
  TextRange opening_;
  bool isOpeningFresh_ = false;
  /// What takes back the edits of the present thought, the last one at the end.
  std::vector<SessionEdit> done_;
  bool isTakingBack_ = false;
};

} // namespace

std::vector<SessionEdit> randomEdits(const std::u16string& initial, std::int64_t count,
                                     std::uint64_t seed) {
  Typist typist(initial, seed);
  std::vector<SessionEdit> edits;
  for (std::int64_t edit = 0; edit < count; ++edit)
    edits.push_back(typist.next());
  return edits;
}

} // namespace velmar::host
