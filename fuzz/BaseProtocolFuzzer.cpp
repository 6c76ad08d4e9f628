// The framing of messages on any bytes, in any pieces: what comes out doesn't depend on how the
// bytes arrived. The first byte of an input says how it is cut.

#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"
#include "VelmarCore/JSONRPC/JSONRPCError.h"
#include "VelmarPlatform/Basics/Precondition.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

using namespace velmar;

namespace {

struct Reading {
  std::vector<Bytes> messages;
  bool isRefused = false;
  std::int64_t position = 0;
  bool operator==(const Reading&) const = default;
};

Reading readAll(std::span<const std::byte> bytes, std::size_t pieceSize) {
  BaseProtocolMessageFramer framer(nullptr);
  Reading outcome;
  try {
    while (!bytes.empty()) {
      const auto piece = bytes.first(std::min(pieceSize, bytes.size()));
      bytes = bytes.subspan(piece.size());
      framer.append(piece);
      std::int64_t required = 0;
      while (auto message = framer.readMessage(required)) {
        precondition(message->headers.contains("Content-Length"), "A message has a length.");
        outcome.messages.push_back(std::move(message->data));
      }
      precondition(required >= 0, "A message can't lack less than nothing.");
    }
  } catch (const JSONRPCError<JSONRPCVoid>& error) {
    precondition(error.code() == JSONRPCErrorCode::parseError, "A bad header is a parse error.");
    outcome.isRefused = true;
  }
  outcome.position = framer.position();
  return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0)
    return 0;
  const auto bytes = std::as_bytes(std::span(data, size)).subspan(1);
  const Reading outcome = readAll(bytes, bytes.size() + 1);
  precondition(readAll(bytes, std::size_t{data[0]} + 1) == outcome, "Pieces make no difference.");
  for (const Bytes& message : outcome.messages)
    precondition(!message.empty(), "No message is empty.");
  return 0;
}
