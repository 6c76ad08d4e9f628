#include "VelmarPlatform/Process/SubprocessError.h"

#include "VelmarPlatform/Unicode/UTF.h"

namespace velmar {

namespace {

std::string sentence(TerminationStatus status, std::string_view program) {
  const std::string subject =
      program.empty() ? "The command" : "The program “" + repairedUTF8(program) + "”";
  return subject +
         (status.kind == TerminationStatus::Kind::exited ? " ended with " : " was ended by ") +
         status.description() + ".";
}

} // namespace

SubprocessError::SubprocessError(TerminationStatus status, std::string_view program)
    : Error(sentence(status, program)),
      kind_(status.kind == TerminationStatus::Kind::exited ? Kind::exitStatus : Kind::signal),
      status_(status) {}

} // namespace velmar
