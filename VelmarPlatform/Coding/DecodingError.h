// Why a document can't be read as a record, or a record can't be written.
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Coding/CodingKey.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <utility>

namespace velmar {

/// What kind of failure a DecodingError is; four names that readers of other coding layers know.
enum class DecodingErrorKind : std::uint8_t {
  typeMismatch,  ///< A value of another shape stands there.
  valueNotFound, ///< Null, or nothing more, stands where a value must be.
  keyNotFound,   ///< A table lacks a key.
  dataCorrupted, ///< The shape is right and the value isn't.
};

/// A failure before it is known where.
struct DecodingFailure {
  DecodingErrorKind kind = DecodingErrorKind::dataCorrupted;
  /// A sentence.
  std::string description;
};

/// A document that isn't what it was to be read as.
class DecodingError : public Error {
public:
  DecodingError(DecodingFailure failure, CodingPath path,
                std::exception_ptr underlyingError = nullptr);

  [[nodiscard]] DecodingErrorKind kind() const noexcept { return kind_; }
  /// Where, from the root of what was decoded. `message()` is the description and the path.
  [[nodiscard]] const CodingPath& codingPath() const noexcept { return path_; }
  /// The sentence without the path.
  [[nodiscard]] const std::string& description() const noexcept { return description_; }
  /// What led to it, or null.
  [[nodiscard]] std::exception_ptr underlyingError() const noexcept { return underlyingError_; }
  /// Where in the bytes, from 0, if the text itself can't be parsed.
  [[nodiscard]] std::optional<std::int64_t> byteOffset() const noexcept { return byteOffset_; }
  void setByteOffset(std::int64_t offset) noexcept { byteOffset_ = offset; }

private:
  DecodingErrorKind kind_;
  CodingPath path_;
  std::string description_;
  std::exception_ptr underlyingError_;
  std::optional<std::int64_t> byteOffset_;
};

/// A record that can't be written in a form: a number that isn't finite, in JSON.
class EncodingError : public Error {
public:
  EncodingError(std::string description, CodingPath path);

  [[nodiscard]] const CodingPath& codingPath() const noexcept { return path_; }
  [[nodiscard]] const std::string& description() const noexcept { return description_; }

private:
  CodingPath path_;
  std::string description_;
};

} // namespace velmar
