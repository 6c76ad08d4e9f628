// How a process ended.
#pragma once

#include <compare>
#include <iosfwd>
#include <string>

namespace velmar {

/// A process ends with an exit status or by a signal.
struct TerminationStatus {
  enum class Kind { exited, signalled };

  Kind kind = Kind::exited;
  /// The exit status, from 0 to 255, or the signal's number.
  int value = 0;

  [[nodiscard]] static TerminationStatus exited(int status) { return {Kind::exited, status}; }
  [[nodiscard]] static TerminationStatus signalled(int signal) { return {Kind::signalled, signal}; }

  /// Whether it exited with the status 0.
  [[nodiscard]] bool isSuccess() const noexcept { return kind == Kind::exited && value == 0; }
  /// "exit status 3", or "signal KILL (Killed)".
  [[nodiscard]] std::string description() const;

  bool operator==(const TerminationStatus&) const = default;
};

/// A signal's name and the system's words for it: "SEGV (Segmentation fault)"; "99" for one that
/// has none.
[[nodiscard]] std::string signalDescription(int signal);

/// Writes the description.
std::ostream& operator<<(std::ostream& stream, const TerminationStatus& status);

} // namespace velmar
