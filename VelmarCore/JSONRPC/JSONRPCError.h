// The error that one peer of a JSON-RPC session answers the other with, and that the session itself
// fails with.
#pragma once

#include "VelmarPlatform/Basics/Error.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace velmar {

/// A number that says what kind of failure it is. Open: peers have codes of their own.
struct JSONRPCErrorCode {
  using RawValue = std::int64_t;
  std::int64_t rawValue = 0;

  static const JSONRPCErrorCode parseError, invalidRequest, methodNotFound, invalidParams,
      internalError;

  [[nodiscard]] std::string debugDescription() const { return std::to_string(rawValue); }
  auto operator<=>(const JSONRPCErrorCode&) const = default;
};

inline constexpr JSONRPCErrorCode JSONRPCErrorCode::parseError{-32700};
inline constexpr JSONRPCErrorCode JSONRPCErrorCode::invalidRequest{-32600};
inline constexpr JSONRPCErrorCode JSONRPCErrorCode::methodNotFound{-32601};
inline constexpr JSONRPCErrorCode JSONRPCErrorCode::invalidParams{-32602};
inline constexpr JSONRPCErrorCode JSONRPCErrorCode::internalError{-32603};

/// Nothing: in place of parameters, a result or an error's data.
struct JSONRPCVoid {
  bool operator==(const JSONRPCVoid&) const = default;
};

/// An error response. `T` is what its `data` holds.
template <class T>
class JSONRPCError : public Error {
public:
  explicit JSONRPCError(JSONRPCErrorCode code, std::optional<std::string> message = std::nullopt,
                        std::optional<T> data = std::nullopt)
      : Error(message.value_or("")), code_(code), text_(std::move(message)),
        data_(std::move(data)) {}

  [[nodiscard]] JSONRPCErrorCode code() const noexcept { return code_; }
  /// What the peer wrote; `message()` of the base is empty where this is absent.
  [[nodiscard]] const std::optional<std::string>& text() const noexcept { return text_; }
  [[nodiscard]] const std::optional<T>& data() const noexcept { return data_; }

  bool operator==(const JSONRPCError& other) const {
    return code_ == other.code_ && text_ == other.text_ && data_ == other.data_;
  }

private:
  JSONRPCErrorCode code_;
  std::optional<std::string> text_;
  std::optional<T> data_;
};

} // namespace velmar

template <>
struct std::hash<velmar::JSONRPCErrorCode> {
  std::size_t operator()(velmar::JSONRPCErrorCode code) const noexcept {
    return std::hash<std::int64_t>()(code.rawValue);
  }
};
