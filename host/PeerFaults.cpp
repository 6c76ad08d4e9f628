#include "host/PeerFaults.h"

#include "VelmarCode/Framing/BaseProtocolMessageFramer.h"
#include "VelmarCore/JSON/JSONValue.h"
#include "VelmarPlatform/Coding/JSON/JSONCoding.h"
#include "VelmarPlatform/Coding/Record.h"

#include <array>

namespace velmar::host {

namespace {

using Pieces = std::vector<std::string>;

std::string framed(const std::string& body) {
  return "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

/// A message with `members` behind its version.
std::string message(const std::string& members) {
  return R"({"jsonrpc":"2.0",)" + members + "}";
}

std::string response(const std::string& id, const std::string& rest = R"("result":true)") {
  return message(R"("id":)" + id + "," + rest);
}

/// A good answer behind `noise`.
Pieces behind(const std::string& noise, const std::string& id) {
  return {noise + framed(response(id))};
}

/// A good body under a header of another `length`.
Pieces announced(const std::string& length, const std::string& id) {
  return {"Content-Length: " + length + "\r\n\r\n" + response(id)};
}

Pieces oneByOne(const std::string& text) {
  Pieces pieces;
  for (const char letter : text)
    pieces.emplace_back(1, letter);
  return pieces;
}

constexpr std::size_t largeSize = std::size_t{64} << 20;
constexpr std::size_t deepNesting = 1'000'000;

// clang-format off
const std::array faults = {
    // No harm
    PeerFault{"drip", "a good answer, byte by byte",
     [](const std::string& id) { return oneByOne(framed(response(id))); }},
    PeerFault{"headers", "more headers than one, and one without a value",
     [](const std::string& id) { return behind("Content-Type: text/x; charset=utf-8\r\nX-Empty\r\n", id); }},
    PeerFault{"noise-line", "a line of a log before the header",
     [](const std::string& id) { return behind("Starting up…\r\n", id); }},
    PeerFault{"large-body", "an answer of 64 MB",
     [](const std::string& id) { return Pieces{framed(response(id, "\"result\":\"" + std::string(largeSize, 'x') + "\""))}; }},
    PeerFault{"repeated", "the same answer twice",
     [](const std::string& id) { return Pieces{framed(response(id)) + framed(response(id))}; }},
    PeerFault{"unknown-id", "an answer to nothing that was asked, then the right one",
     [](const std::string& id) { return Pieces{framed(response("987654321")), framed(response(id))}; }},
    PeerFault{"null-id", "an answer without an id, then the right one",
     [](const std::string& id) { return Pieces{framed(response("null")), framed(response(id))}; }},
    PeerFault{"surrogate", "half a surrogate pair, written as an escape",
     [](const std::string& id) { return Pieces{framed(response(id, R"("result":"a\ud83d")"))}; }},
    PeerFault{"error", "an error, as it should be",
     [](const std::string& id) { return Pieces{framed(response(id, R"("error":{"code":-32000,"message":"No."})"))}; }},
    // The request fails, the session goes on
    PeerFault{"both", "a result and an error",
     [](const std::string& id) { return Pieces{framed(response(id, R"("result":true,"error":{"code":1,"message":"No."})"))}; }},
    PeerFault{"neither", "no result and no error",
     [](const std::string& id) { return Pieces{framed(message(R"("id":)" + id))}; }},
    PeerFault{"text-id", "the number of the request sent back as a text",
     [](const std::string& id) { return Pieces{framed(response('"' + id + '"'))}; }},
    PeerFault{"silence", "no answer at all",
     [](const std::string&) { return Pieces(); }},
    PeerFault{"bad-error", "an error that is only a text",
     [](const std::string& id) { return Pieces{framed(response(id, R"("error":"No.")"))}; }},
    // The session ends: frames
    PeerFault{"noise", "noise without an end of line before the header",
     [](const std::string& id) { return behind("warning: ", id); }},
    PeerFault{"half-header", "half a header, then the end",
     [](const std::string&) { return Pieces{"Content-Len"}; }, AfterFault::end},
    PeerFault{"lower-case", "a header in lower case",
     [](const std::string& id) { return Pieces{"content-length: 9\r\n\r\n" + response(id)}; }},
    PeerFault{"no-blank", "a header without a blank behind its colon",
     [](const std::string& id) { return Pieces{"Content-Length:9\r\n\r\n" + response(id)}; }},
    PeerFault{"no-length", "a header that is empty",
     [](const std::string& id) { return Pieces{"\r\n" + response(id)}; }},
    PeerFault{"zero-length", "a length of 0",
     [](const std::string& id) { return announced("0", id); }},
    PeerFault{"negative-length", "a length below 0",
     [](const std::string& id) { return announced("-5", id); }},
    PeerFault{"word-length", "a length that is no number",
     [](const std::string& id) { return announced("12 bytes", id); }},
    PeerFault{"short-length", "a length that is too small",
     [](const std::string& id) { return announced("10", id); }},
    PeerFault{"long-length", "a length that is too large, then the end",
     [](const std::string& id) { return announced("1000", id); }, AfterFault::end},
    PeerFault{"huge-length", "a length near 2^63, then the end",
     [](const std::string& id) { return announced("9223372036854775807", id); }, AfterFault::end},
    PeerFault{"overflow", "a length beyond 2^64",
     [](const std::string& id) { return announced("99999999999999999999", id); }},
    PeerFault{"death", "the end in the middle of a message",
     [](const std::string& id) { const std::string text = framed(response(id)); return Pieces{text.substr(0, text.size() - 4)}; },
     AfterFault::end},
    // The session ends: messages
    PeerFault{"version", "jsonrpc 1.0",
     [](const std::string& id) { return Pieces{framed(R"({"jsonrpc":"1.0","id":)" + id + R"(,"result":true})")}; }},
    PeerFault{"no-version", "no version",
     [](const std::string& id) { return Pieces{framed(R"({"id":)" + id + R"(,"result":true})")}; }},
    PeerFault{"odd-id", "an id that is a list",
     [](const std::string& id) { return Pieces{framed(response("[" + id + "]"))}; }},
    PeerFault{"empty-object", "an object without members",
     [](const std::string&) { return Pieces{framed("{}")}; }},
    PeerFault{"batch", "a list of messages",
     [](const std::string& id) { return Pieces{framed("[" + response(id) + "]")}; }},
    PeerFault{"not-json", "a body that is no JSON",
     [](const std::string&) { return Pieces{framed("Segmentation fault")}; }},
    PeerFault{"cut-json", "a body that ends too early",
     [](const std::string& id) { return Pieces{framed(R"({"jsonrpc":"2.0","id":)" + id + R"(,"result":)")}; }},
    PeerFault{"behind", "something behind the JSON of a body",
     [](const std::string& id) { return Pieces{framed(response(id) + " OK")}; }},
    PeerFault{"bad-utf8", "bytes that are no UTF-8",
     [](const std::string& id) { return Pieces{framed(response(id, "\"result\":\"\xC3(\""))}; }},
    PeerFault{"deep", "a million lists in each other",
     [](const std::string& id) { return Pieces{framed(response(id, "\"result\":" + std::string(deepNesting, '[') + std::string(deepNesting, ']')))}; }},
    PeerFault{"huge-number", "a number beyond all doubles",
     [](const std::string& id) { return Pieces{framed(response(id, "\"result\":1e999"))}; }},
};
// clang-format on

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

} // namespace

std::span<const PeerFault> peerFaults() {
  return faults;
}

Task<void> playFault(const PeerFault* fault, std::shared_ptr<StreamingIO> stream) {
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

} // namespace velmar::host
