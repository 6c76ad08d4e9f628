// Where the time of one edit went, step by step: for whoever measures keystrokes. A document keeps
// no such account unless somebody asks for it with `Parse::setEditObserver`.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <numeric>

namespace velmar {

/// The steps of an edit. All but the first are taken in each layer, and what a layer's sublayers
/// take counts as theirs.
enum class EditPhase : std::uint8_t {
  text,       ///< Changing the lines, and all that is left to do once.
  treeEdit,   ///< Moving the nodes of the old tree.
  parse,      ///< The runtime's parse.
  changes,    ///< Comparing the new tree with the old one, and freeing that.
  injections, ///< Finding the languages inside, and keeping, making and dropping their layers.
  spans,      ///< Noting the lexical classes.
};
inline constexpr std::size_t editPhaseCount = 6;

class EditTimes {
public:
  [[nodiscard]] std::chrono::nanoseconds operator[](EditPhase phase) const noexcept {
    return times_[static_cast<std::size_t>(phase)];
  }
  /// The whole edit: each of its nanoseconds belongs to exactly one phase.
  [[nodiscard]] std::chrono::nanoseconds total() const noexcept {
    return std::accumulate(times_.begin(), times_.end(), std::chrono::nanoseconds(0));
  }
  void add(EditPhase phase, std::chrono::nanoseconds time) noexcept {
    times_[static_cast<std::size_t>(phase)] += time;
  }

private:
  std::array<std::chrono::nanoseconds, editPhaseCount> times_{};
};

namespace detail {

/// Runs during one edit, which begins with its text. It is read once at each step from one phase to
/// the next.
class EditClock {
public:
  void enter(EditPhase phase) noexcept {
    const auto now = Clock::now();
    times_.add(phase_, now - since_);
    phase_ = phase;
    since_ = now;
  }

  /// The account up to now.
  [[nodiscard]] EditTimes stop() noexcept {
    enter(phase_);
    return times_;
  }

private:
  using Clock = std::chrono::steady_clock;

  EditTimes times_;
  EditPhase phase_ = EditPhase::text;
  Clock::time_point since_ = Clock::now();
};

} // namespace detail

} // namespace velmar
