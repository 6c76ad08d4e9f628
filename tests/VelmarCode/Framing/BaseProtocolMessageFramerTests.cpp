#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"

#include "VelmarCore/JSONRPC/JSONRPCError.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

namespace velmar {
namespace {

Bytes bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return {view.begin(), view.end()};
}

/// A peer in memory: gives its chunks one by one and notes what it was asked for.
class ScriptedStream final : public StreamingIO {
public:
  explicit ScriptedStream(std::deque<std::string> chunks) : chunks_(std::move(chunks)) {}

  Task<std::optional<Bytes>> read(std::int64_t minimumBytes) override {
    asked.push_back(minimumBytes);
    if (chunks_.empty())
      co_return std::nullopt;
    const std::string chunk = std::move(chunks_.front());
    chunks_.pop_front();
    co_return bytes(chunk);
  }
  Task<void> write(Bytes message) override {
    written.emplace_back(charactersOf(message));
    co_return;
  }

  std::vector<std::int64_t> asked;
  std::vector<std::string> written;

private:
  std::deque<std::string> chunks_;
};

struct Session {
  explicit Session(std::deque<std::string> chunks)
      : stream(std::make_shared<ScriptedStream>(std::move(chunks))), framer(stream) {}

  std::string next() {
    const auto message = mainExecutor().run([this] { return framer.read(); });
    return message ? std::string(charactersOf(*message)) : "end";
  }

