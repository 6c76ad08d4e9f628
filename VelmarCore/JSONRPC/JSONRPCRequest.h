// What a method is to a session of JSON-RPC: a record of its parameters, with the name that it goes
// by and the type of the answer.
//
//   struct Completion {
//     using Result = std::vector<Item>;
//     static constexpr std::string_view method = "textDocument/completion";
//
//     std::string uri;                      // the parameters: a record like any other
//     static std::span<const FieldRow> rows();
//   };
//
// A notification is the same without a `Result`. Three more members may be there:
//
//   using ErrorData = …;                              // what `data` of an error holds
//   static constexpr bool encodesParameters = false;  // "params" isn't written, as for "shutdown"
//   static Completion withoutParameters();            // what to take for missing "params"
#pragma once

#include "VelmarCore/JSONRPC/JSONRPCError.h"
#include "VelmarPlatform/Coding/Coder.h"

#include <concepts>
#include <string_view>

namespace velmar {

namespace detail {

template <class T>
struct ErrorDataOf {
  using Type = JSONRPCVoid;
};
template <class T>
  requires requires { typename T::ErrorData; }
struct ErrorDataOf<T> {
  using Type = typename T::ErrorData;
};

template <class T>
concept JSONRPCMethod = Codable<T> && std::default_initializable<T> && std::movable<T> && requires {
  { T::method } -> std::convertible_to<std::string_view>;
};

template <JSONRPCMethod T>
[[nodiscard]] constexpr bool encodesParameters() {
  if constexpr (requires { T::encodesParameters; })
    return T::encodesParameters;
  else
    return true;
}

/// The value of a message without "params". Throws `emptyParametersNotAllowed()` unless `T` says
/// what to take.
template <JSONRPCMethod T>
[[nodiscard]] T withoutParameters() {
  if constexpr (requires {
                  { T::withoutParameters() } -> std::same_as<T>;
                })
    return T::withoutParameters();
  else
    throw emptyParametersNotAllowed();
}

} // namespace detail

/// The type of an error's data, `JSONRPCVoid` where the request names none.
template <class Request>
using JSONRPCErrorDataOf = typename detail::ErrorDataOf<Request>::Type;

template <class T>
concept JSONRPCRequest = detail::JSONRPCMethod<T> && requires { typename T::Result; } &&
                         Codable<typename T::Result> && Codable<JSONRPCErrorDataOf<T>>;

template <class T>
concept JSONRPCNotification = detail::JSONRPCMethod<T> && !requires { typename T::Result; };

} // namespace velmar
