#include "VelmarCore/Operations/OperationError.h"

#include "VelmarCore/Operations/Description.h"
#include "VelmarPlatform/Basics/Precondition.h"

namespace velmar {

std::shared_ptr<const OperationError> OperationError::wrapping(std::exception_ptr failure) {
  precondition(failure != nullptr, "There is no failure to wrap.");
  try {
    std::rethrow_exception(failure);
  } catch (const OperationError& error) {
    // The exception pointer owns the object, and is kept in place of it.
    auto owner = std::make_shared<std::exception_ptr>(failure);
    return {std::move(owner), &error};
  } catch (...) { // a boundary: it is the failure that was given, which we keep
    std::string reason = descriptionOfFailure(failure);
    return std::make_shared<OperationError>(std::move(reason),
                                            Details{.underlyingError = std::move(failure)});
  }
}

} // namespace velmar