  std::shared_ptr<ScriptedStream> stream;
  BaseProtocolMessageFramer framer;
};

TEST(BaseProtocolMessageFramer, ReadsWhatAHeaderAnnounces) {
  struct Case {
    const char* name;
    std::string bytes;
    const char* message; // "refused": no valid length; "end": not all there
  };
  const Case cases[] = {
      {"plain", "Content-Length: 2\r\n\r\n{}", "{}"},
      {"signed", "Content-Length: +2\r\n\r\n{}", "{}"},
      {"leading zeros", "Content-Length: 0002\r\n\r\n{}", "{}"},
      {"other headers", "Content-Type: x; charset=y\r\nContent-Length: 2\r\n\r\n{}", "{}"},
      {"the last of two", "Content-Length: 9\r\nContent-Length: 2\r\n\r\n{}", "{}"},
      {"noise in front", "Starting up\r\nContent-Length: 2\r\n\r\n{}", "{}"},
      {"bad UTF-8 in a header", "X: \xff\r\nContent-Length: 2\r\n\r\n{}", "{}"},
      {"bad UTF-8 in the body", "Content-Length: 2\r\n\r\n\xff\xfe", "\xff\xfe"},
      {"line feeds in the body", "Content-Length: 4\r\n\r\n\r\n\r\n", "\r\n\r\n"},
      {"no blank", "Content-Length:12\r\n\r\n", "refused"},
      {"trailing blank", "Content-Length: 12 \r\n\r\n", "refused"},
      {"no number", "Content-Length: abc\r\n\r\n", "refused"},
      {"empty", "Content-Length: \r\n\r\n", "refused"},
      {"negative", "Content-Length: -5\r\n\r\n", "refused"},
      {"two signs", "Content-Length: +-5\r\n\r\n", "refused"},
      {"zero", "Content-Length: 0\r\n\r\n", "refused"},
      {"beyond integers", "Content-Length: 9223372036854775808\r\n\r\n", "refused"},
      {"lower case", "content-length: 2\r\n\r\n{}", "refused"},
      {"no header", "\r\n{}", "refused"},
      {"other headers only", "X: y\r\n\r\n{}", "refused"},
      {"eight exabytes", "Content-Length: 9223372036854775807\r\n\r\n{}", "end"},
      {"half a body", "Content-Length: 3\r\n\r\n{}", "end"},
      {"half a header", "Content-Length: 2\r\n\r", "end"},
      {"line feeds alone", "Content-Length: 2\n\n{}", "end"},
      {"nothing", "", "end"},
  };
  for (const Case& row : cases)
    for (const std::size_t piece : {row.bytes.size() + 1, std::size_t{1}}) {
      SCOPED_TRACE(std::string(row.name) + (piece == 1 ? ", byte by byte" : ""));
      std::deque<std::string> chunks;
      for (std::size_t at = 0; at < row.bytes.size(); at += piece)
        chunks.push_back(row.bytes.substr(at, piece));
      Session session(std::move(chunks));
      std::string message;
      try {
        message = session.next();
      } catch (const JSONRPCError<JSONRPCVoid>& error) {
        EXPECT_EQ(error.code(), JSONRPCErrorCode::parseError);
        EXPECT_EQ(error.text(), "Message received did not include a valid Content-Length header.");
        message = "refused";
      }
      EXPECT_EQ(message, row.message);
    }
}

TEST(BaseProtocolMessageFramer, TwoMessagesOfOneChunkTakeOneRead) {
  Session session({"Content-Length: 1\r\n\r\nAContent-Length: 2\r\n\r\nBBCont"});
  EXPECT_EQ(session.next(), "A");
  EXPECT_EQ(session.next(), "BB");
  EXPECT_EQ(session.stream->asked, std::vector<std::int64_t>{0});
  EXPECT_EQ(session.framer.position(), 45);
  EXPECT_EQ(charactersOf(session.framer.unread()), "Cont");
  EXPECT_EQ(session.next(), "end");
}

TEST(BaseProtocolMessageFramer, AsksForExactlyWhatIsMissing) {
  Session session({"Content-Le", "ngth: 5\r\n", "\r\na", "b", "cde"});
  EXPECT_EQ(session.next(), "abcde");
  EXPECT_EQ(session.stream->asked, (std::vector<std::int64_t>{0, 0, 0, 4, 3}));
}

TEST(BaseProtocolMessageFramer, KeepsHeadersAsTheyStand) {
  BaseProtocolMessageFramer framer(nullptr);
  framer.append(bytesOf("X-Custom: a: b\r\nContent-Length: 1\r\nx: \r\n: y\r\n\r\nZ"));
  std::int64_t required = 0;
  const auto message = framer.readMessage(required);
  EXPECT_EQ(message->headers,
            (std::map<std::string, std::string, std::less<>>{
                {"X-Custom", "a: b"}, {"Content-Length", "1"}, {"x", ""}, {"", "y"}}));
}

TEST(BaseProtocolMessageFramer, AFailureLeavesTheBytesToLookAt) {
  Session session({"Content-Length: 1\r\n\r\nAX: y\r\n\r\nrest"});
  EXPECT_EQ(session.next(), "A");
  EXPECT_THROW(session.next(), JSONRPCError<JSONRPCVoid>);
  EXPECT_EQ(session.framer.position(), 22);
  EXPECT_EQ(charactersOf(session.framer.unread()), "X: y\r\n\r\nrest");
}

TEST(BaseProtocolMessageFramer, WritesHeaderAndBodyAtOnce) {
  Session session({});
  mainExecutor().run([&] { return session.framer.write(bytes("{\"a\":1}")); });
  EXPECT_EQ(session.stream->written,
            std::vector<std::string>{"Content-Length: 7\r\n\r\n{\"a\":1}"});
}

TEST(BaseProtocolMessageFramer, ManyMessagesInAnyPiecesComeOutInOrder) {
  std::string wire;
  for (int number = 0; number < 3000; ++number) {
    const std::string body(static_cast<std::size_t>(number % 97 + 1), static_cast<char>(number));
    wire += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  }
  for (const std::size_t piece : {7U, 100U, 4096U, 1'000'000U}) {
    std::deque<std::string> chunks;
    for (std::size_t at = 0; at < wire.size(); at += piece)
      chunks.push_back(wire.substr(at, piece));
    Session session(std::move(chunks));
    for (int number = 0; number < 3000; ++number)
      ASSERT_EQ(session.next(),
                std::string(static_cast<std::size_t>(number % 97 + 1), static_cast<char>(number)));
    EXPECT_EQ(session.next(), "end");
  }
}

} // namespace
} // namespace velmar
