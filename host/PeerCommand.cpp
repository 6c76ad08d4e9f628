#include "host/PeerCommand.h"

#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"
#include "VelmarCode/Framing/StreamPlayer.h"
#include "VelmarCore/JSON/JSONValue.h"
#include "VelmarPlatform/Coding/JSON/JSONCoding.h"
#include "VelmarPlatform/Coding/Record.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Files/FileContents.h"
#include "host/PeerFaults.h"

#include <algorithm>
#include <cerrno>
#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::int64_t largestRecord = std::int64_t{1} << 30;

/// What of a message a bad peer looks at.
struct Heard {
  std::optional<JSONValue> id;
  std::optional<std::string> method;
  bool operator==(const Heard&) const = default;
  static std::span<const FieldRow> rows() {
    static constexpr auto table =
        rowsOf<Heard>(row<&Heard::id>("id"), row<&Heard::method>("method"));
    return table;
  }
};

/// Answers each request on `stream` until one of the two ends.
Task<void> misbehave(const PeerFault* fault, std::shared_ptr<StreamingIO> stream) {
  BaseProtocolMessageFramer framer(stream);
  while (const std::optional<Bytes> message = co_await framer.read()) {
    const auto heard = JSONDecoder().decode<Heard>(std::span(*message));
    if (!heard.id || !heard.method)
      continue;
    for (const std::string& piece : fault->answer(JSONEncoder().encode(*heard.id))) {
      const auto bytes = bytesOf(piece);
      co_await stream->write(Bytes(bytes.begin(), bytes.end()));
    }
    if (fault->after == AfterFault::end)
      co_return;
  }
}

/// Runs a peer on standard input and output. That the other side has gone is its good right.
template <class Peer>
void runOnStandardIO(Peer peer) {
  try {
    mainExecutor().run([&] { return peer(StreamingIO::standardIO()); });
  } catch (const SystemError& error) {
    if (error.code() != EPIPE)
      throw;
  }
}

void list(Streams& streams) {
  for (const PeerFault& fault : peerFaults())
    streams.output.write(fmt::format("  {:<16} {}\n", fault.name, fault.summary));
}

void runPeer(const Arguments& arguments, Streams& streams) {
  if (arguments.has("--list") && arguments.operands.empty())
    return list(streams);
  if (arguments.operands.size() != 1)
    throw UsageError("“velmar peer” needs one fault; “--list” tells them.");
  const std::string& name = arguments.operands.front();
  const auto fault = std::ranges::find(peerFaults(), name, &PeerFault::name);
  if (fault == peerFaults().end()) {
    std::vector<std::string_view> names;
    for (const PeerFault& each : peerFaults())
      names.push_back(each.name);
    throw UsageError(fmt::format("There is no fault “{}”{}", name, endWithSuggestion(name, names)));
  }
  runOnStandardIO([&](auto stream) { return misbehave(&*fault, std::move(stream)); });
}

void runPlay(const Arguments& arguments, Streams& /*streams*/) {
  if (arguments.operands.size() != 1)
    throw UsageError("“velmar play” needs one record.");
  const Bytes text = readFile(FilePath(arguments.operands.front()), {.sizeLimit = largestRecord});
  auto record = readStreamRecord(charactersOf(text));
  const StreamPlayOptions options{.keepsPauses = arguments.has("--pauses")};
  runOnStandardIO(
      [&](auto stream) { return playStreamRecord(std::move(record), std::move(stream), options); });
}

} // namespace

Command peerCommand() {
  return {
      .name = "peer",
      .summary = "Be a bad JSON-RPC peer on standard input and output.",
      .usage = "peer FAULT | --list",
      .details =
          "Answers each request that comes, framed as language servers do, with the fault. So\n"
          "one sees what a session makes of it.\n",
      .options = {{"--list", "", "Print the faults, a line each."}},
      .examples = {{"velmar peer --list", "What can go wrong."},
                   {"velmar peer huge-length", "A peer that announces 8 EB."}},
      .run = runPeer,
  };
}

Command playCommand() {
  return {
      .name = "play",
      .summary = "Be the peer of a recorded conversation.",
      .usage = "play RECORD [--pauses]",
      .details =
          "Writes what the peer wrote, in the recorded chunks, each after as many messages have\n"
          "come as it was given then.\n",
      .options = {{"--pauses", "", "Keep the recorded pauses."}},
      .examples = {{"velmar play server.record", "Stand in for a server."}},
      .run = runPlay,
  };
}

} // namespace velmar::host
