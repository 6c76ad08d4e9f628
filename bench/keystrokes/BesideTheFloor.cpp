#include "bench/keystrokes/BesideTheFloor.h"

#include "bench/Table.h"
#include "bench/packs/KeystrokeSubjects.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>

namespace velmar::bench {

namespace {

using Repaint = BareKeystrokes::Repaint;

/// Nanoseconds from one call to the next.
class Laps {
public:
  void start() { last_ = std::chrono::steady_clock::now(); }
  void lap() {
    const auto now = std::chrono::steady_clock::now();
    times_.push_back(std::chrono::duration<double, std::nano>(now - last_).count());
    last_ = std::chrono::steady_clock::now(); // growing the list is nobody's time
  }
  [[nodiscard]] double quantile(double share) {
    const auto index = static_cast<std::size_t>(share * static_cast<double>(times_.size() - 1));
    std::ranges::nth_element(times_, times_.begin() + static_cast<std::ptrdiff_t>(index));
    return times_[index];
  }

private:
  std::chrono::steady_clock::time_point last_;
  std::vector<double> times_;
};

void measure(const KeystrokeSubject& subject, const KeystrokeManner& manner,
             PreparedKeystrokes& prepared) {
  Laps floor;
  Laps ours;
  // Twice each: whatever else the machine does then falls on both.
  for (int round = 0; round < 2; ++round) {
    floor.start();
    prepared.bare->play(manner.repaint, [&](std::size_t) { floor.lap(); });
    ours.start();
    prepared.play(manner.repaint, [&](std::size_t) { ours.lap(); });
  }
  const KeystrokeGoals goals = goalsOf(subject, manner);
  std::cout << lineFor(LatencyResult{
                   .name = subject.name + manner.suffix,
                   .half = {floor.quantile(0.5), ours.quantile(0.5), goals.half},
                   .slowest = {floor.quantile(0.99), ours.quantile(0.99), goals.slowest}})
            << '\n'
            << std::flush;
}

} // namespace

void measureBesideTheFloor(const std::regex& filter) {
  std::cout << latencyHeading() << '\n';
  for (const KeystrokeSubject& subject : keystrokeSubjects()) {
    std::unique_ptr<PreparedKeystrokes> prepared;
    Keys keys{};
    for (const KeystrokeManner& manner : keystrokeManners()) {
      if (!std::regex_search(subject.name + manner.suffix, filter))
        continue;
      if (isLeftOut(subject)) {
        std::cout << subject.name + manner.suffix << ": left out, VELMAR_LARGE isn't set\n";
        continue;
      }
      if (!prepared || keys != manner.keys) {
        prepared.reset(); // two of the largest documents at once are too much
        prepared = std::make_unique<PreparedKeystrokes>(subject, manner.keys);
        keys = manner.keys;
      }
      measure(subject, manner, *prepared);
    }
  }
}

} // namespace velmar::bench
