// What goes wrong with a child process: it can't be started, or it ends otherwise than it should.
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Process/TerminationStatus.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmar {

/// The message tells a user what to look after: “The program “npm” wasn't found in /usr/bin, /bin.”
class SubprocessError : public Error {
public:
  enum class Kind {
    programNotFound,
    programNotUsable,          ///< No permission, no program of this system, or a folder.
    workingDirectoryNotUsable, ///< Missing, no folder, or no permission.
    invalidArgument,           ///< A text that no process can be given, such as one with a NUL.
    notStarted,                ///< The system refused for another reason: see `code`.
    exitStatus,                ///< It ran and didn't exit with 0: see `status`.
    signal,                    ///< It ran and was ended by a signal: see `status`.
    statusLost,                ///< It ended, but somebody else in this process took its status.
  };

  SubprocessError(Kind kind, std::string message, int code = 0)
      : Error(std::move(message)), kind_(kind), code_(code) {}
  /// The failure that the end of `program` is: “The program “npm” ended with exit status 1.” An
  /// empty name makes it “The command”.
  explicit SubprocessError(TerminationStatus status, std::string_view program = {});

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  /// The `errno` of what couldn't be started, else 0.
  [[nodiscard]] int code() const noexcept { return code_; }
  /// How it ended, for `exitStatus` and `signal`.
  [[nodiscard]] std::optional<TerminationStatus> status() const noexcept { return status_; }

private:
  Kind kind_;
  int code_ = 0;
  std::optional<TerminationStatus> status_;
};

} // namespace velmar
