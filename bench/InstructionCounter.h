// Counts the instructions of a stretch of code on the calling thread: by the processor's own
// counter where the kernel lends it, else by callgrind, which the whole program must then be
// running under (bench/run sees to it).
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace velmar::bench {

class InstructionCounter {
public:
  InstructionCounter() = default;
  InstructionCounter(const InstructionCounter&) = delete;
  InstructionCounter& operator=(const InstructionCounter&) = delete;
  virtual ~InstructionCounter() = default;

  /// Starts anew from zero.
  virtual void start() = 0;
  virtual void pause() = 0;
  virtual void resume() = 0;
  virtual void stop() = 0;
  /// The instructions between the last `start()` and `stop()`, pauses left out; absent if they were
  /// lost.
  [[nodiscard]] virtual std::optional<double> count() = 0;
};

/// The processor's counter, for instructions in user space; null where the kernel or the machine
/// refuses it.
[[nodiscard]] std::unique_ptr<InstructionCounter> processorCounter();

/// Callgrind's; null unless the program runs under it. `outputFile` is what valgrind was given as
/// `--callgrind-out-file`: dumps are written beside it and read back.
[[nodiscard]] std::unique_ptr<InstructionCounter> callgrindCounter(std::string outputFile);

} // namespace velmar::bench
