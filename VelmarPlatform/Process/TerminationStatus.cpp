#include "VelmarPlatform/Process/TerminationStatus.h"

#include <cstring>
#include <ostream>

namespace velmar {

std::string TerminationStatus::description() const {
  return kind == Kind::exited ? "exit status " + std::to_string(value)
                              : "signal " + signalDescription(value);
}

std::string signalDescription(int signal) {
  const char* name = sigabbrev_np(signal);
  const char* words = sigdescr_np(signal);
  if (name == nullptr || words == nullptr)
    return std::to_string(signal);
  return std::string(name) + " (" + words + ")";
}

std::ostream& operator<<(std::ostream& stream, const TerminationStatus& status) {
  return stream << status.description();
}

} // namespace velmar
