// A failure as a user sees it at the end of a long-running job: why, and what to do about it.
#pragma once

#include "VelmarPlatform/Basics/Error.h"

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace velmar {

/// The failure of an operation or a step. Immutable; it has an identity: one that passes through
/// nested steps stays one object.
class OperationError : public Error {
public:
  /// Where there is more to read.
  struct HelpAnchor { ///< An anchor in the application's help book.
    std::string name;
    bool operator==(const HelpAnchor&) const = default;
  };
  struct HelpURL {
    std::string url;
    bool operator==(const HelpURL&) const = default;
  };
  using Help = std::variant<HelpAnchor, HelpURL>;

  struct Details {
    std::optional<std::string> recoverySuggestion = std::nullopt;
    std::optional<Help> help = std::nullopt;
    std::exception_ptr underlyingError = nullptr;
  };

  explicit OperationError(std::string reason) : OperationError(std::move(reason), Details()) {}
  OperationError(std::string reason, Details details)
      : Error(std::move(reason)), details_(std::move(details)) {}

  /// What went wrong, as a sentence.
  [[nodiscard]] const std::string& reason() const noexcept { return message(); }
  [[nodiscard]] const std::string& description() const noexcept { return message(); }
  [[nodiscard]] const std::optional<std::string>& recoverySuggestion() const noexcept {
    return details_.recoverySuggestion;
  }
  [[nodiscard]] const std::optional<Help>& help() const noexcept { return details_.help; }
  /// The failure that this one stands for; null if there is none.
  [[nodiscard]] const std::exception_ptr& underlyingError() const noexcept {
    return details_.underlyingError;
  }

  /// The very object that was thrown if `failure` is an OperationError, and otherwise a new one
  /// with the failure's description as its reason. `failure` isn't null.
  [[nodiscard]] static std::shared_ptr<const OperationError> wrapping(std::exception_ptr failure);

private:
  Details details_;
};

} // namespace velmar

template <>
struct std::hash<velmar::OperationError::HelpAnchor> {
  std::size_t operator()(const velmar::OperationError::HelpAnchor& anchor) const noexcept {
    return std::hash<std::string>()(anchor.name);
  }
};

template <>
struct std::hash<velmar::OperationError::HelpURL> {
  std::size_t operator()(const velmar::OperationError::HelpURL& link) const noexcept {
    return std::hash<std::string>()(link.url);
  }
};
