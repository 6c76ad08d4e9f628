#include "VelmarPlatform/Basics/Precondition.h"

#include <cstdio>
#include <cstdlib>

namespace velmar {

void preconditionFailed(std::string_view message, std::source_location location) noexcept {
  std::fprintf(stderr, "%s:%u: precondition failed in %s: %.*s\n", location.file_name(),
               static_cast<unsigned>(location.line()), location.function_name(),
               static_cast<int>(message.size()), message.data());
  std::fflush(stderr);
  std::abort();
}

} // namespace velmar
