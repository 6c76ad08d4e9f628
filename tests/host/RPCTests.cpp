#include "RunHost.h"
#include "TemporaryFolder.h"
#include "VelmarCore/Network/NetworkConnection.h"
#include "VelmarCore/Network/StreamRecord.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/Socket.h"
#include "VelmarPlatform/Process/Subprocess.h"
#include "cmake/SourceTree.h"
#include "host/PeerFaults.h"
#include "host/RPCConversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <sstream>

namespace velmar::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

std::shared_ptr<StreamingIO> streamOf(const std::shared_ptr<AsyncDescriptor>& socket) {
  return StreamingIO::subprocess(AsyncBytes(socket), InputWriter(socket));
}

/// What somebody sees who sends one request.
struct Seen {
  std::string request;
  std::string session;
  bool operator==(const Seen&) const = default;
};
void PrintTo(const Seen& seen, std::ostream* stream) {
  *stream << seen.request << " | " << seen.session;
}

/// The table of faults in the documentation, by name.
std::map<std::string, Seen> documentedFaults() {
  std::map<std::string, Seen> faults;
  std::istringstream text(contentsOf(sourcePath("docs/Faults.md")));
  for (std::string line; std::getline(text, line);) {
    if (!line.starts_with("| `"))
      continue;
    std::vector<std::string> cells;
    std::istringstream row(line.substr(1));
    for (std::string cell; std::getline(row, cell, '|');)
      cells.push_back(cell.substr(1, cell.size() - 2));
    faults[cells.at(0).substr(1, cells.at(0).size() - 2)] = {cells.at(2), cells.at(3)};
  }
  return faults;
}

/// Plays the peer, and hangs up when it has ended.
Task<void> play(const host::PeerFault* fault, std::shared_ptr<AsyncDescriptor> socket) {
  try {
    co_await host::playFault(fault, streamOf(socket));
  } catch (const Error&) { // NOLINT(bugprone-empty-catch): the other side may go first
  }
  socket->close();
}

class PeerFaults : public ::testing::TestWithParam<host::PeerFault> {};

TEST_P(PeerFaults, AreSeenAsTheTableOfFaultsSays) {
  const auto documented = documentedFaults();
  const auto row = documented.find(std::string(GetParam().name));
  ASSERT_NE(row, documented.end()) << "docs/Faults.md doesn't tell of it.";

  auto [ours, theirs] = makeSocketPair();
  TaskScope scope;
  scope.spawn([socket = theirs] { return play(&GetParam(), socket); });
  ManualClock clock;
  std::mutex mutex;
  std::vector<std::string> lines;
  const auto keep = [&](std::string line) {
    line.resize(std::min(line.find('\n'), line.size()));
    const std::scoped_lock lock(mutex);
    lines.push_back(line.size() < 200 ? std::move(line) : std::to_string(line.size()) + " bytes");
  };
  std::vector<std::string> requests = {"test"};
  const auto nextLine = [&]() -> Task<std::optional<std::string>> {
    if (requests.empty())
      co_return std::nullopt;
    std::string line = requests.back();
    requests.pop_back();
    co_return line;
  };
  const auto talk = spawn([&, stream = streamOf(ours)] {
    return host::converse(stream,
                          {.nextLine = nextLine, .print = keep, .complain = keep, .clock = &clock});
  });
  const bool mustWait = row->second.request.starts_with("No answer came");
  while (!mainExecutor().runUntil([&] { return talk.isFinished(); }, mustWait ? 5ms : 60s)) {
    ASSERT_TRUE(mustWait) << "It never ended.";
    clock.advance(31s);
  }
  ASSERT_FALSE(lines.empty());
  const std::string end = lines.size() > 1 ? lines[1] : "goes on";
  EXPECT_EQ((Seen{lines.front(), end}), row->second);
}

