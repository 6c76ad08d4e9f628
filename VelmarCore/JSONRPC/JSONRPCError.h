// The error that one peer of a JSON-RPC session answers the other with, and that the session itself
// fails with.
#pragma once

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Coding/JSON/JSONCoding.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace velmar {

/// A number that says what kind of failure it is. Open: peers have codes of their own.
struct JSONRPCErrorCode {
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

/// A bare integer.
template <>
struct Coder<JSONRPCErrorCode> {
  static bool decode(Decoder from, JSONRPCErrorCode& into) { return from.read(into.rawValue); }
  static void encode(JSONRPCErrorCode value, Encoder& into) { into.integer(value.rawValue); }
};

/// Nothing: in place of parameters, a result or an error's data.
struct JSONRPCVoid {
  bool operator==(const JSONRPCVoid&) const = default;
};

/// Read from anything, and written as null.
template <>
struct Coder<JSONRPCVoid> {
  static bool decode(Decoder, JSONRPCVoid&) { return true; }
  static void encode(const JSONRPCVoid&, Encoder& into) { into.nil(); }
};

/// What error responses of all kinds have in common; catch this where the data doesn't matter.
class JSONRPCErrorProtocol : public Error {
public:
  [[nodiscard]] JSONRPCErrorCode code() const noexcept { return code_; }
  /// What the peer wrote; `message()` of the base is empty where this is absent.
  [[nodiscard]] const std::optional<std::string>& text() const noexcept { return text_; }
  /// `JSONRPCError(-32601, "No such method.")`, for logs.
  [[nodiscard]] virtual std::string debugDescription() const = 0;

protected:
  JSONRPCErrorProtocol(JSONRPCErrorCode code, std::optional<std::string> text)
      : Error(text.value_or("")), code_(code), text_(std::move(text)) {}
  [[nodiscard]] std::string describe(std::string_view data) const {
    return "JSONRPCError(" + code_.debugDescription() + ", \"" + message() + "\"" +
           std::string(data) + ")";
  }

private:
  JSONRPCErrorCode code_;
  std::optional<std::string> text_;
};

/// An error response. `T` is what its `data` holds.
template <class T>
class JSONRPCError final : public JSONRPCErrorProtocol {
public:
  using ErrorData = T;

  /// With the code 0, to be read into.
  JSONRPCError() : JSONRPCError(JSONRPCErrorCode()) {}
  explicit JSONRPCError(JSONRPCErrorCode code, std::optional<std::string> message = std::nullopt,
                        std::optional<T> data = std::nullopt)
      : JSONRPCErrorProtocol(code, std::move(message)), data_(std::move(data)) {}

  [[nodiscard]] const std::optional<T>& data() const noexcept { return data_; }
  [[nodiscard]] std::string debugDescription() const override {
    if constexpr (std::same_as<T, JSONRPCVoid>)
      return describe("");
    else
      return describe(", data: " + JSONEncoder({.sortedKeys = true}).encode(data_));
  }

  bool operator==(const JSONRPCError& other) const {
    return code() == other.code() && text() == other.text() && data_ == other.data_;
  }

private:
  std::optional<T> data_;
};

template <class T>
struct Coder<JSONRPCError<T>> {
  static bool decode(Decoder from, JSONRPCError<T>& into) {
    KeyedDecodingContainer table;
    JSONRPCErrorCode code;
    std::optional<std::string> message;
    std::optional<T> data;
    if (!from.open(table) || !table.read("code", code) ||
        !table.readIfPresent("message", message) || !table.readIfPresent("data", data))
      return false;
    into = JSONRPCError<T>(code, std::move(message), std::move(data));
    return true;
  }
  static void encode(const JSONRPCError<T>& value, Encoder& into) {
    into.table([&](TableEncoder& table) {
      table.write("code", value.code());
      table.writeIfPresent("data", value.data());
      table.writeIfPresent("message", value.text());
    });
  }
};

/// The failures that a session answers and fails with itself.
[[nodiscard]] JSONRPCError<JSONRPCVoid> unsupportedProtocolVersion(std::string_view version);
[[nodiscard]] JSONRPCError<JSONRPCVoid> methodNotFound(std::string_view method);
[[nodiscard]] JSONRPCError<JSONRPCVoid> emptyParametersNotAllowed();

} // namespace velmar

template <>
struct std::hash<velmar::JSONRPCErrorCode> {
  std::size_t operator()(velmar::JSONRPCErrorCode code) const noexcept {
    return std::hash<std::int64_t>()(code.rawValue);
  }
};
