#include "VelmarCore/Network/StreamingIO.h"

#include "VelmarPlatform/Basics/Error.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/Socket.h"
#include "VelmarPlatform/Concurrency/Spawn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <string>
#include <unistd.h>

namespace velmar {
namespace {

template <class Body>
TaskValueOf<Body> run(Body body) {
  return mainExecutor().run(std::move(body));
}

Bytes bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return {view.begin(), view.end()};
}

std::string textOf(const std::optional<Bytes>& read) {
  return read ? std::string(charactersOf(*read)) : "end";
}

/// A stream that reads what it writes.
std::shared_ptr<StreamingIO> makeLoop() {
  Pipe pipe = Pipe::make();
  return StreamingIO::fileDescriptor(std::move(pipe.readingEnd), std::move(pipe.writingEnd));
}

/// A stream whose peer writes `texts`, one after the other, and goes.
std::shared_ptr<StreamingIO> makeStreamOf(std::vector<std::string> texts, TaskScope& scope) {
  auto [ours, theirs] = makeSocketPair();
  scope.spawn([peer = theirs, texts = std::move(texts)]() -> Task<void> {
    for (const std::string& text : texts)
      co_await peer->write(bytes(text));
    peer->close();
  });
  return StreamingIO::subprocess(AsyncBytes(ours), InputWriter(ours));
}

TEST(StreamingIO, GivesWhateverComesNext) {
  run([]() -> Task<void> {
    const auto loop = makeLoop();
    for (const char* text : {"hello", "x"}) {
      co_await loop->write(bytes(text));
      EXPECT_EQ(textOf(co_await loop->read(0)), text);
    }
  });
}

TEST(StreamingIO, GathersTheMinimumOverSeveralChunks) {
  run([]() -> Task<void> {
    TaskScope scope;
    const auto stream = makeStreamOf({"ab", "c", "defgh"}, scope);
    const auto read = co_await stream->read(4);
    EXPECT_GE(read->size(), 4U);
    EXPECT_TRUE(std::string("abcdefgh").starts_with(textOf(read)));
  });
}

TEST(StreamingIO, GivesLessAtTheEndAndThenNothing) {
  run([]() -> Task<void> {
    TaskScope scope;
    const auto stream = makeStreamOf({"abc"}, scope);
    EXPECT_EQ(textOf(co_await stream->read(10)), "abc");
    EXPECT_EQ(textOf(co_await stream->read(10)), "end");
    EXPECT_EQ(textOf(co_await stream->read(0)), "end");
  });
}

/// Puts a descriptor in the place of one of the process's own as long as it exists.
class Replaced {
public:
  Replaced(int number, const FileDescriptor& by) : number_(number), before_(::dup(number)) {
    ::dup2(by.number(), number);
  }
  Replaced(const Replaced&) = delete;
  Replaced& operator=(const Replaced&) = delete;
  ~Replaced() { ::dup2(before_.number(), number_); }

private:
  int number_;
  FileDescriptor before_;
};

TEST(StreamingIO, StandardStreamsAreReadAndWrittenAndStayAsTheyAre) {
  std::fflush(stdout); // what gtest has said so far isn't ours
  Pipe input = Pipe::make();
  Pipe output = Pipe::make();
  const Replaced standardInput(STDIN_FILENO, input.readingEnd);
  const Replaced standardOutput(STDOUT_FILENO, output.writingEnd);
  run([&]() -> Task<void> {
    auto stream = StreamingIO::standardIO();
    EXPECT_EQ(::write(input.writingEnd.number(), "ask", 3), 3);
    EXPECT_EQ(textOf(co_await stream->read(3)), "ask");
    co_await stream->write(bytes("answer"));
    stream.reset();
  });
  std::array<char, 16> answer{};
  EXPECT_EQ(::read(output.readingEnd.number(), answer.data(), answer.size()), 6);
  EXPECT_EQ(std::string_view(answer.data()), "answer");
  // Still open, and whoever shares them finds them blocking as before.
  for (const int number : {STDIN_FILENO, STDOUT_FILENO})
    EXPECT_EQ(::fcntl(number, F_GETFL) & O_NONBLOCK, 0) << number;
}

TEST(StreamingIO, TakesNoMemoryForBytesThatDoNotCome) {
  run([]() -> Task<void> {
    TaskScope scope;
    const auto stream = makeStreamOf({std::string(100'000, 'x')}, scope);
    const auto read = co_await stream->read(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(read->size(), 100'000U);
    EXPECT_LE(read->capacity(), 800'000U);
  });
}

TEST(StreamingIO, ReadsALargeBodyInOneCall) {
  run([]() -> Task<void> {
    TaskScope scope;
    std::string body(5'000'000, ' ');
    std::ranges::generate(body, [n = 0]() mutable { return static_cast<char>(n++ * 7); });
    const auto stream = makeStreamOf({body}, scope);
    EXPECT_TRUE(textOf(co_await stream->read(5'000'000)) == body);
  });
}

TEST(StreamingIO, AReadThatWaitsLetsWritesThrough) {
  run([]() -> Task<void> {
    auto [ours, theirs] = makeSocketPair();
    const auto stream = StreamingIO::subprocess(AsyncBytes(ours), InputWriter(ours));
    const auto reading = spawn([stream] { return stream->read(0); });
    co_await stream->write(bytes("ping"));
    EXPECT_EQ(textOf(co_await theirs->read(100)), "ping");
    co_await theirs->write(bytes("pong"));
    EXPECT_EQ(textOf(co_await reading.value()), "pong");
  });
}

TEST(StreamingIO, WritesOfSeveralTasksComeOutWhole) {
  run([]() -> Task<void> {
    constexpr std::size_t length = 300'000; // more than a pipe holds
    const auto loop = makeLoop();
    TaskScope scope;
    for (const char letter : {'a', 'b', 'c'})
      scope.spawn([loop, letter] { return loop->write(Bytes(length, std::byte(letter))); });
    std::string text;
    while (text.size() < 3 * length)
      text += textOf(co_await loop->read(0));
    for (std::size_t start = 0; start < text.size(); start += length)
      EXPECT_EQ(text.find_first_not_of(text[start], start),
                std::min(start + length, text.size()) == text.size() ? std::string::npos
                                                                     : start + length);
  });
}

TEST(StreamingIO, AWriteThatNobodyReadsFails) {
  run([]() -> Task<void> {
    auto [ours, theirs] = makeSocketPair();
    theirs->close();
    const auto stream = StreamingIO::subprocess(AsyncBytes(ours), InputWriter(ours));
    EXPECT_THROW(co_await stream->write(bytes("x")), SystemError);
  });
}

} // namespace
} // namespace velmar
