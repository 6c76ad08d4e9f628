#include "RunHost.h"
#include "TemporaryFolder.h"
#include "VelmarCore/Network/StreamRecord.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/Socket.h"
#include "host/RPCConversation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmar::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::shared_ptr<StreamingIO> streamOf(const std::shared_ptr<AsyncDescriptor>& socket) {
  return StreamingIO::subprocess(AsyncBytes(socket), InputWriter(socket));
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
