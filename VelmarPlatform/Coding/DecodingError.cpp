#include "VelmarPlatform/Coding/DecodingError.h"

namespace velmar {
namespace {

std::string sentence(const std::string& description, const CodingPath& path) {
  return path.empty() ? description : description + " (at " + describe(path) + ")";
}

} // namespace

DecodingError::DecodingError(DecodingFailure failure, CodingPath path,
                             std::exception_ptr underlyingError)
    : Error(sentence(failure.description, path)), kind_(failure.kind), path_(std::move(path)),
      description_(std::move(failure.description)), underlyingError_(std::move(underlyingError)) {}

EncodingError::EncodingError(std::string description, CodingPath path)
    : Error(sentence(description, path)), path_(std::move(path)),
      description_(std::move(description)) {}

} // namespace velmar
