#include "host/RPCConversation.h"

#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"
#include "VelmarCore/JSONRPC/JSONRPCSession.h"
#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Unicode/UTF.h"
#include "host/Command.h"

#include <algorithm>
#include <atomic>
#include <fmt/format.h>

namespace velmar::host {

namespace {

using Session = std::shared_ptr<JSONRPCSession>;

/// Ends the reading when there is nothing more to say.
struct NothingMoreToSay {};

std::string textOf(const std::optional<JSONValue>& value) {
  return JSONEncoder().encode(value);
}

struct Line {
  bool isNotification = false;
  std::string method;
  std::optional<JSONValue> parameters;
};

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t start = std::min(text.find_first_not_of(blanks), text.size());
  text.remove_prefix(start);
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

/// Absent for an empty line. Throws DecodingError for parameters that are no JSON.
std::optional<Line> parseLine(std::string_view text) {
  text = trimmed(text);
  if (text.empty())
    return std::nullopt;
  Line line;
  line.isNotification = text.front() == '!';
  text.remove_prefix(line.isNotification ? 1 : 0);
  const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
  line.method = repairedUTF8(text.substr(0, end));
  if (const std::string_view rest = trimmed(text.substr(end)); !rest.empty())
    line.parameters = JSONDecoder().decode<JSONValue>(rest);
  return line;
}

/// How a session ended, for people; empty if that is as it should be.
std::string describeEnd(const std::exception_ptr& failure,
                        const BaseProtocolMessageFramer* framer) {
  if (failure == nullptr)
    return "The peer has closed the stream.";
  try {
    std::rethrow_exception(failure);
  } catch (const CancellationError&) {
    return "";
  } catch (const JSONRPCMessageError& error) {
    return fmt::format("Message {} from the peer can’t be read. {}\n{}", error.number(),
                       error.message(), excerptOf(error.data(), error.byteOffset().value_or(0)));
  } catch (const JSONRPCErrorProtocol& error) { // of the framer
    return fmt::format("Behind byte {} from the peer: {}\n{}", framer->position(), error.message(),
                       excerptOf(framer->unread(), 0));
  } catch (const Error& error) {
    return error.message();
  }
}

/// One conversation while it goes on.
class Talk {
public:
  Talk(RPCConversation conversation, const BaseProtocolMessageFramer* framer)
      : conversation_(std::move(conversation)), framer_(framer) {}

  void heard(const JSONRPCSession::IncomingNotification& notification) const {
    conversation_.print(
        fmt::format("← {} {}", notification.method(), textOf(notification.decode())));
  }
  void ended(const std::exception_ptr& failure) {
    end_ = describeEnd(failure, framer_);
    isOrderly_ = failure == nullptr;
  }

  Task<void> run(Session session) { return runImpl(this, std::move(session)); }
  /// Once the session is gone: whether nothing went wrong.
  [[nodiscard]] bool finish() {
    // Many peers hang up at the last line that they are told, which is as it should be.
    if (!end_.empty() && (wasClosed_ || !isOrderly_))
      complain(end_);
    return isFine_;
  }

private:
  static Task<void> runImpl(Talk* self, Session session) {
    while (const auto text = co_await self->conversation_.nextLine()) {
      if (const auto line = self->parse(*text))
        co_await say(self, session, *line);
      if (self->wasClosed_)
        co_return;
    }
    throw NothingMoreToSay();
  }

  std::optional<Line> parse(const std::string& text) {
    try {
      return parseLine(text);
    } catch (const DecodingError& error) {
      complain(fmt::format("The parameters can’t be read. {}", error.message()));
      return std::nullopt;
    }
  }

  static Task<void> say(Talk* self, Session session, Line line) {
    std::exception_ptr failure;
    try {
      if (line.isNotification)
        co_await session->sendNotification(line.method, line.parameters);
      else
        self->conversation_.print(
            textOf(co_await session->sendRequest(line.method, line.parameters)));
    } catch (...) {
      failure = std::current_exception();
    }
    if (failure != nullptr)
      self->failed(failure, *session);
  }

  void failed(const std::exception_ptr& failure, const JSONRPCSession& session) {
    wasClosed_ = !session.isRunning();
    try {
      std::rethrow_exception(failure);
    } catch (const CancellationError&) {
      complain(wasClosed_
                   ? "The request has no answer."
                   : fmt::format("No answer came within {} s.",
                                 std::chrono::duration<double>(conversation_.timeout).count()));
    } catch (const JSONRPCMessageError&) {
      complain("The request has no answer."); // the session's end tells the rest
    } catch (const JSONRPCErrorProtocol& error) {
      complain(wasClosed_ ? "The request has no answer."
                          : "The peer answers: " + error.debugDescription());
    } catch (const DecodingError& error) {
      complain("The answer can’t be read. " + error.message());
    } catch (const Error& error) {
      complain(error.message());
    }
  }

  void complain(std::string text) {
    isFine_ = false;
    conversation_.complain(std::move(text));
  }

