// One end of a JSON-RPC 2.0 conversation: sends requests and waits for their responses, hands
// requests and notifications of the peer to handlers, and answers.
//
//   co_await JSONRPCSession::run(
//       {.messageFramer = std::make_unique<BaseProtocolMessageFramer>(stream),
//        .incomingNotificationHandler = [](JSONRPCSession::IncomingNotification heard) { … }},
//       [](std::shared_ptr<JSONRPCSession> session) -> Task<void> {
//         const Completion::Result items =
//             co_await session->send(Completion{.uri = "file:///base/a.cpp"}, {.timeout = 5s});
//       });
//
// A message is parsed once, and its bytes are never copied. The session ends with the stream, or
// with the first message that can't be read: nothing tells where the next one would start.
#pragma once

#include "VelmarCore/JSON/JSONValue.h"
#include "VelmarCore/JSONRPC/JSONRPCMessage.h"
#include "VelmarCore/JSONRPC/JSONRPCMessageFramer.h"
#include "VelmarPlatform/Concurrency/CancellationHandler.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/Continuation.h"
#include "VelmarPlatform/Concurrency/SerialObject.h"
#include "VelmarPlatform/Concurrency/Spawn.h"
#include "VelmarPlatform/Concurrency/TaskGroup.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>

namespace velmar {

/// A message that isn't one of JSON-RPC, or no JSON at all: `byteOffset()` tells where in it.
class JSONRPCMessageError : public DecodingError {
public:
  JSONRPCMessageError(const DecodingError& reason, Bytes message, std::int64_t number)
      : DecodingError(reason), message_(std::make_shared<const Bytes>(std::move(message))),
        number_(number) {}

  /// The message without its frame, as long as the error lives.
  [[nodiscard]] std::span<const std::byte> data() const noexcept { return *message_; }
  /// Which of the messages that came it was, from 1.
  [[nodiscard]] std::int64_t number() const noexcept { return number_; }

private:
  std::shared_ptr<const Bytes> message_;
  std::int64_t number_;
};

enum class JSONRPCRequestCancelReason : std::uint8_t { cancelled, timedOut };

/// How a request is sent.
struct JSONRPCSendOptions {
  /// Absent: the session's `requestTimeout`.
  std::optional<Clock::Duration> timeout = std::nullopt;
  /// Called, as a task of its own, if the request is given up after it was sent: to tell the peer,
  /// say. The session itself sends it nothing.
  std::function<Task<void>(JSONRPCMessageID, JSONRPCRequestCancelReason)> onCancel = nullptr;
};

namespace detail {

/// A message with its parse, which borrows the bytes: they stay in their place when it moves.
struct ReceivedMessage {
  Bytes data;
  std::unique_ptr<const JSONTape> tape;

  template <Codable T>
  [[nodiscard]] T decode(CodingContext userInfo = {}) const {
    return JSONDecoder({.userInfo = std::move(userInfo)}).decode<T>(*tape);
  }
};

template <Codable Message>
[[nodiscard]] Bytes encodeMessage(const Message& message) {
  constexpr std::size_t roomForFrame = 48;
  const std::string text = messageEncoder().encode(message);
  const auto bytes = bytesOf(text);
  Bytes encoded;
  encoded.reserve(bytes.size() + roomForFrame);
  encoded.assign(bytes.begin(), bytes.end());
  return encoded;
}

} // namespace detail

/// A serialised object. Handlers of notifications and of the transcript are called in the session's
/// own turn, in the order of the wire: they are short, don't throw and wait for nothing of the
/// session. Handlers of requests are tasks of their own, on the pool.
class JSONRPCSession final : public SerialObject {
  struct Private {};

public:
  enum class MessageIDType : std::uint8_t { string, number };
  using RequestCancelReason = JSONRPCRequestCancelReason;
  using SendOptions = JSONRPCSendOptions;
  class IncomingRequest;
  class IncomingNotification;

