#include "VelmarCode/Framing/StreamPlayer.h"

#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"
#include "VelmarPlatform/Concurrency/Clock.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"

#include <gtest/gtest.h>

#include <deque>

namespace velmar {
namespace {

using Direction = StreamChunk::Direction;

Bytes bytes(std::string_view text) {
  const auto view = bytesOf(text);
  return {view.begin(), view.end()};
}

std::string framed(const std::string& body) {
  return "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// Notes reads and writes in the order in which they come.
class Script final : public StreamingIO {
public:
  explicit Script(std::deque<std::string> chunks) : chunks_(std::move(chunks)) {}
  Task<std::optional<Bytes>> read(std::int64_t) override {
    if (chunks_.empty()) {
      log += "<end>";
      co_return std::nullopt;
    }
    const std::string chunk = std::move(chunks_.front());
    chunks_.pop_front();
    log += "<" + chunk.substr(0, 3) + ">";
    co_return bytes(chunk);
  }
  Task<void> write(Bytes message) override {
    log += charactersOf(message);
    co_return;
  }
  std::string log;

private:
  std::deque<std::string> chunks_;
};

TEST(StreamRecord, LinesAreReadAsTheyWereWritten) {
  Bytes all;
  for (int i = 0; i < 256; ++i)
    all.push_back(static_cast<std::byte>(i));
  const std::vector<StreamChunk> chunks{{Direction::sent, 0, bytes("a")},
                                        {Direction::received, 1234, all},
                                        {Direction::received, 1234, {}}};
  std::string text = "\n";
  for (const StreamChunk& chunk : chunks)
    text += lineOf(chunk);
  EXPECT_EQ(readStreamRecord(text), chunks);
  EXPECT_EQ(lineOf(chunks[0]), R"({"direction":"sent","milliseconds":0,"data":"YQ=="})"
                               "\n");
  try {
    static_cast<void>(readStreamRecord(lineOf(chunks[0]) + R"({"direction":"up"})"));
    FAIL() << "was read";
  } catch (const StreamRecordError& error) {
    EXPECT_STREQ(error.what(),
                 "Line 2 of the record: Expected one of “received”, “sent”, but found "
                 "“up”. (at direction)");
  }
}

TEST(RecordingStreamingIO, TellsEachChunkAsItCame) {
  const auto script = std::make_shared<Script>(std::deque<std::string>{"one", "two", "three"});
  std::vector<StreamChunk> told;
  ManualClock clock;
  RecordingStreamingIO stream(
      script, [&](const StreamChunk& chunk) { told.push_back(chunk); }, clock);
  clock.advance(std::chrono::milliseconds(7));
  const auto first = mainExecutor().run([&] { return stream.read(4); });
  EXPECT_EQ(charactersOf(first.value()), "onetwo");
  clock.advance(std::chrono::milliseconds(5));
  mainExecutor().run([&] { return stream.write(bytes("up")); });
  const auto second = mainExecutor().run([&] { return stream.read(100); });
  EXPECT_EQ(charactersOf(second.value()), "three");
  EXPECT_FALSE(mainExecutor().run([&] { return stream.read(0); }));
  EXPECT_EQ(told, (std::vector<StreamChunk>{{Direction::received, 7, bytes("one")},
                                            {Direction::received, 7, bytes("two")},
                                            {Direction::sent, 12, bytes("up")},
                                            {Direction::received, 12, bytes("three")}}));
}

struct PlayCase {
  const char* name;
  std::deque<std::string> heard;
  std::string log;
};
class Player : public testing::TestWithParam<PlayCase> {};
TEST_P(Player, WaitsForAsManyMessagesAsThereWere) {
  const std::vector<StreamChunk> record{{Direction::received, 0, bytes("noise ")},
                                        {Direction::sent, 3, bytes(framed("1"))},
                                        {Direction::received, 4, bytes("first ")},
                                        {Direction::sent, 4, bytes(framed("2").substr(0, 5))},
                                        {Direction::sent, 5, bytes(framed("2").substr(5))},
                                        {Direction::sent, 5, bytes(framed("3"))},
                                        {Direction::received, 6, bytes("last")},
                                        {Direction::sent, 7, bytes(framed("bye"))}};
  const auto script = std::make_shared<Script>(GetParam().heard);
  mainExecutor().run([&] { return playStreamRecord(record, script); });
  EXPECT_EQ(script->log, GetParam().log);
}
INSTANTIATE_TEST_SUITE_P(
    Cases, Player,
    testing::Values(
        PlayCase{"OneByOne",
                 {framed("one"), framed("two"), framed("three"), framed("bye")},
                 "noise <Con>first <Con><Con>last<Con>"},
        PlayCase{
            "AllAtOnce", {framed("1") + framed("2") + framed("3")}, "noise <Con>first last<end>"},
        PlayCase{"EndsWithTheStream", {framed("1"), "Content"}, "noise <Con>first <Con><end>"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmar
