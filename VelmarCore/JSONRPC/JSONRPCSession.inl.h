// The templates of JSONRPCSession.h.
#pragma once

#include "VelmarCore/JSONRPC/JSONRPCSession.h" // IWYU pragma: keep

namespace velmar {

template <std::invocable<std::shared_ptr<JSONRPCSession>> Body>
Task<TaskValueOf<Body, std::shared_ptr<JSONRPCSession>>>
JSONRPCSession::run(Configuration configuration, Body body) {
  using Value = TaskValueOf<Body, std::shared_ptr<JSONRPCSession>>;
  const auto session = std::make_shared<JSONRPCSession>(Private(), std::move(configuration));
  std::optional<detail::Stored<Value>> value;
  co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
    group.add(session->executor(), [session] { return session->readLoop(); });
    group.add([&, session] { return runBody<Body, Value>(session, body, value); });
    while (co_await group.next()) { // what the body throws leaves the group, which cancels reading
    }
  });
  if constexpr (!std::is_void_v<Value>)
    co_return *std::move(value);
}

template <class Body, class Value>
Task<void> JSONRPCSession::runBody(std::shared_ptr<JSONRPCSession> session, Body& body,
                                   std::optional<detail::Stored<Value>>& value) {
  if constexpr (std::is_void_v<Value>)
    co_await detail::invokeAsTask<Body, std::shared_ptr<JSONRPCSession>>(body, session);
  else
    value.emplace(
        co_await detail::invokeAsTask<Body, std::shared_ptr<JSONRPCSession>>(body, session));
}

template <class Result, class ErrorData>
Result JSONRPCSession::resultOf(const Received& message) {
  using Response = ResponseMessage<Result, ErrorData>;
  auto response = message.decode<Response>();
  if (auto* failure = std::get_if<typename Response::Failure>(&response.value))
    throw std::move(failure->error);
  return std::get<typename Response::Success>(std::move(response.value)).result;
}

template <class Request>
Task<typename Request::Result> JSONRPCSession::sendTyped(std::shared_ptr<JSONRPCSession> self,
                                                         Request request, SendOptions options) {
  const JSONRPCMessageID id = self->nextMessageID();
  Bytes message =
      detail::encodeMessage(RequestMessage<Request>{id, std::optional(std::move(request))});
  const Received response = co_await self->exchange(id, std::string(Request::method),
                                                    std::move(message), std::move(options));
  co_return resultOf<typename Request::Result, JSONRPCErrorDataOf<Request>>(response);
}

template <class Notification>
Task<void> JSONRPCSession::notifyTyped(std::shared_ptr<JSONRPCSession> self,
                                       Notification notification) {
  Bytes message = detail::encodeMessage(
      NotificationMessage<Notification>{std::optional(std::move(notification))});
  co_await self->writeNotification(std::string(Notification::method), std::move(message));
}

template <class Request, class Body>
Task<void> JSONRPCSession::IncomingRequest::decodeTyped(IncomingRequest self, Body body,
                                                        CodingContext userInfo) {
  using Result = typename Request::Result;
  using Response = ResponseMessage<Result, JSONRPCErrorDataOf<Request>>;
  auto message = self.state_->message.template decode<RequestMessage<Request>>(std::move(userInfo));
  Request parameters =
      message.params ? *std::move(message.params) : detail::withoutParameters<Request>();
  Result result = co_await detail::invokeAsTask<Body, Request>(body, std::move(parameters));
  Response response{typename Response::Success{self.id(), std::move(result)}};
  co_await self.reply(std::move(response));
}

template <class Body>
Task<void> JSONRPCSession::IncomingRequest::decodeRaw(IncomingRequest self, Body body) {
  using Parameters = std::optional<JSONValue>;
  using Response = ResponseMessage<Parameters, JSONRPCVoid>;
  Parameters parameters = self.state_->message.template decode<RawRequestMessage>().params;
  Parameters result = co_await detail::invokeAsTask<Body, Parameters>(body, std::move(parameters));
  Response response{typename Response::Success{self.id(), std::move(result)}};
  co_await self.reply(std::move(response));
}

template <class Result, class ErrorData>
Task<void>
JSONRPCSession::IncomingRequest::reply(ResponseMessage<Result, ErrorData> response) const {
  return session()->writeResponse(*this, detail::encodeMessage(response));
}

} // namespace velmar
