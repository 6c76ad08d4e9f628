// The messages of JSON-RPC 2.0 as they stand on the wire. Sessions make and read them; hardly
// anybody else needs to.
#pragma once

#include "VelmarCore/JSON/JSONValue.h"
#include "VelmarCore/JSONRPC/JSONRPCRequest.h"
#include "VelmarPlatform/Coding/JSON/JSONCoding.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace velmar {

/// What a request and its response share: a text, an integer or null.
class JSONRPCMessageID {
public:
  struct Null {
    bool operator==(const Null&) const = default;
  };
  using Value = std::variant<std::string, std::int64_t, Null>;

  JSONRPCMessageID() : value_(Null()) {}
  // NOLINTBEGIN(google-explicit-constructor): each of these is an id.
  JSONRPCMessageID(std::string text) : value_(std::move(text)) {}
  JSONRPCMessageID(const char* text) : value_(std::string(text)) {}
  JSONRPCMessageID(std::int64_t number) : value_(number) {}
  JSONRPCMessageID(int number) : value_(std::int64_t{number}) {}
  // NOLINTEND(google-explicit-constructor)

  [[nodiscard]] const Value& value() const noexcept { return value_; }
  /// The text, the number, or "<null>".
  [[nodiscard]] std::string debugDescription() const;
  bool operator==(const JSONRPCMessageID&) const = default;

private:
  Value value_;
};

std::ostream& operator<<(std::ostream& stream, const JSONRPCMessageID& id);

template <>
struct Coder<JSONRPCMessageID> {
  static bool decode(Decoder from, JSONRPCMessageID& into);
  static void encode(const JSONRPCMessageID& value, Encoder& into);
};

/// The fields by which a message is routed; everything else is passed over. Only read.
struct Message {
  struct Request {
    JSONRPCMessageID id;
    std::string method;
  };
  struct Response {
    JSONRPCMessageID id;
  };
  struct Notification {
    std::string method;
  };
  std::variant<Request, Response, Notification> value;
};

template <>
struct Coder<Message> {
  static bool decode(Decoder from, Message& into);
  static void encode(const Message&, Encoder&) = delete;
};

/// A request with its typed parameters. The method's name is the type's.
template <class T>
struct RequestMessage {
  JSONRPCMessageID id;
  std::optional<T> params;
};
template <class T>
struct NotificationMessage {
  std::optional<T> params;
};

/// A request with whatever parameters.
struct RawRequestMessage {
  JSONRPCMessageID id;
  std::string method;
  std::optional<JSONValue> params;
};
struct RawNotificationMessage {
  std::string method;
  std::optional<JSONValue> params;
};

/// The answer to a request. Where both a result and an error stand in a message, the error counts.
template <class Result, class ErrorData>
struct ResponseMessage {
  struct Success {
    JSONRPCMessageID id;
    Result result;
  };
  struct Failure {
    JSONRPCMessageID id;
    JSONRPCError<ErrorData> error;
  };
  std::variant<Success, Failure> value;
};

namespace detail {

/// Opens a message and checks its version.
[[nodiscard]] bool openMessage(Decoder from, KeyedDecodingContainer& table);
/// The keys of a message in front of its parameters; without an id it is a
/// notification, without a method a response.
void writeHeader(TableEncoder& table, const JSONRPCMessageID* id,
                 std::optional<std::string_view> method);
/// The encoder of all messages.
[[nodiscard]] const JSONEncoder& messageEncoder();

} // namespace detail

template <class T>
struct Coder<RequestMessage<T>> {
  static bool decode(Decoder from, RequestMessage<T>& into) {
    KeyedDecodingContainer table;
    std::string method;
    return detail::openMessage(from, table) && table.read("id", into.id) &&
           table.read("method", method) && table.readIfPresent("params", into.params);
  }
  static void encode(const RequestMessage<T>& value, Encoder& into) {
    into.table([&](TableEncoder& table) {
      detail::writeHeader(table, &value.id, T::method);
      if constexpr (detail::encodesParameters<T>())
        table.writeIfPresent("params", value.params);
    });
  }
};

template <class T>
struct Coder<NotificationMessage<T>> {
  static bool decode(Decoder from, NotificationMessage<T>& into) {
    KeyedDecodingContainer table;
    std::string method;
    return detail::openMessage(from, table) && table.read("method", method) &&
           table.readIfPresent("params", into.params);
  }
  static void encode(const NotificationMessage<T>& value, Encoder& into) {
    into.table([&](TableEncoder& table) {
      detail::writeHeader(table, nullptr, T::method);
      if constexpr (detail::encodesParameters<T>())
        table.writeIfPresent("params", value.params);
    });
  }
};

template <>
struct Coder<RawRequestMessage> {
  static bool decode(Decoder from, RawRequestMessage& into);
  static void encode(const RawRequestMessage& value, Encoder& into);
};
template <>
struct Coder<RawNotificationMessage> {
  static bool decode(Decoder from, RawNotificationMessage& into);
  static void encode(const RawNotificationMessage& value, Encoder& into);
};

template <class Result, class ErrorData>
struct Coder<ResponseMessage<Result, ErrorData>> {
  using Response = ResponseMessage<Result, ErrorData>;
  static bool decode(Decoder from, Response& into) {
    KeyedDecodingContainer table;
    JSONRPCMessageID id;
    if (!detail::openMessage(from, table) || !table.read("id", id))
      return false;
    if (table.contains("error")) {
      auto& failure = into.value.template emplace<typename Response::Failure>();
      failure.id = std::move(id);
      return table.read("error", failure.error);
    }
    auto& success = into.value.template emplace<typename Response::Success>();
    success.id = std::move(id);
    return table.read("result", success.result);
  }
  static void encode(const Response& value, Encoder& into) {
    into.table([&](TableEncoder& table) {
      if (const auto* failure = std::get_if<typename Response::Failure>(&value.value)) {
        table.write("error", failure->error);
        detail::writeHeader(table, &failure->id, std::nullopt);
      } else {
        const auto& success = std::get<typename Response::Success>(value.value);
        detail::writeHeader(table, &success.id, std::nullopt);
        table.write("result", success.result);
      }
    });
  }
};

} // namespace velmar

template <>
struct std::hash<velmar::JSONRPCMessageID> {
  std::size_t operator()(const velmar::JSONRPCMessageID& id) const noexcept;
};
