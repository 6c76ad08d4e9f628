// What is wrong with a pattern that doesn't compile.
#pragma once

#include "VelmarPlatform/Basics/Error.h"

#include <cstdint>
#include <string>
#include <utility>

namespace velmar {

/// A pattern that the expression engine refuses.
class RegularExpressionError : public Error {
public:
  RegularExpressionError(std::string reason, std::int64_t offset)
      : Error("The regular expression isn't valid: " + reason + "."), reason_(std::move(reason)),
        offset_(offset) {}

  /// What is wrong and where, to be put into a sentence: "a parenthesis has no partner at offset
  /// 3".
  [[nodiscard]] const std::string& reason() const noexcept { return reason_; }
  /// How many bytes of the pattern had been read when the fault was found.
  [[nodiscard]] std::int64_t offset() const noexcept { return offset_; }

private:
  std::string reason_;
  std::int64_t offset_;
};

} // namespace velmar
