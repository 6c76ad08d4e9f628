#include "host/PeerCommand.h"

#include "VelmarCode/Framing/StreamPlayer.h"
#include "VelmarPlatform/Basics/Overloaded.h"
#include "VelmarPlatform/Concurrency/MainExecutor.h"
#include "VelmarPlatform/Concurrency/Socket.h"
#include "VelmarPlatform/Files/FileContents.h"
#include "host/PeerFaults.h"
#include "host/RPCConversation.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fmt/format.h>

namespace velmar::host {

namespace {

constexpr std::int64_t largestRecord = std::int64_t{1} << 30;

SocketAddress addressToListenAt(const NetworkEndpoint& endpoint) {
  return std::visit(
      Overloaded{[](const NetworkEndpoint::UnixSocket& socket) {
                   return SocketAddress::unixPath(socket.path.string());
                 },
                 [](const NetworkEndpoint::HostPort& place) {
                   const auto* address = std::get_if<IPv4Address>(&place.host.value());
                   if (address == nullptr)
                     throw UsageError("“--listen” needs unix:PATH or an IPv4 address with a port.");
                   return SocketAddress::ipv4(address->rawValue(), place.port.rawValue);
                 }},
      endpoint.value());
}

/// The stream to the first who connects. Nobody else can, so a socket's file goes then.
Task<std::shared_ptr<StreamingIO>> acceptOne(NetworkEndpoint endpoint) {
  ListeningSocket listener(addressToListenAt(endpoint));
  const auto socket = co_await listener.accept();
  if (const auto* file = std::get_if<NetworkEndpoint::UnixSocket>(&endpoint.value()))
    std::remove(file->path.string().c_str());
  co_return StreamingIO::subprocess(AsyncBytes(socket), InputWriter(socket));
}

/// Runs a peer on standard input and output, or on a connection to `endpoint`. That the other side
/// has gone is its good right.
template <class Peer>
void runPeerOn(std::optional<std::string_view> endpoint, Peer peer) {
  const auto whole = [&]() -> Task<void> {
    if (endpoint)
      co_await peer(co_await acceptOne(endpointFromText(*endpoint)));
    else
      co_await peer(StreamingIO::standardIO());
  };
  try {
    mainExecutor().run(whole);
  } catch (const SystemError& error) {
    if (error.code() != EPIPE)
      throw;
  }
}

void list(Streams& streams) {
  streams.output.write(fmt::format("  {:<16} {}\n", "echo", "no fault: the parameters come back"));
  for (const PeerFault& fault : peerFaults())
    streams.output.write(fmt::format("  {:<16} {}\n", fault.name, fault.summary));
}

void runPeer(const Arguments& arguments, Streams& streams) {
  if (arguments.has("--list") && arguments.operands.empty())
    return list(streams);
  if (arguments.operands.size() != 1)
    throw UsageError("“velmar peer” needs one fault; “--list” tells them.");
  const std::string& name = arguments.operands.front();
  const auto endpoint = arguments.valueOf("--listen");
  if (name == "echo")
    return runPeerOn(endpoint, [](auto stream) { return echo(std::move(stream)); });
  const auto fault = std::ranges::find(peerFaults(), name, &PeerFault::name);
  if (fault == peerFaults().end()) {
    std::vector<std::string_view> names;
    for (const PeerFault& each : peerFaults())
      names.push_back(each.name);
    throw UsageError(fmt::format("There is no fault “{}”{}", name, endWithSuggestion(name, names)));
  }
  runPeerOn(endpoint, [&](auto stream) { return playFault(&*fault, std::move(stream)); });
}

void runPlay(const Arguments& arguments, Streams& /*streams*/) {
  if (arguments.operands.size() != 1)
    throw UsageError("“velmar play” needs one record.");
  const Bytes text = readFile(FilePath(arguments.operands.front()), {.sizeLimit = largestRecord});
  auto record = readStreamRecord(charactersOf(text));
  const StreamPlayOptions options{.keepsPauses = arguments.has("--pauses")};
  runPeerOn(std::nullopt, [&](auto stream) {
    return playStreamRecord(std::move(record), std::move(stream), options);
  });
}

} // namespace

Command peerCommand() {
  return {
      .name = "peer",
      .summary = "Be a bad JSON-RPC peer on standard input and output.",
      .usage = "peer FAULT|echo|--list",
      .details = "Answers each request that comes, framed as language servers do, with the fault. "
                 "So one sees what a session makes of it.",
      .options = {{"--list", "", "Print the faults, a line each."},
                  {"--listen", "PLACE", "Serve one connection to unix:PATH or HOST:PORT."}},
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
      .details = "Writes what the peer wrote, in the recorded chunks, each after as many messages "
                 "have come as it was given then.",
      .options = {{"--pauses", "", "Keep the recorded pauses."}},
      .examples = {{"velmar play server.record", "Stand in for a server."}},
      .run = runPlay,
  };
}

} // namespace velmar::host
