#include "VelmarCore/JSONRPC/JSONRPCSession.h"

#include "ScriptedFramer.h"
#include "VelmarPlatform/Basics/UUID.h"
#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace velmar {
namespace {

using namespace std::chrono_literals;
using testing::Wire;
using Session = std::shared_ptr<JSONRPCSession>;
using CancelReason = JSONRPCSession::RequestCancelReason;

struct Add {
  using Result = std::int64_t;
  static constexpr std::string_view method = "add";
  std::int64_t a = 0;
  std::int64_t b = 0;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Add>(row<&Add::a>("b"), row<&Add::b>("a/b"));
    return table;
  }
};

struct Refusal {
  std::string reason;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Refusal>(row<&Refusal::reason>("reason"));
    return table;
  }
};

/// Needs no parameters, and has a result that may be null.
struct Find {
  using Result = std::optional<std::string>;
  using ErrorData = Refusal;
  static constexpr std::string_view method = "find";
  std::optional<std::string> word;
  static Find withoutParameters() { return {.word = "default"}; }
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Find>(row<&Find::word>("word"));
    return table;
  }
};

struct ShutDown {
  using Result = JSONRPCVoid;
  static constexpr std::string_view method = "shutdown";
  static constexpr bool encodesParameters = false;
  static std::span<const FieldRow> rows() { return {}; }
};

struct Tick {
  static constexpr std::string_view method = "tick";
  std::int64_t count = 0;
  static std::span<const FieldRow> rows() {
    static constexpr auto table = rowsOf<Tick>(row<&Tick::count>("count"));
    return table;
  }
};

/// Runs a session with a scripted peer until `script` has ended and the peer has hung up.
void converse(JSONRPCSession::Configuration configuration,
              std::function<Task<void>(Session, Wire&)> script) {
  const auto wire = std::make_shared<Wire>();
  configuration.messageFramer = std::make_unique<testing::ScriptedFramer>(wire);
  mainExecutor().run([&] {
    return JSONRPCSession::run(std::move(configuration), [&](Session session) -> Task<void> {
      co_await script(session, *wire);
      wire->hangUp();
    });
  });
}

void waitUntil(const std::function<bool()>& predicate) {
  ASSERT_TRUE(mainExecutor().runUntil(predicate, 1min)) << "It never happened.";
}

/// What went wrong, in a word and a sentence.
std::string describe(const std::exception_ptr& failure) {
  if (failure == nullptr)
    return "nothing";
  try {
    std::rethrow_exception(failure);
  } catch (const CancellationError&) {
    return "cancelled";
  } catch (const JSONRPCMessageError& error) {
    return "message " + std::to_string(error.number()) + ": " + error.message();
  } catch (const JSONRPCErrorProtocol& error) {
    return error.debugDescription();
  } catch (const std::exception& error) {
    return error.what();
  }
}

template <class T>
Task<std::string> describe(TaskHandle<T> request) {
  const auto outcome = co_await request.outcome();
  if (!outcome)
    co_return describe(outcome.error());
  co_return JSONEncoder().encode(*outcome);
}

TEST(JSONRPCSession, WritesItsMessagesWithSortedKeysAndNumbersFromZero) {
  converse({}, [](Session session, Wire& wire) -> Task<void> {
    TaskScope scope;
    scope.spawn([=] { return session->send(Add{.a = 2, .b = 3}); });
    EXPECT_EQ(co_await wire.hear(),
              R"({"id":0,"jsonrpc":"2.0","method":"add","params":{"a/b":3,"b":2}})");
    scope.spawn([=] { return session->send(ShutDown()); });
    EXPECT_EQ(co_await wire.hear(), R"({"id":1,"jsonrpc":"2.0","method":"shutdown"})");
    scope.spawn([=] {
      return session->sendRequest("raw", JSONValue(JSONObject{{"z", 1}, {"a", JSONValue()}}));
    });
    EXPECT_EQ(co_await wire.hear(),
              R"({"id":2,"jsonrpc":"2.0","method":"raw","params":{"a":null,"z":1}})");
    co_await session->send(Tick{.count = 7});
    EXPECT_EQ(co_await wire.hear(), R"({"jsonrpc":"2.0","method":"tick","params":{"count":7}})");
    co_await session->sendNotification("exit");
    EXPECT_EQ(co_await wire.hear(), R"({"jsonrpc":"2.0","method":"exit"})");
  });
}