  // What goes over the wire, for logs. The bytes are the whole message without its frame; they are
  // there for the time of the call.
  struct WithID {
    JSONRPCMessageID id;
    std::string method;
    std::span<const std::byte> data;
  };
  struct WithoutID {
    std::string method;
    std::span<const std::byte> data;
  };
  struct RequestSent : WithID {};
  struct RequestReceived : WithID {};
  struct ResponseSent : WithID {};
  struct ResponseReceived : WithID {}; ///< Only to requests that still wait.
  struct NotificationSent : WithoutID {};
  struct NotificationReceived : WithoutID {};
  using TranscriptEvent = std::variant<RequestSent, RequestReceived, ResponseSent, ResponseReceived,
                                       NotificationSent, NotificationReceived>;

  struct Configuration {
    /// The kind of ids that this session makes: UUIDs, or numbers from 0 on.
    MessageIDType messageIDType = MessageIDType::number;
    std::unique_ptr<JSONRPCMessageFramer> messageFramer = nullptr; ///< Must be there.
    /// How long a request waits for its response if it doesn't say so itself.
    Clock::Duration requestTimeout = std::chrono::seconds(30);
    /// Answers a request by its `decode`; what it throws is sent to the peer. May run several times
    /// at once. Without one the peer is told that the method isn't supported.
    std::function<Task<void>(IncomingRequest)> incomingRequestHandler = nullptr;
    std::function<void(IncomingNotification)> incomingNotificationHandler = nullptr;
    std::function<void(const TranscriptEvent&)> transcriptHandler = nullptr;
    /// Told once why nothing is read any more, after all who wait have been told: null at the
    /// stream's end, a JSONRPCMessageError for a bad message, or what the framer threw.
    std::function<void(std::exception_ptr)> endHandler = nullptr;
    /// What time limits are measured with. Outlives the session.
    Clock* clock = &monotonicClock();
  };

  /// Makes a session, reads from the stream and runs `body(session)` beside that, on the pool. Ends
  /// when both have: gives what `body` gave. What `body` throws is thrown, after reading has been
  /// cancelled. A failure to read is told to requests that wait and to `endHandler` only.
  template <std::invocable<std::shared_ptr<JSONRPCSession>> Body>
  [[nodiscard]] static Task<TaskValueOf<Body, std::shared_ptr<JSONRPCSession>>>
  run(Configuration configuration, Body body);

  /// Sends a request and gives its result. Throws JSONRPCError<ErrorData of the request> if the
  /// peer answers with an error; DecodingError for an answer of another shape; CancellationError if
  /// the task is cancelled, the time limit passes or the stream ends; what ended the session; what
  /// writing throws. Encoding and decoding go on in the caller's turn.
  template <JSONRPCRequest Request>
  [[nodiscard]] Task<typename Request::Result> send(Request request, SendOptions options = {}) {
    return sendTyped(shared(*this), std::move(request), std::move(options));
  }
  /// The same without types; a null result is absent.
  [[nodiscard]] Task<std::optional<JSONValue>>
  sendRequest(std::string method, std::optional<JSONValue> parameters = std::nullopt,
              SendOptions options = {}) {
    return sendRaw(shared(*this), std::move(method), std::move(parameters), std::move(options));
  }
  /// Throws what writing throws.
  template <JSONRPCNotification Notification>
  [[nodiscard]] Task<void> send(Notification notification) {
    return notifyTyped(shared(*this), std::move(notification));
  }
  [[nodiscard]] Task<void> sendNotification(std::string method,
                                            std::optional<JSONValue> parameters = std::nullopt) {
    return notifyRaw(shared(*this), std::move(method), std::move(parameters));
  }

  /// Whether messages are read. Any thread; it may change at any time.
  [[nodiscard]] bool isRunning() const noexcept { return isRunning_; }
  [[nodiscard]] MessageIDType messageIDType() const noexcept {
    return configuration_.messageIDType;
  }
  /// For questions to it once the session has ended.
  [[nodiscard]] const JSONRPCMessageFramer& messageFramer() const noexcept {
    return *configuration_.messageFramer;
  }

