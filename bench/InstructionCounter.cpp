#include "bench/InstructionCounter.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <linux/perf_event.h>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#define VELMAR_HAS_CALLGRIND 1
#endif

namespace velmar::bench {

namespace {

class ProcessorCounter final : public InstructionCounter {
public:
  explicit ProcessorCounter(int descriptor) : descriptor_(descriptor) {}
  ProcessorCounter(const ProcessorCounter&) = delete;
  ProcessorCounter& operator=(const ProcessorCounter&) = delete;
  ~ProcessorCounter() override { close(descriptor_); }

  void start() override {
    ioctl(descriptor_, PERF_EVENT_IOC_RESET, 0);
    resume();
  }
  void pause() override { ioctl(descriptor_, PERF_EVENT_IOC_DISABLE, 0); }
  void resume() override { ioctl(descriptor_, PERF_EVENT_IOC_ENABLE, 0); }
  void stop() override { pause(); }

  std::optional<double> count() override {
    std::uint64_t value = 0;
    // A pinned counter that had to make room for another reads as the end of file.
    if (read(descriptor_, &value, sizeof value) != sizeof value)
      return std::nullopt;
    return static_cast<double>(value);
  }

private:
  int descriptor_;
};

#ifdef VELMAR_HAS_CALLGRIND

class CallgrindCounter final : public InstructionCounter {
public:
  explicit CallgrindCounter(std::string outputFile) : outputFile_(std::move(outputFile)) {}

  void start() override {
    CALLGRIND_ZERO_STATS;
    CALLGRIND_START_INSTRUMENTATION;
  }
  // Switching the collecting off and on is cheap; switching the instrumentation throws all
  // translated code away.
  void pause() override { CALLGRIND_TOGGLE_COLLECT; }
  void resume() override { CALLGRIND_TOGGLE_COLLECT; }
  void stop() override { CALLGRIND_STOP_INSTRUMENTATION; }

  std::optional<double> count() override {
    CALLGRIND_DUMP_STATS;
    const std::string path = outputFile_ + "." + std::to_string(++dumps_);
    const std::optional<double> total = totalIn(path);
    std::remove(path.c_str());
    return total;
  }

private:
  /// The number in the line "totals: …" of a dump.
  static std::optional<double> totalIn(const std::string& path) {
    constexpr std::string_view label = "totals: ";
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
      if (!line.starts_with(label))
        continue;
      std::uint64_t value = 0;
      const char* end = line.data() + line.size();
      if (std::from_chars(line.data() + label.size(), end, value).ec == std::errc())
        return static_cast<double>(value);
    }
    return std::nullopt;
  }

  std::string outputFile_;
  int dumps_ = 0;
};

#endif

} // namespace

std::unique_ptr<InstructionCounter> processorCounter() {
  perf_event_attr attributes = {};
  attributes.size = sizeof attributes;
  attributes.type = PERF_TYPE_HARDWARE;
  attributes.config = PERF_COUNT_HW_INSTRUCTIONS;
  attributes.disabled = 1;
  attributes.pinned = 1; // an exact count or none: never one that was shared out and scaled up
  attributes.exclude_kernel = 1;
  attributes.exclude_hv = 1;
  const long descriptor =
      syscall(SYS_perf_event_open, &attributes, 0, -1, -1, PERF_FLAG_FD_CLOEXEC);
  if (descriptor < 0)
    return nullptr;
  auto counter = std::make_unique<ProcessorCounter>(static_cast<int>(descriptor));
  // Some virtual machines lend a counter that never counts.
  counter->start();
  counter->stop();
  if (counter->count().value_or(0) <= 0)
    return nullptr;
  return counter;
}

std::unique_ptr<InstructionCounter> callgrindCounter(std::string outputFile) {
#ifdef VELMAR_HAS_CALLGRIND
  if (RUNNING_ON_VALGRIND)
    return std::make_unique<CallgrindCounter>(std::move(outputFile));
#endif
  static_cast<void>(outputFile);
  return nullptr;
}

} // namespace velmar::bench

#ifdef VELMAR_HAS_CALLGRIND
#endif
