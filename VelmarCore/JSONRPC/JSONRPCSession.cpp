#include "VelmarCore/JSONRPC/JSONRPCSession.h"

#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Basics/Precondition.h"
#include "VelmarPlatform/Basics/UUID.h"
#include "VelmarPlatform/Unicode/UTF.h"

#include <limits>

namespace velmar {

JSONRPCSession::JSONRPCSession(Private, Configuration configuration)
    : SerialObject("JSON-RPC session", Lane::poolOrReactor),
      configuration_(std::move(configuration)) {
  precondition(configuration_.messageFramer != nullptr, "A session needs a framer.");
}

// Reading

Task<void> JSONRPCSession::readLoop() {
  isRunning_ = true;
  std::exception_ptr failure;
  try {
    while (std::optional<Bytes> bytes = co_await configuration_.messageFramer->read()) {
      checkCancellation();
      receive(*std::move(bytes));
    }
  } catch (...) {
    failure = std::current_exception(); // cancellation too: whoever waits is told, nobody else
  }
  leaveLoop(failure);
}

void JSONRPCSession::leaveLoop(const std::exception_ptr& failure) {
  isRunning_ = false;
  const std::exception_ptr told =
      failure != nullptr ? failure : std::make_exception_ptr(CancellationError());
  for (auto next = pendingRequests_.begin(); next != pendingRequests_.end();)
    finish(next++, Failure(told));
  for (auto& [number, task] : std::exchange(pendingIncomingRequestTasks_, {}))
    task.cancel();
  if (configuration_.endHandler)
    configuration_.endHandler(failure);
}

void JSONRPCSession::receive(Bytes bytes) {
  ++messageCount_;
  std::unique_ptr<const JSONTape> tape;
  Message message;
  try {
    tape = std::make_unique<const JSONTape>(charactersOf(bytes));
    message = decodeFrom<Message>(*tape, tape->root(), {});
  } catch (const DecodingError& error) {
    throw JSONRPCMessageError(error, std::move(bytes), messageCount_);
  }
  Received received{std::move(bytes), std::move(tape)};
  std::visit(Overloaded{[&](Message::Request& request) {
                          receiveRequest(std::move(request), std::move(received));
                        },
                        [&](Message::Response& response) {
                          receiveResponse(response.id, std::move(received));
                        },
                        [&](Message::Notification& notification) {
                          receiveNotification(std::move(notification.method), std::move(received));
                        }},
             message.value);
}

void JSONRPCSession::receiveRequest(Message::Request request, Received message) {
  report(RequestReceived{{request.id, request.method, message.data}});
  const IncomingRequest incoming(std::make_shared<IncomingRequest::State>(
      std::move(request.id), std::move(request.method), std::move(message), shared(*this)));
  const std::uint64_t number = incomingCount_++;
  // The task takes itself out in a later turn of ours, so it is in the table before.
  pendingIncomingRequestTasks_.emplace(
      number, spawn([incoming, number] { return answer(incoming.session(), incoming, number); }));
}

void JSONRPCSession::receiveResponse(const JSONRPCMessageID& id, Received message) {
  const auto request = pendingRequests_.find(id);
  if (request == pendingRequests_.end() || request->second.early)
    return; // given up, or never sent
  report(ResponseReceived{{id, request->second.method, message.data}});
  finish(request, std::move(message));
}

void JSONRPCSession::receiveNotification(std::string method, Received message) {
  report(NotificationReceived{{method, message.data}});
  if (configuration_.incomingNotificationHandler)
    configuration_.incomingNotificationHandler(
        IncomingNotification(std::move(method), std::move(message)));
}

// Requests of ours

JSONRPCMessageID JSONRPCSession::nextMessageID() {
  if (configuration_.messageIDType == MessageIDType::string)
    return UUID::random().string();
  constexpr std::uint64_t largest = std::numeric_limits<std::int64_t>::max();
  return static_cast<std::int64_t>(nextNumber_.fetch_add(1, std::memory_order_relaxed) & largest);
}

Task<std::optional<JSONValue>> JSONRPCSession::sendRaw(std::shared_ptr<JSONRPCSession> self,
                                                       std::string method,
                                                       std::optional<JSONValue> parameters,
                                                       SendOptions options) {
  RawRequestMessage request{self->nextMessageID(), std::move(method), std::move(parameters)};
  Bytes message = detail::encodeMessage(request);
  const Received response = co_await self->exchange(
      std::move(request.id), std::move(request.method), std::move(message), std::move(options));
  co_return resultOf<std::optional<JSONValue>, JSONRPCVoid>(response);
}

Task<detail::ReceivedMessage> JSONRPCSession::exchange(JSONRPCMessageID id, std::string method,
                                                       Bytes message, SendOptions options) {
  std::weak_ptr<JSONRPCSession> weak = shared(*this);
  co_return co_await withTaskCancellationHandler(
      [&] { return writeAndWait(id, std::move(method), std::move(message), std::move(options)); },
      // On the thread that cancels: it only starts a task, which comes to us.
      [weak, &id] {
        if (auto session = weak.lock())
          spawn(session->executor(),
                [session, id = id] { return session->giveUp(id, RequestCancelReason::cancelled); });
      });
}

Task<detail::ReceivedMessage> JSONRPCSession::writeAndWait(JSONRPCMessageID id, std::string method,
                                                           Bytes message, SendOptions options) {
  checkCancellation();
  const Bytes copy = copyForTranscript(message);
  const Clock::Duration limit = options.timeout.value_or(configuration_.requestTimeout);
  // In the table before it is written: the response may be here before the write tells its end.
  const auto request =
      pendingRequests_
          .emplace(id, PendingRequest{std::move(method), std::move(options), {}, {}, {}})
          .first;
  PendingRequest& pending = request->second; // it stays in its place
  try {
    co_await configuration_.messageFramer->write(std::move(message));
    report(RequestSent{{id, pending.method, copy}});
    checkCancellation();
  } catch (...) {
    pendingRequests_.erase(id);
    throw;
  }
  if (pending.early) {
    Outcome<Received> outcome = *std::move(pending.early);
    pendingRequests_.erase(id);
    if (!outcome)
      std::rethrow_exception(outcome.error());
    co_return std::move(*outcome);
  }
  co_return co_await withContinuation<Received>([&](Continuation<Received> continuation) {
    pending.continuation.emplace(std::move(continuation));
    pending.deadline = deadlines_.emplace(configuration_.clock->after(limit), id);
    watchDeadlines();
  });
}

void JSONRPCSession::finish(PendingRequests::iterator request, Outcome<Received> outcome) {
  PendingRequest& pending = request->second;
  if (!pending.continuation) { // still being written
    pending.early.emplace(std::move(outcome));
    return;
  }
  Continuation<Received> continuation = *std::move(pending.continuation);
  deadlines_.erase(pending.deadline);
  pendingRequests_.erase(request);
  if (outcome)
    std::move(continuation).resume(std::move(*outcome));
  else
    std::move(continuation).fail(outcome.error());
}

// Giving up

Task<void> JSONRPCSession::giveUp(JSONRPCMessageID id, RequestCancelReason reason) {
  const auto request = pendingRequests_.find(id);
  // One that is being written sees by itself that its task is cancelled.
  if (request != pendingRequests_.end() && request->second.continuation)
    giveUpNow(request, reason);
  co_return;
}

void JSONRPCSession::giveUpNow(PendingRequests::iterator request, RequestCancelReason reason) {
  const JSONRPCMessageID id = request->first;
  auto onCancel = std::move(request->second.options.onCancel);
  finish(request, Failure(std::make_exception_ptr(CancellationError())));
  if (onCancel)
    tasks_.spawn([onCancel = std::move(onCancel), id, reason] { return onCancel(id, reason); });
}

void JSONRPCSession::watchDeadlines() {
  const Clock::Instant first = deadlines_.begin()->first;
  if (timer_ && timerDeadline_ <= first)
    return; // it wakes too early at worst
  if (timer_)
    timer_.cancel();
  timerDeadline_ = first;
  timer_ =
      tasks_.spawn(executor(), [weak = std::weak_ptr(shared(*this)), clock = configuration_.clock,
                                first] { return wakeAt(weak, clock, first); });
}

Task<void> JSONRPCSession::wakeAt(std::weak_ptr<JSONRPCSession> session, Clock* clock,
                                  Clock::Instant deadline) {
  co_await clock->sleepUntil(deadline);
  if (const auto self = session.lock())
    co_await self->endOverdue();
}

Task<void> JSONRPCSession::endOverdue() {
  const Clock::Instant now = configuration_.clock->now();
  while (!deadlines_.empty() && deadlines_.begin()->first <= now)
    giveUpNow(pendingRequests_.find(deadlines_.begin()->second), RequestCancelReason::timedOut);
  if (timerDeadline_ <= now)
    timer_ = {};
  if (!deadlines_.empty())
    watchDeadlines();
  co_return;
}

// Notifications of ours

Task<void> JSONRPCSession::notifyRaw(std::shared_ptr<JSONRPCSession> self, std::string method,
                                     std::optional<JSONValue> parameters) {
  RawNotificationMessage notification{std::move(method), std::move(parameters)};
  Bytes message = detail::encodeMessage(notification);
  co_await self->writeNotification(std::move(notification.method), std::move(message));
}

Task<void> JSONRPCSession::writeNotification(std::string method, Bytes message) {
  const Bytes copy = copyForTranscript(message);
  co_await configuration_.messageFramer->write(std::move(message));
  report(NotificationSent{{std::move(method), copy}});
}

// Answering

Task<void> JSONRPCSession::answer(std::shared_ptr<JSONRPCSession> self, IncomingRequest request,
                                  std::uint64_t number) {
  std::exception_ptr failure;
  try {
    if (self->configuration_.incomingRequestHandler)
      co_await self->configuration_.incomingRequestHandler(request);
    else
      failure = std::make_exception_ptr(methodNotFound(request.method()));
  } catch (...) {
    failure = std::current_exception();
  }
  if (failure != nullptr) {
    try {
      co_await request.replyThrowing(failure);
    } catch (...) { // NOLINT(bugprone-empty-catch): the peer can't be told that it can't be told
    }
  }
  co_await self->requestEnded(number);
}

Task<void> JSONRPCSession::requestEnded(std::uint64_t number) {
  pendingIncomingRequestTasks_.erase(number);
  co_return;
}

Task<void> JSONRPCSession::writeResponse(IncomingRequest request, Bytes message) {
  if (!isRunning_ || request.state_->isAnswered.exchange(true))
    co_return;
  const Bytes copy = copyForTranscript(message);
  co_await configuration_.messageFramer->write(std::move(message));
  if (isRunning_) // else `run` may have ended, and with it what the handlers refer to
    report(ResponseSent{{request.id(), request.method(), copy}});
}

Task<void> JSONRPCSession::IncomingRequest::replyThrowing(std::exception_ptr error) const {
  using Response = ResponseMessage<JSONRPCVoid, JSONRPCVoid>;
  const auto internal = [](std::string text) {
    return JSONRPCError<JSONRPCVoid>(JSONRPCErrorCode::internalError, std::move(text));
  };
  const auto described = [&] {
    try {
      std::rethrow_exception(error);
    } catch (const JSONRPCError<JSONRPCVoid>& own) {
      return own;
    } catch (const JSONRPCErrorProtocol& other) {
      return internal(other.debugDescription());
    } catch (const std::exception& other) {
      return internal(repairedUTF8(other.what()));
    } catch (...) {
      return internal("The request failed.");
    }
  };
  return reply(Response{Response::Failure{id(), described()}});
}

std::string JSONRPCSession::IncomingRequest::debugDescription() const {
  return "<" + id().debugDescription() + " " + method() + ": " +
         repairedUTF8(charactersOf(data())) + ">";
}

std::string JSONRPCSession::IncomingNotification::debugDescription() const {
  return "<" + method() + ": " + repairedUTF8(charactersOf(data())) + ">";
}

} // namespace velmar