TEST(JSONRPCSession, MakesTextsForIDsIfAsked) {
  converse({.messageIDType = JSONRPCSession::MessageIDType::string},
           [](Session session, Wire& wire) -> Task<void> {
             const auto request = spawn([=] { return session->sendRequest("x"); });
             const std::string text = co_await wire.hear();
             const auto id = text.substr(7, 36); // behind {"id":"
             EXPECT_TRUE(UUID::parse(id).has_value()) << text;
             wire.say(R"({"jsonrpc":"2.0","result":true,"id":")" + id + "\"}");
             EXPECT_EQ(co_await describe(request), "true");
           });
}

struct ResponseCase {
  const char* name;
  const char* members; ///< Of the response beside its id and version.
  const char* add;     ///< What comes of it for a request of numbers…
  const char* find;    ///< …for one of an optional text with data in its error…
  const char* raw;     ///< …and for one without types.
};

class JSONRPCResponse : public ::testing::TestWithParam<ResponseCase> {};

TEST_P(JSONRPCResponse, IsWhatTheCallerGets) {
  converse({}, [](Session session, Wire& wire) -> Task<void> {
    const auto add = spawn([=] { return session->send(Add()); });
    co_await wire.hear();
    const auto find = spawn([=] { return session->send(Find()); });
    co_await wire.hear();
    const auto raw = spawn([=] { return session->sendRequest("raw"); });
    co_await wire.hear();
    for (const char* id : {"2", "1", "0"}) // in any order
      wire.say(std::string(R"({"jsonrpc":"2.0",)") + GetParam().members + R"("id":)" + id + "}");
    EXPECT_EQ(co_await describe(add), GetParam().add);
    EXPECT_EQ(co_await describe(find), GetParam().find);
    EXPECT_EQ(co_await describe(raw), GetParam().raw);
  });
}

INSTANTIATE_TEST_SUITE_P(
    Cases, JSONRPCResponse,
    ::testing::Values(
        ResponseCase{"Number", R"("result":5,)", "5",
                     "Expected a text, but found an integer. (at result)", "5"},
        ResponseCase{"Text", R"("result":"a",)",
                     "Expected an integer, but found a text. (at result)", R"("a")", R"("a")"},
        ResponseCase{"Null", R"("result":null,)",
                     "Expected an integer, but found null. (at result)", "null", "null"},
        ResponseCase{"Neither", "", "The key “result” is missing.", "The key “result” is missing.",
                     "The key “result” is missing."},
        ResponseCase{"Both", R"("result":5,"error":{"code":1},)", R"_(JSONRPCError(1, ""))_",
                     R"_(JSONRPCError(1, "", data: null))_", R"_(JSONRPCError(1, ""))_"},
        ResponseCase{"ErrorWithData",
                     R"("error":{"code":-32602,"message":"no","data":{"reason":"r"}},)",
                     R"_(JSONRPCError(-32602, "no"))_",
                     R"_(JSONRPCError(-32602, "no", data: {"reason":"r"}))_",
                     R"_(JSONRPCError(-32602, "no"))_"}),
    [](const auto& row) { return std::string(row.param.name); });

struct RequestCase {
  const char* name;
  const char* message;
  const char* answer;
};

class JSONRPCIncomingRequest : public ::testing::TestWithParam<RequestCase> {};

/// Answers by its method, in each way that a handler can.
Task<void> answer(JSONRPCSession::IncomingRequest request) {
  const std::string& method = request.method();
  if (method == "add")
    co_await request.decode<Add>([](Add add) { return add.a + add.b; });
  else if (method == "find")
    co_await request.decode<Find>([](Find find) -> Task<Find::Result> { co_return find.word; });
  else if (method == "raw")
    co_await request.decode([](std::optional<JSONValue> parameters) { return parameters; });
  else if (method == "twice") {
    co_await request.decode([](const std::optional<JSONValue>&) { return JSONValue("once"); });
    throw Error("too late");
  } else if (method == "refuse")
    throw JSONRPCError<Refusal>({7}, "no", Refusal{"r"});
  else if (method == "fail")
    throw Error("It “failed”.");
  else
    throw methodNotFound(method);
}

TEST_P(JSONRPCIncomingRequest, IsAnsweredOnce) {
  converse({.incomingRequestHandler = answer}, [](Session, Wire& wire) -> Task<void> {
    wire.say(GetParam().message);
    EXPECT_EQ(co_await wire.hear(), GetParam().answer);
    wire.say(R"({"jsonrpc":"2.0","id":"last","method":"raw"})");
    EXPECT_EQ(co_await wire.hear(), R"({"id":"last","jsonrpc":"2.0","result":null})");
  });
}

INSTANTIATE_TEST_SUITE_P(
    Cases, JSONRPCIncomingRequest,
    ::testing::Values(
        RequestCase{"Typed", R"({"jsonrpc":"2.0","id":1,"method":"add","params":{"a/b":2,"b":3}})",
                    R"({"id":1,"jsonrpc":"2.0","result":5})"},
        RequestCase{"NullID",
                    R"({"id":null,"jsonrpc":"2.0","method":"add","params":{"a/b":2,"b":3}})",
                    R"({"id":null,"jsonrpc":"2.0","result":5})"},
        RequestCase{"WithoutParametersThatItNeeds", R"({"jsonrpc":"2.0","id":1,"method":"add"})",
                    R"({"error":{"code":-32600,"message":"The request does not allow empty )"
                    R"(parameters."},"id":1,"jsonrpc":"2.0"})"},
        RequestCase{"OfAnotherShape",
                    R"({"jsonrpc":"2.0","id":1,"method":"add","params":{"b":"x"}})",
                    R"({"error":{"code":-32603,"message":"Expected an integer, but found a text. )"
                    R"_((at params.b)"},"id":1,"jsonrpc":"2.0"})_"},
        RequestCase{"WithNullForParameters",
                    R"({"jsonrpc":"2.0","id":"a","method":"find","params":null})",
                    R"({"id":"a","jsonrpc":"2.0","result":"default"})"},
        RequestCase{"WithANullResult", R"({"jsonrpc":"2.0","id":"a","method":"find","params":{}})",
                    R"({"id":"a","jsonrpc":"2.0","result":null})"},
        RequestCase{"Raw",
                    R"({"jsonrpc":"2.0","id":1,"method":"raw","params":[1,"/",{"b":1,"a":2}]})",
                    R"({"id":1,"jsonrpc":"2.0","result":[1,"/",{"a":2,"b":1}]})"},
        RequestCase{"AnsweredAndFailed", R"({"jsonrpc":"2.0","id":1,"method":"twice"})",
                    R"({"id":1,"jsonrpc":"2.0","result":"once"})"},
        RequestCase{"FailedWithData", R"({"jsonrpc":"2.0","id":1,"method":"refuse"})",
                    R"({"error":{"code":-32603,"message":"JSONRPCError(7, \"no\", data: )"
                    R"_({\"reason\":\"r\"})"},"id":1,"jsonrpc":"2.0"})_"},
        RequestCase{"Failed", R"({"jsonrpc":"2.0","id":1,"method":"fail"})",
                    R"({"error":{"code":-32603,"message":"It “failed”."},"id":1,"jsonrpc":"2.0"})"},
        RequestCase{
            "Unknown", R"({"jsonrpc":"2.0","id":1,"method":"nothing"})",
            R"({"error":{"code":-32601,"message":"The method “nothing” is not supported."},)"
            R"("id":1,"jsonrpc":"2.0"})"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(JSONRPCSession, SaysThatNothingIsSupportedWithoutAHandler) {
  converse({}, [](Session, Wire& wire) -> Task<void> {
    wire.say(R"({"jsonrpc":"2.0","id":3,"method":"any"})");
    EXPECT_EQ(co_await wire.hear(), R"({"error":{"code":-32601,"message":"The method “any” is not )"
                                    R"(supported."},"id":3,"jsonrpc":"2.0"})");
  });
}

TEST(JSONRPCSession, HandsNotificationsOverInOrder) {
  std::vector<std::int64_t> counts;
  std::optional<JSONValue> raw;
  const auto heard = [&](const JSONRPCSession::IncomingNotification& notification) {
    EXPECT_EQ(notification.method(), "tick");
    counts.push_back(notification.decode<Tick>().count);
    raw = notification.decode();
  };
  converse({.incomingNotificationHandler = heard}, [](Session, Wire& wire) -> Task<void> {
    for (int count = 1; count <= 5; ++count)
      wire.say(R"({"jsonrpc":"2.0","method":"tick","params":{"count":)" + std::to_string(count) +
               "}}");
    co_return;
  });
  EXPECT_EQ(counts, (std::vector<std::int64_t>{1, 2, 3, 4, 5}));
  EXPECT_EQ(raw, JSONValue(JSONObject{{"count", 5}}));
}

TEST(JSONRPCSession, GivesUpWhenTheTimeLimitHasPassed) {
  ManualClock clock;
  std::mutex mutex;
  std::vector<std::string> given;
  const auto onCancel = [&](JSONRPCMessageID id, CancelReason reason) -> Task<void> {
    const std::scoped_lock lock(mutex);
    given.push_back(id.debugDescription() + (reason == CancelReason::timedOut ? " late" : " off"));
    co_return;
  };
  const auto givenUp = [&](std::size_t count) {
    return [&, count] {
      const std::scoped_lock lock(mutex);
      return given.size() == count;
    };
  };
  const auto wire = std::make_shared<Wire>();
  const auto running = spawn([&] {
    return JSONRPCSession::run(
        {.messageFramer = std::make_unique<testing::ScriptedFramer>(wire),
         .requestTimeout = 10s,
         .clock = &clock},
        [&](Session session) -> Task<void> {
          const auto slow =
              spawn([=] { return session->sendRequest("a", {}, {.onCancel = onCancel}); });
          co_await wire->hear();
          const auto quick = spawn(
              [=] { return session->sendRequest("b", {}, {.timeout = 2s, .onCancel = onCancel}); });
          co_await wire->hear();
          const auto answered =
              spawn([=] { return session->sendRequest("c", {}, {.timeout = 24h}); });
          co_await wire->hear();
          EXPECT_EQ(co_await describe(quick), "cancelled");
          wire->say(R"({"jsonrpc":"2.0","id":1,"result":"too late"})");
          wire->say(R"({"jsonrpc":"2.0","id":2,"result":"in time"})");
          EXPECT_EQ(co_await describe(answered), R"("in time")");
          EXPECT_EQ(co_await describe(slow), "cancelled");
          wire->hangUp();
        });
  });
  // The earliest limit comes from the second request, and then from the first.
  const Clock::Instant start = clock.now();
  waitUntil([&] { return wire->writeCount() == 3 && clock.earliestDeadline() == start + 2s; });
  clock.advance(2s - 1ns);
  EXPECT_EQ(clock.earliestDeadline(), start + 2s);
  clock.advance(1ns);
  waitUntil(givenUp(1));
  waitUntil([&] { return clock.earliestDeadline() == start + 10s; });
  clock.advance(8s);
  waitUntil(givenUp(2));
  waitUntil([&] { return running.isFinished(); });
  EXPECT_EQ(given, (std::vector<std::string>{"1 late", "0 late"}));
}

TEST(JSONRPCSession, ACancelledCallerIsFreedAndItsCancellationTold) {
  std::vector<std::string> given;
  converse({}, [&](Session session, Wire& wire) -> Task<void> {
    auto [told, stream] = makeAsyncStream<std::string>();
    const auto onCancel = [told](JSONRPCMessageID id, CancelReason reason) -> Task<void> {
      told.yield(id.debugDescription() + (reason == CancelReason::cancelled ? " off" : " late"));
      co_return;
    };
    const auto request =
        spawn([=] { return session->sendRequest("x", {}, {.onCancel = onCancel}); });
    co_await wire.hear();
    // Its answer is certain to find the request waiting; so will the cancellation.
    const auto other = spawn([=] { return session->sendRequest("y"); });
    co_await wire.hear();
    wire.say(R"({"jsonrpc":"2.0","id":1,"result":1})");
    co_await describe(other);
    request.cancel();
    EXPECT_EQ(co_await describe(request), "cancelled");
    EXPECT_EQ(co_await stream.next(), "0 off");
    wire.say(R"({"jsonrpc":"2.0","id":0,"result":1})"); // ignored
  });
}

TEST(JSONRPCSession, ACancelledTaskSendsNothing) {
  converse({}, [](Session session, Wire& wire) -> Task<void> {
    TaskScope cancelled;
    cancelled.cancelAll();
    const auto request = cancelled.spawn([=] { return session->sendRequest("x"); });
    EXPECT_EQ(co_await describe(request), "cancelled");
    EXPECT_EQ(wire.writeCount(), 0);
  });
}

TEST(JSONRPCSession, AFailedWriteIsTheCallersAndLeavesNothing) {
  converse({}, [](Session session, Wire& wire) -> Task<void> {
    wire.whileWriting = []() -> Task<void> {
      throw SystemError("The pipe broke.", EPIPE);
      co_return;
    };
    const auto request = spawn([=] { return session->sendRequest("x"); });
    EXPECT_EQ(co_await describe(request), "The pipe broke.");
    const auto notification = spawn([=] { return session->sendNotification("x"); });
    EXPECT_EQ(describe(co_await notification.waitForEnd()), "The pipe broke.");
  });
}

TEST(JSONRPCSession, AResponseMayComeBeforeTheWriteHasEnded) {
  bool isAnswered = false;
  const auto transcript = [&](const JSONRPCSession::TranscriptEvent& event) {
    isAnswered |= std::holds_alternative<JSONRPCSession::ResponseReceived>(event);
  };
  auto [opened, gate] = makeAsyncStream<int>();
  const auto heard = [opened](const JSONRPCSession::IncomingNotification&) { opened.yield(1); };
  converse({.incomingNotificationHandler = heard, .transcriptHandler = transcript},
           [&](Session session, Wire& wire) -> Task<void> {
             wire.whileWriting = [&]() -> Task<void> { co_await gate.next(); };
             const auto request = spawn([=] { return session->sendRequest("x"); });
             co_await wire.hear();
             wire.say(R"({"jsonrpc":"2.0","id":0,"result":"soon"})");
             wire.say(R"({"jsonrpc":"2.0","method":"go on"})");
             EXPECT_EQ(co_await describe(request), R"("soon")");
           });
  EXPECT_TRUE(isAnswered);
}

struct BadMessageCase {
  const char* name;
  std::string message;
  const char* failure;
  std::optional<std::int64_t> offset;
};

class JSONRPCBadMessage : public ::testing::TestWithParam<BadMessageCase> {};

