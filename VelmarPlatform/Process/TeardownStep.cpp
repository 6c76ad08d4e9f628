#include "VelmarPlatform/Process/TeardownStep.h"

#include <csignal>

namespace velmar {

TeardownStep TeardownStep::gracefulShutDown(Clock::Duration allowedDurationToNextStep) {
  return sendSignal(SIGTERM, allowedDurationToNextStep);
}

} // namespace velmar