  RPCConversation conversation_;
  const BaseProtocolMessageFramer* framer_;
  bool isFine_ = true;
  bool wasClosed_ = false;
  std::string end_; // this and the next written by the session, read when it has gone
  bool isOrderly_ = false;
};

struct Echo {
  using Result = std::int64_t;
  static constexpr std::string_view method = "echo";
  std::int64_t number = 0;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Echo>(wholeRow<&Echo::number>());
    return table;
  }
};

struct Flood {
  std::int64_t count;
  std::atomic<std::int64_t> next = 0;
  std::atomic<std::int64_t> answered = 0;
  std::atomic<std::int64_t> wrong = 0;
};

Task<void> sendOneAfterTheOther(Flood* flood, Session session) {
  for (;;) {
    const std::int64_t number = flood->next++;
    if (number >= flood->count)
      co_return;
    try {
      const std::int64_t reply = co_await session->send(Echo{number});
      ++(reply == number ? flood->answered : flood->wrong);
    } catch (const Error&) {
      ++flood->wrong;
    }
  }
}

} // namespace

Task<bool> converse(std::shared_ptr<StreamingIO> stream, RPCConversation conversation) {
  auto framer = std::make_unique<BaseProtocolMessageFramer>(std::move(stream));
  const auto talk = std::make_shared<Talk>(conversation, framer.get());
  try {
    co_await JSONRPCSession::run(
        {.messageFramer = std::move(framer),
         .requestTimeout = conversation.timeout,
         .incomingNotificationHandler = [talk](const auto& heard) { talk->heard(heard); },
         .endHandler = [talk](const std::exception_ptr& failure) { talk->ended(failure); },
         .clock = conversation.clock},
        [talk](Session session) { return talk->run(std::move(session)); });
  } catch (const NothingMoreToSay&) { // NOLINT(bugprone-empty-catch): which is fine
  }
  co_return talk->finish();
}

Task<FloodResult> flood(std::shared_ptr<StreamingIO> stream, std::int64_t count, int inFlight) {
  Flood flood{.count = count};
  const auto body = [&](Session session) -> Task<void> {
    co_await withTaskGroup<void>([&](TaskGroup<>& group) -> Task<void> {
      for (int sender = 0; sender < inFlight; ++sender)
        group.add([&, session] { return sendOneAfterTheOther(&flood, session); });
      co_await group.waitForAll();
    });
    throw NothingMoreToSay();
  };
  try {
    co_await JSONRPCSession::run(
        {.messageFramer = std::make_unique<BaseProtocolMessageFramer>(std::move(stream))}, body);
  } catch (const NothingMoreToSay&) { // NOLINT(bugprone-empty-catch): which is fine
  }
  co_return FloodResult{flood.answered, flood.wrong};
}

Task<void> echo(std::shared_ptr<StreamingIO> stream) {
  co_await JSONRPCSession::run(
      {.messageFramer = std::make_unique<BaseProtocolMessageFramer>(std::move(stream)),
       .incomingRequestHandler =
           [](const JSONRPCSession::IncomingRequest& request) {
             return request.decode([](std::optional<JSONValue> parameters) { return parameters; });
           }},
      [](const Session&) {});
}

std::string excerptOf(std::span<const std::byte> bytes, std::int64_t offset) {
  constexpr std::int64_t around = 30;
  const std::int64_t start = std::max<std::int64_t>(0, offset - around);
  const std::int64_t end = std::min(std::ssize(bytes), offset + around);
  std::string line = start > 0 ? "…" : "";
  std::size_t column = line.empty() ? 0 : 1;
  for (std::int64_t at = start; at < end; ++at) {
    const auto byte = std::to_integer<unsigned char>(bytes[static_cast<std::size_t>(at)]);
    const std::string shown = byte >= 0x20 && byte < 0x7F ? std::string(1, static_cast<char>(byte))
                                                          : fmt::format("\\x{:02X}", byte);
    line += shown;
    column += at < offset ? shown.size() : 0;
  }
  return fmt::format("  {}{}\n  {}^ byte {}", line, end < std::ssize(bytes) ? "…" : "",
                     std::string(column, ' '), offset);
}

NetworkEndpoint endpointFromText(std::string_view text) {
  constexpr std::string_view unixPrefix = "unix:";
  if (text.starts_with(unixPrefix) && text.size() > unixPrefix.size())
    return NetworkEndpoint::unixSocket(FilePath(std::string(text.substr(unixPrefix.size()))));
  const std::size_t colon = text.rfind(':');
  const auto port = colon == std::string_view::npos
                        ? std::nullopt
                        : NetworkEndpoint::Port::fromText(text.substr(colon + 1));
  std::string_view host = text.substr(0, port ? colon : 0);
  if (host.starts_with('[') && host.ends_with(']'))
    host = host.substr(1, host.size() - 2);
  if (host.empty())
    throw UsageError(fmt::format("“{}” is neither “unix:PATH” nor “HOST:PORT”.", text));
  return NetworkEndpoint::hostPort(host, *port);
}

} // namespace velmar::host