TEST_P(JSONRPCBadMessage, EndsTheSessionAndTellsWhere) {
  std::exception_ptr end;
  converse({.endHandler = [&](const std::exception_ptr& failure) { end = failure; }},
           [](Session session, Wire& wire) -> Task<void> {
             wire.say(R"({"jsonrpc":"2.0","method":"good"})");
             const auto request = spawn([=] { return session->sendRequest("x"); });
             co_await wire.hear();
             wire.say(GetParam().message);
             EXPECT_EQ(co_await describe(request), GetParam().failure);
             EXPECT_FALSE(session->isRunning());
           });
  EXPECT_EQ(describe(end), GetParam().failure);
  try {
    std::rethrow_exception(end);
  } catch (const JSONRPCMessageError& error) {
    EXPECT_EQ(charactersOf(error.data()), GetParam().message);
    EXPECT_EQ(error.byteOffset(), GetParam().offset);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, JSONRPCBadMessage,
    ::testing::Values(
        BadMessageCase{"OldVersion", R"({"jsonrpc":"1.0","id":1,"method":"x"})",
                       "message 2: The JSON-RPC protocol version 1.0 is not supported. (at "
                       "jsonrpc)",
                       std::nullopt},
        BadMessageCase{"NoVersion", R"({"id":1,"method":"x"})",
                       "message 2: The key “jsonrpc” is missing.", std::nullopt},
        BadMessageCase{"IDOfAnotherType", R"({"jsonrpc":"2.0","id":[1],"method":"x"})",
                       "message 2: Expected message ID to be a string, number, or null. (at id)",
                       std::nullopt},
        BadMessageCase{"FractionForID", R"({"jsonrpc":"2.0","id":1.5})",
                       "message 2: Expected message ID to be a string, number, or null. (at id)",
                       std::nullopt},
        BadMessageCase{"NeitherIDNorMethod", R"({"jsonrpc":"2.0"})",
                       "message 2: The key “method” is missing.", std::nullopt},
        BadMessageCase{"MethodOfAnotherType", R"({"jsonrpc":"2.0","method":3})",
                       "message 2: Expected a text, but found an integer. (at method)",
                       std::nullopt},
        BadMessageCase{"Batch", R"([{"jsonrpc":"2.0","method":"x"}])",
                       "message 2: Expected an object, but found an array.", std::nullopt},
        BadMessageCase{"NoJSON", "{\"jsonrpc\":\"2.0\",}",
                       "message 2: Expected a key in double quotes at byte 17 (line 1, column 18).",
                       17}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(JSONRPCSession, AtTheStreamsEndAllWhoWaitAreTold) {
  std::vector<std::string> order;
  auto [handled, ended] = makeAsyncStream<std::string>();
  const auto handler = [handled](JSONRPCSession::IncomingRequest) -> Task<void> {
    handled.yield("begun");
    std::exception_ptr failure;
    try {
      co_await monotonicClock().sleepFor(1h);
    } catch (...) {
      failure = std::current_exception();
    }
    handled.yield(describe(failure));
  };
  const auto atEnd = [&](const std::exception_ptr& failure) {
    order.push_back("end: " + describe(failure));
  };
  converse({.incomingRequestHandler = handler, .endHandler = atEnd},
           [&](Session session, Wire& wire) -> Task<void> {
             wire.say(R"({"jsonrpc":"2.0","id":1,"method":"wait"})");
             EXPECT_EQ(co_await ended.next(), "begun");
             const auto request = spawn([=] { return session->sendRequest("x"); });
             co_await wire.hear();
             wire.hangUp();
             EXPECT_EQ(co_await describe(request), "cancelled");
             EXPECT_EQ(co_await ended.next(), "cancelled");
             EXPECT_EQ(wire.writeCount(), 1); // no response once it isn't running
             co_await session->sendNotification("still written");
             EXPECT_EQ(co_await wire.hear(), R"({"jsonrpc":"2.0","method":"still written"})");
           });
  EXPECT_EQ(order, (std::vector<std::string>{"end: nothing"}));
}

TEST(JSONRPCSession, WhatTheFramerFailsWithReachesThoseWhoWait) {
  converse({}, [](Session session, Wire& wire) -> Task<void> {
    const auto request = spawn([=] { return session->sendRequest("x"); });
    co_await wire.hear();
    wire.fail(std::make_exception_ptr(SystemError("The line is dead.", EIO)));
    EXPECT_EQ(co_await describe(request), "The line is dead.");
  });
}

TEST(JSONRPCSession, WhatTheBodyThrowsEndsTheReading) {
  const auto wire = std::make_shared<Wire>();
  const auto running = [&] {
    return JSONRPCSession::run({.messageFramer = std::make_unique<testing::ScriptedFramer>(wire)},
                               [](Session) -> Task<int> {
                                 throw Error("enough");
                                 co_return 1;
                               });
  };
  EXPECT_THROW(mainExecutor().run(running), Error); // though the peer never hangs up
}

TEST(JSONRPCSession, GivesWhatTheBodyGives) {
  const auto wire = std::make_shared<Wire>();
  wire->hangUp();
  EXPECT_EQ(mainExecutor().run([&] {
    return JSONRPCSession::run({.messageFramer = std::make_unique<testing::ScriptedFramer>(wire)},
                               [](const Session&) { return 42; });
  }),
            42);
}

TEST(JSONRPCSession, WritesATranscriptOfAllThatGoesOverTheWire) {
  std::vector<std::string> lines;
  const auto transcript = [&](const JSONRPCSession::TranscriptEvent& event) {
    static constexpr const char* kinds[] = {"request sent",      "request received",
                                            "response sent",     "response received",
                                            "notification sent", "notification received"};
    std::visit(
        [&](const auto& any) {
          std::string line = std::string(kinds[event.index()]) + " " + any.method;
          if constexpr (requires { any.id; })
            line += " " + any.id.debugDescription();
          lines.push_back(line + " " + std::string(charactersOf(any.data)));
        },
        event);
  };
  converse({.incomingRequestHandler = answer, .transcriptHandler = transcript},
           [](Session session, Wire& wire) -> Task<void> {
             const auto request = spawn([=] { return session->sendRequest("x"); });
             co_await wire.hear();
             wire.say(R"({"id":9,"jsonrpc":"2.0","result":"nobody asked"})");
             wire.say(R"({"id":0,"jsonrpc":"2.0","result":1})");
             co_await describe(request);
             co_await session->sendNotification("n");
             co_await wire.hear();
             wire.say(R"({"id":"q","jsonrpc":"2.0","method":"raw"})");
             co_await wire.hear();
             wire.say(R"({"jsonrpc":"2.0","method":"m"})");
           });
  EXPECT_EQ(lines, (std::vector<std::string>{
                       R"(request sent x 0 {"id":0,"jsonrpc":"2.0","method":"x"})",
                       R"(response received x 0 {"id":0,"jsonrpc":"2.0","result":1})",
                       R"(notification sent n {"jsonrpc":"2.0","method":"n"})",
                       R"(request received raw q {"id":"q","jsonrpc":"2.0","method":"raw"})",
                       R"(response sent raw q {"id":"q","jsonrpc":"2.0","result":null})",
                       R"(notification received m {"jsonrpc":"2.0","method":"m"})"}));
}

} // namespace
} // namespace velmar
