// The ways in which a peer of a JSON-RPC session can go wrong, each with what it writes.
#pragma once

#include "VelmarCore/Network/StreamingIO.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::host {

/// What a bad peer does after it has written.
enum class AfterFault : std::uint8_t {
  goOn, ///< Answers the next request likewise.
  end,  ///< Ends.
};

struct PeerFault {
  std::string_view name;
  /// A line for people.
  std::string_view summary;
  /// What is written when a request has come, piece by piece: `id` is the request's, as JSON.
  std::vector<std::string> (*answer)(const std::string& id);
  AfterFault after = AfterFault::goOn;
};

/// All of them, those that do no harm first.
[[nodiscard]] std::span<const PeerFault> peerFaults();

/// Answers each request on `stream` with the fault until one of the two ends. Throws what the
/// stream throws.
[[nodiscard]] Task<void> playFault(const PeerFault* fault, std::shared_ptr<StreamingIO> stream);

} // namespace velmar::host
