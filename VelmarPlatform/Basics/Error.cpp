#include "VelmarPlatform/Basics/Error.h"

#include <system_error>

namespace velmar {

std::string systemErrorText(int code) {
  return std::generic_category().message(code);
}

} // namespace velmar
