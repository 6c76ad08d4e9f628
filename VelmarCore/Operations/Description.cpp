#include "VelmarCore/Operations/Description.h"

namespace velmar {

std::string descriptionOfFailure(const std::exception_ptr& failure) {
  if (failure == nullptr)
    return "";
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception& error) {
    return repairedUTF8(error.what());
  } catch (...) { // a boundary: what is thrown here says nothing of itself
    return "An unknown error occurred.";
  }
}

} // namespace velmar