INSTANTIATE_TEST_SUITE_P(All, PeerFaults, ::testing::ValuesIn(host::peerFaults()),
                         [](const auto& row) {
                           std::string name(row.param.name);
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

TEST(PeerFaultTable, TellsOfNoOthers) {
  EXPECT_EQ(documentedFaults().size(), host::peerFaults().size());
}

TEST(RPC, ShowsTheBytesAroundAPlace) {
  struct Case {
    std::string bytes;
    std::int64_t offset;
    const char* excerpt;
  };
  const std::string letters(40, 'a');
  const Case cases[] = {
      {"", 0, "  \n  ^ byte 0"},
      {"abc", 1, "  abc\n   ^ byte 1"},
      {"a\r\nb\xE9", 3, "  a\\x0D\\x0Ab\\xE9\n           ^ byte 3"},
      {letters + "X" + letters, 40,
       "  …aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaXaaaaaaaaaaaaaaaaaaaaaaaaaaaaa…\n"
       "                                 ^ byte 40"},
  };
  for (const Case& row : cases)
    EXPECT_EQ(host::excerptOf(bytesOf(row.bytes), row.offset), row.excerpt);
}

TEST(RPC, ReadsEndpoints) {
  const std::pair<const char*, const char*> cases[] = {{"unix:/base/s", "/base/s"},
                                                       {"localhost:80", "localhost:80"},
                                                       {"127.0.0.1:80", "127.0.0.1:80"},
                                                       {"[::1]:80", "::1:80"}};
  for (const auto& [text, description] : cases)
    EXPECT_EQ(host::endpointFromText(text).debugDescription(), description);
  for (const char* text : {"", "unix:", "localhost", ":80", "localhost:", "localhost:70000"})
    EXPECT_THROW(static_cast<void>(host::endpointFromText(text)), host::UsageError) << text;
}

TEST(RPC, FloodsAPeerWithoutLoss) {
  auto [ours, theirs] = makeSocketPair();
  TaskScope scope;
  scope.spawn([stream = streamOf(theirs)] { return host::echo(stream); });
  const auto result =
      mainExecutor().run([&, stream = streamOf(ours)] { return host::flood(stream, 2000, 32); });
  EXPECT_EQ(result.answered, 2000);
  EXPECT_EQ(result.wrong, 0);
}

/// A program that waits for a request and answers the first one of all.
std::string peerThatSays(const std::string& text) {
  return "head -c 20 > /dev/null; printf '" + text + "'; cat > /dev/null";
}

TEST(RPC, SendsLinesAndRecords) {
  const TemporaryFolder folder;
  const std::string record = folder.path + "/record";
  const auto result = runHost({"rpc", "--stdio", "--record", record, "--", "sh", "-c",
                               peerThatSays("Content-Length: 40\\r\\n\\r\\n"
                                            R"({"jsonrpc":"2.0","method":"n"          })"
                                            "Content-Length: 36\\r\\n\\r\\n"
                                            R"({"jsonrpc":"2.0","id":0,"result":[]})")},
                              {.standardInput = "\n!hello\n  test {\"a\": 1}\nbad {\n"});
  EXPECT_EQ(result.output, "← n null\n[]\n");
  EXPECT_THAT(result.errors, StartsWith("The parameters can’t be read. "));
  EXPECT_EQ(result.exitCode, 1);
  const auto chunks = readStreamRecord(contentsOf(record));
  ASSERT_GE(chunks.size(), 3U);
  EXPECT_THAT(std::string(charactersOf(chunks[0].data)),
              HasSubstr(R"({"jsonrpc":"2.0","method":"hello"})"));
}

TEST(RPC, LeavesNoPeerThatStays) {
  const auto result = runHost({"rpc", "--stdio", "--timeout", "1", "--", "sh", "-c",
                               "trap '' TERM; while :; do sleep 1000; done"},
                              {.standardInput = "hello\n"});
  EXPECT_EQ(result.errors, "No answer came within 1 s.\n");
  EXPECT_EQ(result.exitCode, 1);
}

TEST(RPC, APeerLeavesNoSocketBehind) {
  const TemporaryFolder folder;
  const FilePath path(folder.path + "/socket");
  for (int round = 0; round < 2; ++round) {
    const auto peer = spawn([&] {
      return Subprocess::run({.executable = Subprocess::Executable::path(FilePath(VELMAR_PROGRAM)),
                              .arguments = {"peer", "echo", "--listen", "unix:" + path.string()}});
    });
    mainExecutor()
        .run([&] {
          return connectTo(NetworkEndpoint::unixSocket(path),
                           {.attempts = Attempts::retry(600, 100ms)});
        })
        ->cancel();
    const auto result = mainExecutor().run([&] { return peer.value(); });
    EXPECT_EQ(result.standardError, "");
    EXPECT_EQ(result.status, TerminationStatus::exited(0));
    EXPECT_FALSE(std::filesystem::exists(path.string()));
  }
}

/// All that was sent, in one piece.
std::string sentIn(const std::string& record) {
  std::string sent;
  for (const StreamChunk& chunk : readStreamRecord(contentsOf(record)))
    if (chunk.direction == StreamChunk::Direction::sent)
      sent += charactersOf(chunk.data);
  return sent;
}

// A conversation with clangd 14, recorded by
//     velmar rpc --record clangd.record --stdio -- clangd < clangd.lines.txt > clangd.out.txt
TEST(RPC, ARecordedServerIsUnderstoodAsItWas) {
  const TemporaryFolder folder;
  const std::string data = sourcePath("tests/host/data/clangd.");
  const std::string record = folder.path + "/record";
  const auto result =
      runHost({"rpc", "--stdio", "--record", record, "--", VELMAR_PROGRAM, "play", data + "record"},
              {.standardInput = contentsOf(data + "lines.txt")});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, contentsOf(data + "out.txt"));
  EXPECT_EQ(sentIn(record), sentIn(data + "record"));
}

TEST(RPC, SaysWhatIsWrongWithItsCommandLine) {
  const std::pair<std::vector<std::string>, const char*> cases[] = {
      {{"rpc"}, "needs either"},
      {{"rpc", "--stdio"}, "needs a command"},
      {{"rpc", "--connect", "here"}, "is neither"},
      {{"rpc", "--connect", "unix:/base/s", "sh"}, "takes no command"},
      {{"rpc", "--stdio", "--timeout", "soon", "sh"}, "needs a number"}};
  for (const auto& [words, sentence] : cases) {
    const auto result = runHost(words);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, HasSubstr(sentence));
  }
}

} // namespace
} // namespace velmar::testing