  JSONRPCSession(Private, Configuration configuration);

private:
  using Received = detail::ReceivedMessage;

  /// A request that was sent, or is being sent.
  struct PendingRequest {
    std::string method;
    SendOptions options;
    /// Absent while it is being written.
    std::optional<Continuation<Received>> continuation;
    /// The end of the wait, if it came before the write had ended.
    std::optional<Outcome<Received>> early;
    std::multimap<Clock::Instant, JSONRPCMessageID>::iterator deadline;
  };
  using PendingRequests = std::unordered_map<JSONRPCMessageID, PendingRequest>;

  template <class Body, class Value>
  static Task<void> runBody(std::shared_ptr<JSONRPCSession> session, Body& body,
                            std::optional<detail::Stored<Value>>& value);

  // On the caller's executor: these only encode and decode.
  template <class Request>
  static Task<typename Request::Result> sendTyped(std::shared_ptr<JSONRPCSession> self,
                                                  Request request, SendOptions options);
  template <class Notification>
  static Task<void> notifyTyped(std::shared_ptr<JSONRPCSession> self, Notification notification);
  static Task<std::optional<JSONValue>> sendRaw(std::shared_ptr<JSONRPCSession> self,
                                                std::string method,
                                                std::optional<JSONValue> parameters,
                                                SendOptions options);
  static Task<void> notifyRaw(std::shared_ptr<JSONRPCSession> self, std::string method,
                              std::optional<JSONValue> parameters);
  template <class Result, class ErrorData>
  [[nodiscard]] static Result resultOf(const Received& message);
  [[nodiscard]] JSONRPCMessageID nextMessageID();

  // In the session's turn.
  Task<void> readLoop();
  void receive(Bytes bytes);
  void receiveRequest(Message::Request request, Received message);
  void receiveResponse(const JSONRPCMessageID& id, Received message);
  void receiveNotification(std::string method, Received message);
  void leaveLoop(const std::exception_ptr& failure);
  Task<Received> exchange(JSONRPCMessageID id, std::string method, Bytes message,
                          SendOptions options);
  Task<Received> writeAndWait(JSONRPCMessageID id, std::string method, Bytes message,
                              SendOptions options);
  void finish(PendingRequests::iterator request, Outcome<Received> outcome);
  Task<void> giveUp(JSONRPCMessageID id, RequestCancelReason reason);
  void giveUpNow(PendingRequests::iterator request, RequestCancelReason reason);
  Task<void> endOverdue();
  void watchDeadlines();
  Task<void> writeNotification(std::string method, Bytes message);
  Task<void> writeResponse(IncomingRequest request, Bytes message);
  Task<void> requestEnded(std::uint64_t number);
  template <class Event>
  void report(Event event) const {
    if (configuration_.transcriptHandler)
      configuration_.transcriptHandler(event);
  }
  /// A copy of what is about to be written, if anybody wants to see it afterwards.
  [[nodiscard]] Bytes copyForTranscript(const Bytes& message) const {
    return configuration_.transcriptHandler ? message : Bytes();
  }

  static Task<void> answer(std::shared_ptr<JSONRPCSession> self, IncomingRequest request,
                           std::uint64_t number);
  static Task<void> wakeAt(std::weak_ptr<JSONRPCSession> session, Clock* clock,
                           Clock::Instant deadline);

  const Configuration configuration_;
  std::atomic<bool> isRunning_ = false;
  std::atomic<std::uint64_t> nextNumber_ = 0;
  std::int64_t messageCount_ = 0;
  PendingRequests pendingRequests_;
  /// Of the requests that wait. One timer sleeps until the first of them.
  std::multimap<Clock::Instant, JSONRPCMessageID> deadlines_;
  TaskHandle<> timer_;
  Clock::Instant timerDeadline_;
  /// Handlers that run, by the number of their request: a peer may use an id twice.
  std::unordered_map<std::uint64_t, TaskHandle<>> pendingIncomingRequestTasks_;
  std::uint64_t incomingCount_ = 0;
  TaskScope tasks_;
};

/// A request of the peer. Copies stand for the same request, which is answered once; any thread.
class JSONRPCSession::IncomingRequest {
public:
  [[nodiscard]] const JSONRPCMessageID& id() const noexcept { return state_->id; }
  [[nodiscard]] const std::string& method() const noexcept { return state_->method; }
  /// The whole message.
  [[nodiscard]] std::span<const std::byte> data() const noexcept { return state_->message.data; }
  [[nodiscard]] const std::shared_ptr<JSONRPCSession>& session() const noexcept {
    return state_->session;
  }

  /// Reads the parameters, calls `body` with them, and sends what it gives as the result. Throws
  /// what `body` throws; DecodingError for parameters of another shape; what writing throws. Let it
  /// go on out of the handler, and the peer is told.
  template <JSONRPCRequest Request, std::invocable<Request> Body>
  [[nodiscard]] Task<void> decode(Body body, CodingContext userInfo = {}) const {
    return decodeTyped<Request>(*this, std::move(body), std::move(userInfo));
  }
  /// The same without types: `body` takes and gives a `std::optional<JSONValue>`, the parameters
  /// and the result.
  template <std::invocable<std::optional<JSONValue>> Body>
  [[nodiscard]] Task<void> decode(Body body) const {
    return decodeRaw(*this, std::move(body));
  }
  /// Answers with an error: a JSONRPCError<JSONRPCVoid> as it is, any other as an internal error
  /// with its description.
  [[nodiscard]] Task<void> replyThrowing(std::exception_ptr error) const;

  /// `<7 shutdown: {"id":7,…}>`, repaired where the message isn't UTF-8.
  [[nodiscard]] std::string debugDescription() const;

private:
  friend class JSONRPCSession;
  struct State {
    JSONRPCMessageID id;
    std::string method;
    Received message;
    std::shared_ptr<JSONRPCSession> session;
    std::atomic<bool> isAnswered = false;
  };
  explicit IncomingRequest(std::shared_ptr<State> state) : state_(std::move(state)) {}

  template <class Request, class Body>
  static Task<void> decodeTyped(IncomingRequest self, Body body, CodingContext userInfo);
  template <class Body>
  static Task<void> decodeRaw(IncomingRequest self, Body body);
  template <class Result, class ErrorData>
  [[nodiscard]] Task<void> reply(ResponseMessage<Result, ErrorData> response) const;

  std::shared_ptr<State> state_;
};

/// A notification of the peer. Any thread.
class JSONRPCSession::IncomingNotification {
public:
  [[nodiscard]] const std::string& method() const noexcept { return method_; }
  /// The whole message.
  [[nodiscard]] std::span<const std::byte> data() const noexcept { return message_->data; }

  /// The parameters. Throws DecodingError.
  template <JSONRPCNotification Notification>
  [[nodiscard]] Notification decode(CodingContext userInfo = {}) const {
    auto message = message_->decode<NotificationMessage<Notification>>(std::move(userInfo));
    return message.params ? *std::move(message.params) : detail::withoutParameters<Notification>();
  }
  [[nodiscard]] std::optional<JSONValue> decode() const {
    return message_->decode<RawNotificationMessage>().params;
  }

  /// `<exit: {"jsonrpc":…}>`, repaired where the message isn't UTF-8.
  [[nodiscard]] std::string debugDescription() const;

private:
  friend class JSONRPCSession;
  IncomingNotification(std::string method, Received message)
      : method_(std::move(method)), message_(std::make_shared<Received>(std::move(message))) {}

  std::string method_;
  std::shared_ptr<const Received> message_;
};

} // namespace velmar

#include "VelmarCore/JSONRPC/JSONRPCSession.inl.h" // IWYU pragma: export
