// Acts as the peer of a recorded conversation, with the recorded chunks.
#pragma once

#include "VelmarCore/Network/StreamRecord.h"

#include <memory>
#include <vector>

namespace velmar {

struct StreamPlayOptions {
  /// Keep the recorded pauses between chunks; otherwise each comes as soon as it may.
  bool keepsPauses = false;
  Clock* clock = &monotonicClock();
};

/// Writes to `stream` what was received when `record` was made. Where something was sent in
/// between, it first waits for as many messages as had been sent by then: these are counted by
/// their frames, not compared, since what one sends differs a little from time to time. Ends behind
/// the last chunk, or when the stream does. Throws what the stream fails with, and JSONRPCError for
/// a frame that can't be read.
[[nodiscard]] Task<void> playStreamRecord(std::vector<StreamChunk> record,
                                          std::shared_ptr<StreamingIO> stream,
                                          StreamPlayOptions options = {});

} // namespace velmar
